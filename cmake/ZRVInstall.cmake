# Installs the library, the five public headers and what find_package and pkg-config need.
include(CMakePackageConfigHelpers)

install(TARGETS zrv EXPORT ZRVTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "ZRV*.h")

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zrv RENAME copyright)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZRV)
install(EXPORT ZRVTargets NAMESPACE ZRV:: DESTINATION ${config_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/ZRVConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
configure_package_config_file(cmake/ZRVConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/ZRVConfig.cmake
  INSTALL_DESTINATION ${config_dir} PATH_VARS CMAKE_INSTALL_DATADIR)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ZRVConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/ZRVConfigVersion.cmake
  DESTINATION ${config_dir})

file(RELATIVE_PATH ZRV_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/zrv.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zrv.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zrv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
