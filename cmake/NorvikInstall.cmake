# Installs the library, its public headers, a CMake package and a pkg-config file whose prefix follows the file.
include(CMakePackageConfigHelpers)

install(TARGETS NorvikCore EXPORT NorvikCoreTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT NorvikCoreTargets NAMESPACE NorvikCore:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/NorvikCore)

configure_package_config_file(cmake/NorvikCoreConfig.cmake.in ${PROJECT_BINARY_DIR}/NorvikCoreConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/NorvikCore)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/NorvikCoreConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/NorvikCoreConfig.cmake ${PROJECT_BINARY_DIR}/NorvikCoreConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/NorvikCore)

file(RELATIVE_PATH NORVIK_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" NORVIK_PREFIX_FROM_PC "${NORVIK_PREFIX_FROM_PC}")
configure_file(cmake/NorvikCore.pc.in ${PROJECT_BINARY_DIR}/NorvikCore.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/NorvikCore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The installed headers, one a line as they are included: for the tests that compile each alone and for tools/include-times.
get_target_property(NORVIK_PUBLIC_HEADERS NorvikCore HEADER_SET)
string(REPLACE "${PROJECT_SOURCE_DIR}/" "" NORVIK_PUBLIC_HEADERS "${NORVIK_PUBLIC_HEADERS}")
list(SORT NORVIK_PUBLIC_HEADERS)
list(JOIN NORVIK_PUBLIC_HEADERS "\n" NORVIK_PUBLIC_HEADERS)
file(WRITE ${PROJECT_BINARY_DIR}/public_headers.txt "${NORVIK_PUBLIC_HEADERS}\n")
