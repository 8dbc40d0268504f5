# The target `reference` builds the reference pages of the public headers, reference/html in the build folder. They are
# installed only as the component `documentation`: cmake --install BUILD-FOLDER --component documentation.
find_program(NORVIK_DOXYGEN doxygen)
find_program(NORVIK_PYTHON python3)
set(NORVIK_REFERENCE ${PROJECT_SOURCE_DIR}/tools/reference/reference ${PROJECT_SOURCE_DIR})
set(NORVIK_REFERENCE_HEADERS ${PROJECT_VERSION} ${PROJECT_BINARY_DIR}/public_headers.txt
    ${PROJECT_BINARY_DIR}/component_headers.txt)
if(NORVIK_DOXYGEN AND NORVIK_PYTHON)
  add_custom_target(reference
    COMMAND ${NORVIK_REFERENCE} ${PROJECT_BINARY_DIR}/reference ${NORVIK_REFERENCE_HEADERS} VERBATIM)
else()
  add_custom_target(reference
    COMMAND ${CMAKE_COMMAND} -E echo "The reference needs doxygen and python3: tools/install-deps doc"
    COMMAND ${CMAKE_COMMAND} -E false VERBATIM)
endif()

if(NORVIK_INSTALL)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/reference/html DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libnorvikcore-doc
          COMPONENT documentation EXCLUDE_FROM_ALL)
endif()
