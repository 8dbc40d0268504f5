# The project that includes the library; take_in.sh copies it. It has targets with the same names as the library's, and
# keeps its own settings.
cmake_minimum_required(VERSION 3.25)
project(Application LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 23)
foreach(name payrun payrun_parts readme_example examples_tests empty_program norvik_archive)
  add_custom_target(${name})
endforeach()
set(settings BUILD_SHARED_LIBS CMAKE_CXX_STANDARD CMAKE_CXX_STANDARD_REQUIRED CMAKE_CXX_EXTENSIONS CMAKE_CXX_FLAGS
    CMAKE_CXX_VISIBILITY_PRESET CMAKE_VISIBILITY_INLINES_HIDDEN CMAKE_POSITION_INDEPENDENT_CODE CMAKE_MODULE_PATH
    CMAKE_RUNTIME_OUTPUT_DIRECTORY CMAKE_LIBRARY_OUTPUT_DIRECTORY CMAKE_CXX_ARCHIVE_CREATE CMAKE_BUILD_TYPE
    PROJECT_NAME CMAKE_PROJECT_NAME)
foreach(setting IN LISTS settings)
  set(before_${setting} "${${setting}}")
endforeach()

if(WAY STREQUAL "add_subdirectory")
  add_subdirectory(norvik)
else()
  include(FetchContent)
  FetchContent_Declare(NorvikCore SOURCE_DIR "${CMAKE_CURRENT_SOURCE_DIR}/norvik")
  FetchContent_MakeAvailable(NorvikCore)
endif()

foreach(setting IN LISTS settings)
  if(NOT "${${setting}}" STREQUAL "${before_${setting}}")
    message(FATAL_ERROR "${setting} has become '${${setting}}'")
  endif()
endforeach()
get_property(options DIRECTORY PROPERTY COMPILE_OPTIONS)
get_property(tests DIRECTORY norvik PROPERTY TESTS)
if(options OR tests)
  message(FATAL_ERROR "the project has options '${options}' and tests '${tests}'")
endif()

add_executable(application application.cpp)
target_link_libraries(application PRIVATE NorvikCore::NorvikCore)
install(TARGETS application)
get_target_property(where NorvikCore BINARY_DIR)
file(WRITE ${CMAKE_BINARY_DIR}/where.txt "${where}")
