# The Windows transport linked against a kernel32 whose calls can be made to fail. fake_kernel32.h comes before
# every source, the library's included, so that their calls mean the fakes.
set(serial ${PROJECT_SOURCE_DIR}/device/serial)
add_executable(serial_faults_tests
  ports_win32_test.cpp
  serial_io_win32_faults_test.cpp
  ${serial}/ports.cpp
  ${serial}/ports_win32.cpp
  ${serial}/serial_io.cpp
  ${serial}/serial_io_win32.cpp)
zrv_own_target(serial_faults_tests)
target_precompile_headers(serial_faults_tests PRIVATE fake_kernel32.h)
target_include_directories(serial_faults_tests PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(serial_faults_tests PRIVATE ZRV_STATIC)
target_link_libraries(serial_faults_tests PRIVATE GTest::gtest_main GTest::gmock)
add_test(NAME serial_faults_tests COMMAND serial_faults_tests)
set_tests_properties(serial_faults_tests PROPERTIES TIMEOUT 60)
