# Finds OpenCV core and imgproc with their C interface: target ZRV::opencv.
# Debian's library packages carry no CMake config, so headers and libraries are looked up directly.
find_package(OpenCV QUIET COMPONENTS core imgproc)
if(OpenCV_FOUND)
  set(ZRV_OPENCV_INCLUDE_DIR ${OpenCV_INCLUDE_DIRS})
  set(ZRV_OPENCV_LIBRARIES ${OpenCV_LIBS})
else()
  find_path(ZRV_OPENCV_INCLUDE_DIR opencv2/core/core_c.h PATH_SUFFIXES opencv4)
  find_library(ZRV_OPENCV_CORE opencv_core)
  find_library(ZRV_OPENCV_IMGPROC opencv_imgproc)
  if(ZRV_OPENCV_CORE AND ZRV_OPENCV_IMGPROC)
    set(ZRV_OPENCV_LIBRARIES ${ZRV_OPENCV_IMGPROC} ${ZRV_OPENCV_CORE})
  endif()
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(ZRVOpenCV REQUIRED_VARS ZRV_OPENCV_LIBRARIES ZRV_OPENCV_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "install OpenCV core and imgproc, or configure with -DZRV_WITH_OPENCV=OFF")

if(ZRVOpenCV_FOUND AND NOT TARGET ZRV::opencv)
  add_library(ZRV::opencv INTERFACE IMPORTED GLOBAL)
  target_include_directories(ZRV::opencv SYSTEM INTERFACE ${ZRV_OPENCV_INCLUDE_DIR})
  target_link_libraries(ZRV::opencv INTERFACE ${ZRV_OPENCV_LIBRARIES})
endif()
