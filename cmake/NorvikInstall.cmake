# Installs the library, its public headers, a CMake package and a pkg-config file whose prefix follows the file.
if(NORVIK_INSTALL)
  include(CMakePackageConfigHelpers)
  set(norvik_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/NorvikCore)

  # norvik_install_library(TARGET EXPORT COMPONENT DEVELOPMENT): COMPONENT of the installation has the library,
  # DEVELOPMENT has the files with which programs are compiled.
  function(norvik_install_library target export component development)
    install(TARGETS ${target} EXPORT ${export}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT ${development}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${development}
            FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${development})
    install(EXPORT ${export} NAMESPACE NorvikCore:: DESTINATION ${norvik_cmake_dir} COMPONENT ${development})
  endfunction()

  norvik_install_library(NorvikCore NorvikCoreTargets Library Development)
  # A component's targets come from a separate file, so that a program that asks only for the core needs neither libpq
  # nor Qt.
  foreach(component PostgreSQL Qt)
    if(TARGET Norvik${component})
      norvik_install_library(Norvik${component} NorvikCore${component}Targets ${component} ${component}Development)
    endif()
  endforeach()

  # gdb looks for a library's script below auto-load/, in a folder with the library's own path. The prefix is that of the
  # installation, which `cmake --install --prefix` changes; it may be relative to the current folder, which is
  # CMAKE_BINARY_DIR in a script.
  if(BUILD_SHARED_LIBS)
    install(CODE "get_filename_component(norvik_prefix \"\${CMAKE_INSTALL_PREFIX}\" ABSOLUTE BASE_DIR \"\${CMAKE_BINARY_DIR}\")
get_filename_component(norvik_libdir \"${CMAKE_INSTALL_LIBDIR}\" ABSOLUTE BASE_DIR \"\${norvik_prefix}\")" COMPONENT Library)
    foreach(suffix -gdb.py .py)
      install(FILES ${PROJECT_SOURCE_DIR}/NorvikCore/diagnostics/gdb/norvikcore${suffix}
              DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${norvik_libdir}"
              RENAME "$<TARGET_FILE_NAME:NorvikCore>${suffix}" COMPONENT Library)
    endforeach()
  endif()

  # lldb looks for no script of a library: the user's ~/.lldbinit imports it.
  install(FILES ${PROJECT_SOURCE_DIR}/NorvikCore/diagnostics/lldb/norvikcore_lldb.py
          DESTINATION ${CMAKE_INSTALL_DATADIR}/norvikcore/lldb COMPONENT Development)

  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/NorvikCoreConfig.cmake.in
                                ${PROJECT_BINARY_DIR}/NorvikCoreConfig.cmake
                                INSTALL_DESTINATION ${norvik_cmake_dir})
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/NorvikCoreConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/NorvikCoreConfig.cmake ${PROJECT_BINARY_DIR}/NorvikCoreConfigVersion.cmake
          DESTINATION ${norvik_cmake_dir} COMPONENT Development)

  file(RELATIVE_PATH NORVIK_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" NORVIK_PREFIX_FROM_PC "${NORVIK_PREFIX_FROM_PC}")
  # A program that links a static library also links that library's dependencies, with or without pkg-config's --static,
  # because no other NorvikCore is installed.
  if(NOT BUILD_SHARED_LIBS)
    set(NORVIK_PC_REQUIRES "icu-i18n icu-uc fmt")
    set(NORVIK_PC_LIBS " -Wl,-z,nodelete")
  endif()
  get_property(NORVIK_PC_CFLAGS GLOBAL PROPERTY NORVIK_PC_CFLAGS)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/NorvikCore.pc.in ${PROJECT_BINARY_DIR}/NorvikCore.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/NorvikCore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/NorvikCore COMPONENT Licence)
endif()

# The installed headers, one per line as they are included, for the tests that compile each alone and for
# tools/include-times.
get_target_property(NORVIK_PUBLIC_HEADERS NorvikCore HEADER_SET)
string(REPLACE "${PROJECT_SOURCE_DIR}/" "" NORVIK_PUBLIC_HEADERS "${NORVIK_PUBLIC_HEADERS}")
list(SORT NORVIK_PUBLIC_HEADERS)
list(JOIN NORVIK_PUBLIC_HEADERS "\n" NORVIK_PUBLIC_HEADERS)
file(WRITE ${PROJECT_BINARY_DIR}/public_headers.txt "${NORVIK_PUBLIC_HEADERS}\n")

# The installed headers of each component, in the same form, and of all of them.
set(component_headers "")
foreach(component PostgreSQL Qt)
  if(TARGET Norvik${component})
    get_target_property(headers Norvik${component} HEADER_SET)
    string(REPLACE "${PROJECT_SOURCE_DIR}/" "" headers "${headers}")
    list(JOIN headers "\n" headers)
    file(WRITE ${PROJECT_BINARY_DIR}/${component}_headers.txt "${headers}\n")
    string(APPEND component_headers "${headers}\n")
  endif()
endforeach()
file(WRITE ${PROJECT_BINARY_DIR}/component_headers.txt "${component_headers}")
