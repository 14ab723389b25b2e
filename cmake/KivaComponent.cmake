# kiva_component(NAME <lib> [DEPS <targets>...])
#
# Builds the directory's static library from every .cpp in it except tests
# (*_test.cpp), benchmarks (*_bench.cpp), fuzz targets (*_fuzz.cpp), test
# support (*_testing.cpp, built into <lib>_testing and linked into the tests,
# benchmarks and fuzz targets) and program entry points (main.cpp,
# *_main.cpp). Tests become one executable
# <lib>_tests registered with CTest, benchmarks one executable <lib>_bench,
# and each fuzz target its own executable <name>_fuzz when KIVA_FUZZ is on.
# Files are globbed so that adding a source file needs no CMake edit.
function(kiva_component)
  cmake_parse_arguments(KC "" "NAME" "DEPS;TEST_DEPS" ${ARGN})
  file(GLOB all_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  set(lib_sources)
  set(test_sources)
  set(bench_sources)
  set(fuzz_sources)
  set(testing_sources)
  foreach(src ${all_sources})
    get_filename_component(base ${src} NAME)
    if(base MATCHES "_test\\.cpp$")
      list(APPEND test_sources ${src})
    elseif(base MATCHES "_bench\\.cpp$")
      list(APPEND bench_sources ${src})
    elseif(base MATCHES "_fuzz\\.cpp$")
      list(APPEND fuzz_sources ${src})
    elseif(base MATCHES "_testing\\.cpp$")
      list(APPEND testing_sources ${src})
    elseif(base STREQUAL "main.cpp" OR base MATCHES "_main\\.cpp$")
      # Entry points are built by the directory's own add_executable.
    else()
      list(APPEND lib_sources ${src})
    endif()
  endforeach()

  add_library(${KC_NAME} STATIC ${lib_sources})
  target_include_directories(${KC_NAME} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${KC_NAME} PUBLIC ${KC_DEPS})

  set(support ${KC_NAME} ${KC_TEST_DEPS})
  if(testing_sources)
    add_library(${KC_NAME}_testing STATIC ${testing_sources})
    target_link_libraries(${KC_NAME}_testing PUBLIC ${KC_NAME} ${KC_TEST_DEPS})
    list(PREPEND support ${KC_NAME}_testing)
  endif()

  if(KIVA_BUILD_TESTS AND test_sources)
    add_executable(${KC_NAME}_tests ${test_sources})
    target_link_libraries(${KC_NAME}_tests PRIVATE ${support} GTest::gtest GTest::gmock GTest::gtest_main)
    target_compile_definitions(${KC_NAME}_tests PRIVATE
      KIVA_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
      KIVA_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    add_test(NAME ${KC_NAME}_tests COMMAND ${KC_NAME}_tests)
    set_tests_properties(${KC_NAME}_tests PROPERTIES WORKING_DIRECTORY ${CMAKE_BINARY_DIR})
  endif()

  if(KIVA_BUILD_BENCHMARKS AND bench_sources)
    add_executable(${KC_NAME}_bench ${bench_sources})
    target_link_libraries(${KC_NAME}_bench PRIVATE ${support} benchmark::benchmark benchmark::benchmark_main)
    target_compile_definitions(${KC_NAME}_bench PRIVATE
      KIVA_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
      KIVA_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  endif()

  if(KIVA_FUZZ)
    foreach(src ${fuzz_sources})
      get_filename_component(fuzz_name ${src} NAME_WE)
      add_executable(${fuzz_name} ${src})
      target_link_libraries(${fuzz_name} PRIVATE ${support})
      target_link_options(${fuzz_name} PRIVATE -fsanitize=fuzzer)
    endforeach()
  endif()
endfunction()
