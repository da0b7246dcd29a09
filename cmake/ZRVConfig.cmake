include("${CMAKE_CURRENT_LIST_DIR}/ZRVTargets.cmake")
