# One static library per folder. A library sees only the headers of what it names under LINKS, because
# every include is written from src/ and the layer check reads the rest.
function(tembrix_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
endfunction()

# A header-only folder.
function(tembrix_interface name)
  cmake_parse_arguments(ARG "" "" "LINKS" ${ARGN})
  add_library(${name} INTERFACE)
  target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} INTERFACE ${ARG_LINKS})
endfunction()

# One GoogleTest program per tested folder, registered with CTest as a whole.
function(tembrix_test name)
  cmake_parse_arguments(ARG "DISPLAY" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE
    TEMBRIX_RESOURCES="${PROJECT_SOURCE_DIR}/resources" TEMBRIX_SOURCE="${PROJECT_SOURCE_DIR}")
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
  if(ARG_DISPLAY)
    # Real windows share one display; running them one at a time keeps the focus where a test put it.
    set_tests_properties(${name} PROPERTIES RUN_SERIAL ON LABELS display)
  endif()
endfunction()
