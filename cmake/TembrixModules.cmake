# Each folder is a static library that links exactly what it may use, and can include nothing else: its
# include path holds one link, to the folder itself, so that a library sees the headers of what it links
# and no others.
set(TEMBRIX_INCLUDES ${PROJECT_BINARY_DIR}/include)

# Makes the include path of the calling folder and returns it.
function(tembrix_include_path result)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
  string(REPLACE / _ flat ${folder})
  set(path ${TEMBRIX_INCLUDES}/${flat})
  get_filename_component(parent ${path}/${folder} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${path}/${folder} SYMBOLIC)
  set(${result} ${path} PARENT_SCOPE)
endfunction()

# PLAIN: without precompiled headers, for folders with compiler options of their own.
function(tembrix_library name)
  cmake_parse_arguments(ARG "PLAIN" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  tembrix_include_path(path)
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${path})
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
  if(NOT ARG_PLAIN)
    tembrix_precompile(${name})
  endif()
endfunction()

# A header-only folder.
function(tembrix_interface name)
  cmake_parse_arguments(ARG "" "" "LINKS" ${ARGN})
  tembrix_include_path(path)
  add_library(${name} INTERFACE)
  target_include_directories(${name} INTERFACE ${path})
  target_link_libraries(${name} INTERFACE ${ARG_LINKS})
endfunction()

# One GoogleTest program per tested folder, registered with CTest as a whole.
function(tembrix_test name)
  cmake_parse_arguments(ARG "DISPLAY" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
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
  tembrix_precompile(${name} TESTS)
endfunction()

# A program beside the product: a benchmark, the demo tour, a helper of a test.
function(tembrix_program name)
  add_executable(${name} ${ARGN})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
endfunction()
