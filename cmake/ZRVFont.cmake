# The default font file: built here from the Hershey glyphs of the system (Debian: hershey-fonts-data) and
# installed with the library, together with the acknowledgement that its licence asks for.
add_library(zrv_font_builder STATIC tools/font_builder.cpp)
zrv_own_target(zrv_font_builder)
target_include_directories(zrv_font_builder PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)

set(ZRV_HERSHEY_DIR /usr/share/hershey-fonts CACHE PATH "Directory of the Hershey .jhf files")
set(font_program TRUE)
if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  set(font_program FALSE)
endif()

if(NOT EXISTS ${ZRV_HERSHEY_DIR}/rowmans.jhf)
  message(STATUS "No Hershey glyphs in ${ZRV_HERSHEY_DIR}: the default font file is left out")
elseif(NOT font_program)
  message(STATUS "Built programs cannot run here: the default font file is left out")
else()
  add_executable(zrv-fontbuild tools/fontbuild_main.cpp)
  zrv_own_target(zrv-fontbuild)
  target_link_libraries(zrv-fontbuild PRIVATE zrv_font_builder)
  set(ZRV_FONT_FILE ${PROJECT_BINARY_DIR}/share/zrv/hershey.font)
  set(font_list ${PROJECT_BINARY_DIR}/share/zrv/hershey.txt)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/share/zrv)
  file(GLOB font_sources ${ZRV_HERSHEY_DIR}/*.jhf)
  add_custom_command(OUTPUT ${ZRV_FONT_FILE} ${font_list}
    COMMAND zrv-fontbuild ${ZRV_HERSHEY_DIR} ${ZRV_FONT_FILE} ${font_list}
    DEPENDS zrv-fontbuild ${font_sources} VERBATIM)
  add_custom_target(zrv_font ALL DEPENDS ${ZRV_FONT_FILE})
  install(FILES ${ZRV_FONT_FILE} ${font_list} DESTINATION ${CMAKE_INSTALL_DATADIR}/zrv)
endif()
