# Describes the Debian packages to CPack; tools/package makes them. Each package is a component of the installation.
# docs/packages.md says what each contains.
set(NORVIK_DEBIAN_REVISION 1)
set(soversion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(debian_version ${PROJECT_VERSION}-${NORVIK_DEBIAN_REVISION})
set(debian ${PROJECT_SOURCE_DIR}/packaging/debian)
set(made ${PROJECT_BINARY_DIR}/debian)

# The folder is emptied, because packages that are no longer made would stay in it.
file(REMOVE_RECURSE ${made})
file(MAKE_DIRECTORY ${made})
foreach(pair changelog:changelog.Debian ../../CHANGELOG.md:changelog)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 from)
  list(GET pair 1 to)
  execute_process(COMMAND gzip -9nc ${debian}/${from} OUTPUT_FILE ${made}/${to}.gz COMMAND_ERROR_IS_FATAL ANY)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_SET_DESTDIR ON)
set(CPACK_PACKAGE_NAME norvikcore)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # else CPack puts it before the summary of each package
set(CPACK_PACKAGE_CONTACT "NorvikCore authors <authors@norvikcore.example>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEBIAN_PACKAGE_SOURCE norvikcore)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${NORVIK_DEBIAN_REVISION})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)  # quickly made; tools/package makes the final ones with xz
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "")

set(about "NorvikCore is the core library of UK payroll applications in C++20: exact
decimal money, payroll dates, field formatters, logging to rolling files,
dispatch queues, observation and bindings.")

add_custom_target(packaged)  # what the packages need of the build

# norvik_package(COMPONENT NAME SECTION [BINARY] SUMMARY text DESCRIPTION text [DEPENDS ...] [RECOMMENDS ...]
# [SUGGESTS ...]): one package. A BINARY one depends on the machine: dpkg-shlibdeps finds more of its dependencies, and
# its debug information becomes a package of its own.
function(norvik_package component name section)
  cmake_parse_arguments(ARG "BINARY" "SUMMARY;DESCRIPTION" "DEPENDS;RECOMMENDS;SUGGESTS" ${ARGN})
  string(TOUPPER ${component} upper)
  set(prefix CPACK_DEBIAN_${upper})
  set(${prefix}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(${prefix}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(${prefix}_DESCRIPTION "${ARG_SUMMARY}\n${ARG_DESCRIPTION}" PARENT_SCOPE)
  foreach(kind DEPENDS RECOMMENDS SUGGESTS)
    list(JOIN ARG_${kind} ", " names)
    set(${prefix}_PACKAGE_${kind} "${names}" PARENT_SCOPE)
  endforeach()
  set(${prefix}_PACKAGE_SHLIBDEPS ${ARG_BINARY} PARENT_SCOPE)
  set(${prefix}_DEBUGINFO_PACKAGE ${ARG_BINARY} PARENT_SCOPE)
  if(section STREQUAL "doc")
    set(${prefix}_PACKAGE_ARCHITECTURE all PARENT_SCOPE)
  endif()
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)

  install(FILES ${debian}/copyright ${made}/changelog.Debian.gz ${made}/changelog.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
  string(REPLACE ${soversion} "" unnumbered ${name})
  if(EXISTS ${debian}/${unnumbered}.lintian-overrides)
    install(FILES ${debian}/${unnumbered}.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
            RENAME ${name} COMPONENT ${component})
  endif()
endfunction()

# norvik_library_packages(COMPONENT NAME TARGET SUBJECT text [DEPENDS ...] [RECOMMENDS ...] [HEADERS_DEPEND ...]
# [HEADERS_SUGGEST ...]): a library's package, which is named after its SONAME, and the one with its headers, which has
# no number. Without the target there are none.
macro(norvik_library_packages component name target)
  cmake_parse_arguments(LIBRARY "" "SUBJECT" "DEPENDS;RECOMMENDS;HEADERS_DEPEND;HEADERS_SUGGEST" ${ARGN})
  if(TARGET ${target})
    norvik_package(${component} ${name}${soversion} libs BINARY
      SUMMARY "${LIBRARY_SUBJECT}"
      DESCRIPTION "${about}\n\nThis package contains the shared library."
      DEPENDS ${LIBRARY_DEPENDS} RECOMMENDS ${LIBRARY_RECOMMENDS})
    # dpkg-shlibdeps searches this folder when it examines packages that use the library.
    add_dependencies(packaged ${target})
    get_target_property(folder ${target} BINARY_DIR)
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${folder})
    if(${component} STREQUAL "Library")
      set(development Development)
      set(core_development "")
    else()
      set(development ${component}Development)
      set(core_development "libnorvikcore-dev (= ${debian_version})")
    endif()
    norvik_package(${development} ${name}-dev libdevel
      SUMMARY "${LIBRARY_SUBJECT} (development files)"
      DESCRIPTION "${about}\n\nThis package contains the headers, and what CMake's find_package() needs."
      DEPENDS "${name}${soversion} (= ${debian_version})" ${core_development} ${LIBRARY_HEADERS_DEPEND}
      SUGGESTS ${LIBRARY_HEADERS_SUGGEST})
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA ${debian}/triggers)
  endif()
endmacro()

# The library loads Pango, SQLite, uriparser and libpsl when they are first needed, so dpkg-shlibdeps does not see them.
norvik_library_packages(Library libnorvikcore NorvikCore
  SUBJECT "core library of UK payroll applications"
  DEPENDS "libsqlite3-0 (>= 3.37)" liburiparser1 libpsl5 tzdata
  RECOMMENDS libpangocairo-1.0-0
  HEADERS_SUGGEST cmake libfmt-dev libcurl4-openssl-dev libnorvikcore-doc)
# The components use names of the core's internal headers, so they need the core of the same version.
set(same_core DEPENDS "libnorvikcore${soversion} (= ${debian_version})")
norvik_library_packages(PostgreSQL libnorvikcore-postgresql NorvikPostgreSQL ${same_core}
  SUBJECT "logs of NorvikCore on a PostgreSQL server")
norvik_library_packages(Qt libnorvikcore-qt NorvikQt ${same_core}
  SUBJECT "models and bindings of NorvikCore for Qt"
  HEADERS_DEPEND qt6-base-dev)

add_dependencies(packaged norvik-log payrun)
norvik_package(Tools norvik-tools utils BINARY
  SUMMARY "reader of NorvikCore's logs, and a pay run from files"
  DESCRIPTION "norvik-log finds messages in logs that NorvikCore's loggers wrote: in files,
in SQLite databases and on PostgreSQL servers. It counts them by hour and
level, follows a growing log, and writes them as JSON or as a page.

payrun computes an employer's payslips for a tax month from three files."
  DEPENDS "libnorvikcore${soversion} (>= ${PROJECT_VERSION})" "libnorvikcore-postgresql${soversion} (>= ${PROJECT_VERSION})"
  RECOMMENDS libpangocairo-1.0-0 fonts-dejavu-core
  SUGGESTS libnorvikcore-doc)
norvik_package(documentation libnorvikcore-doc doc
  SUMMARY "core library of UK payroll applications (documentation)"
  DESCRIPTION "${about}\n\nThis package contains a tutorial, a page for each
subsystem, the reference pages of the public headers, and the sources of
the examples.")
if(TARGET reference)  # it is installed as a part of this component
  add_dependencies(packaged reference)
endif()
# The pages lie to each other as in the sources, so that their links and the paths of examples in them hold.
file(READ ${PROJECT_SOURCE_DIR}/README.md page)
string(REPLACE "](LICENSE)" "](copyright)" page "${page}")
string(REPLACE "](CHANGELOG.md)" "](changelog.gz)" page "${page}")
string(REPLACE "[CONTRIBUTING.md](CONTRIBUTING.md)" "`CONTRIBUTING.md` of the sources" page "${page}")
file(CONFIGURE OUTPUT ${made}/README.md CONTENT "${page}" @ONLY)
install(FILES ${made}/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libnorvikcore-doc COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libnorvikcore-doc COMPONENT documentation)

include(CPack)
