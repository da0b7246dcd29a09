# What every target of our own build shares. Floating point stays exactly as written: no contraction,
# no reassociation. math-errno and trapping-math only say that nobody reads errno or the FP exception
# flags; they change no result, and let the compiler vectorise square roots and selects.
function(zrv_own_target target)
  if(WIN32)  # windows.h without its min and max macros and rarely used parts; M_PI from <cmath>
    target_compile_definitions(${target} PRIVATE NOMINMAX WIN32_LEAN_AND_MEAN _USE_MATH_DEFINES)
  endif()
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /fp:precise /utf-8)
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
    if(PROJECT_IS_TOP_LEVEL)
      target_compile_options(${target} PRIVATE /WX)
    endif()
  else()
    target_compile_options(${target} PRIVATE
      -ffp-contract=off -fno-math-errno -fno-trapping-math -Wall -Wextra -Wconversion -Wshadow
      $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)  # clang takes it for a part of -Wconversion, gcc does not
    if(PROJECT_IS_TOP_LEVEL)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  endif()
endfunction()

# A GoogleTest program of one folder: zrv_add_test(name sources...). It reaches the library's internals.
function(zrv_add_test name)
  add_executable(${name} ${ARGN})
  zrv_own_target(${name})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE zrv_core zrv_simulator GTest::gtest_main GTest::gmock)
  target_compile_definitions(${name} PRIVATE ZRV_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()

# A Google Benchmark program of one topic: zrv_add_bench(name sources...). Its main, in bench/ratios.cpp, prints
# the ratios that the program states as aims.
function(zrv_add_bench name)
  add_executable(${name} ${ARGN})
  zrv_own_target(${name})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE zrv_core zrv_simulator zrv_ratios)
endfunction()
