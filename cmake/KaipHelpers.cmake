# Helpers that keep each subsystem's build lines short.

# kaip_subsystem(<name> SOURCES <files...> DEPS <subsystems...>)
# An internal static library with hidden symbols; the shared library links every one whole.
function(kaip_subsystem name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS;LIBS" ${ARGN})
  if(ARG_SOURCES)
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
    target_compile_definitions(${name} PUBLIC KAIP_BUILDING_LIBRARY)
    target_link_libraries(${name} PUBLIC ${ARG_DEPS} ${ARG_LIBS})
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
    target_compile_definitions(${name} INTERFACE KAIP_BUILDING_LIBRARY)
    target_link_libraries(${name} INTERFACE ${ARG_DEPS} ${ARG_LIBS})
  endif()
  set_property(GLOBAL APPEND PROPERTY KAIP_SUBSYSTEMS ${name})
endfunction()

# kaip_test(<name> SOURCES <files...> LIBS <libs...> [SIMD_LEVELS])
# A GoogleTest executable registered with ctest; SIMD_LEVELS runs it again under ini files
# with SIMD.Level 0 (scalar), 2 (up to SSSE3), 3 (up to SSE4.2) and 4 (up to AVX2).
function(kaip_test name)
  cmake_parse_arguments(ARG "SIMD_LEVELS" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/test_main.cpp)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest Threads::Threads)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "KAIP_LOG_LEVEL=off")
  if(ARG_SIMD_LEVELS)
    foreach(level 0 2 3 4)
      add_test(NAME ${name}.simd${level} COMMAND ${name})
      set_tests_properties(${name}.simd${level} PROPERTIES ENVIRONMENT
        "KAIP_LOG_LEVEL=off;KAIP_INI_FILE=${PROJECT_SOURCE_DIR}/tests/data/simd${level}.ini")
    endforeach()
  endif()
endfunction()
