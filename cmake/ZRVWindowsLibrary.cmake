# zrv.dll as MinGW makes it. Beside MinGW's own import library (libzrv.dll.a, the C++ classes too) a listing of
# the flat C functions, zrv.def, and zrv.lib made of it, which any compiler's linker takes. C++ names are not
# in it, because compilers do not agree on them.
set_target_properties(zrv PROPERTIES PREFIX "")
set(def ${PROJECT_BINARY_DIR}/zrv.def)
target_link_options(zrv PRIVATE -Wl,--output-def,${PROJECT_BINARY_DIR}/all-exports.def)
find_program(ZRV_DLLTOOL NAMES x86_64-w64-mingw32-dlltool dlltool REQUIRED)
add_custom_command(TARGET zrv POST_BUILD
  COMMAND ${CMAKE_COMMAND} -DALL=${PROJECT_BINARY_DIR}/all-exports.def -DFLAT=${def}
          -P ${PROJECT_SOURCE_DIR}/cmake/flat_exports.cmake
  COMMAND ${ZRV_DLLTOOL} -d ${def} -D zrv.dll -l ${PROJECT_BINARY_DIR}/zrv.lib
  BYPRODUCTS ${def} ${PROJECT_BINARY_DIR}/zrv.lib
  VERBATIM)
install(FILES ${def} ${PROJECT_BINARY_DIR}/zrv.lib DESTINATION ${CMAKE_INSTALL_LIBDIR})
