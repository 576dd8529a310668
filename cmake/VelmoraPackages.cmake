# SPDX-License-Identifier: GPL-3.0-or-later

# Debian packages, by `cpack -G DEB`: velmora-cli, and velmora with windows. Neither needs the other. Which libraries they
# need, dpkg-shlibdeps finds; what is loaded at run time is suggested. scripts/package makes them as they are shipped.
option(VELMORA_DEBIAN "Install what Debian's packages hold besides: copyright, changelogs, list of what is linked" OFF)

set(CPACK_PACKAGE_NAME velmora)
set(CPACK_PACKAGE_CONTACT "Velmora maintainers <${VELMORA_SUPPORT_ADDRESS}>")
set(CPACK_PACKAGE_HOMEPAGE_URL "${VELMORA_HOME_PAGE}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")  # which the programs were built for
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/SameTimes.cmake")
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL cli)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_CLI_PACKAGE_NAME velmora-cli)
set(CPACK_DEBIAN_CLI_PACKAGE_SUGGESTS "libfbclient2, tdsodbc, velmora")
set(CPACK_COMPONENT_CLI_DESCRIPTION "comparison of database structures, for terminals
Compares the structure of a reference database with that of a MySQL or MariaDB
database, shows every difference, and writes and runs the SQL script that
makes the target equal to the reference. What can lose data, and rows that
stand in the way, are named before anything runs.

A reference may be a dump, a server, or a source of another kind: Firebird,
Oracle, SQL Server, ODBC, Access, FoxPro, dBASE, Paradox, Excel, Lotus 1-2-3,
or text files.")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME velmora)
set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS "fonts-dejavu-core, qt6-translations-l10n")
set(CPACK_DEBIAN_DESKTOP_PACKAGE_SUGGESTS "libfbclient2, tdsodbc, velmora-cli")
set(CPACK_COMPONENT_DESKTOP_DESCRIPTION "comparison of database structures, with windows
Compares the structure of a reference database with that of a MySQL or MariaDB
database, shows every difference beside both creation texts of the table, and
runs the SQL script that makes the target equal to the reference, statement by
statement. What can lose data, and rows that stand in the way, are named
before anything runs.

The package velmora-cli has the same for terminals.")

# velmora_package(COMPONENT PACKAGE PROGRAM): what a package holds besides what the program's own installation does.
function(velmora_package component package program)
  set(doc "${CMAKE_INSTALL_DATADIR}/doc/${package}")
  set(made "${PROJECT_BINARY_DIR}/packages/${package}")
  file(MAKE_DIRECTORY "${made}")
  add_custom_command(OUTPUT "${made}/changelog.Debian.gz" "${made}/changelog.gz"
    COMMAND ${GZIP} -9 -n -c "${PROJECT_SOURCE_DIR}/data/debian/changelog" > changelog.Debian.gz
    COMMAND ${GZIP} -9 -n -c "${PROJECT_SOURCE_DIR}/CHANGELOG.md" > changelog.gz
    WORKING_DIRECTORY "${made}" VERBATIM
    DEPENDS "${PROJECT_SOURCE_DIR}/data/debian/changelog" "${PROJECT_SOURCE_DIR}/CHANGELOG.md")
  add_custom_command(OUTPUT "${made}/${program}.spdx.json"
    COMMAND "${PROJECT_SOURCE_DIR}/scripts/list-linked" $<TARGET_FILE:${program}> > ${program}.spdx.json
    WORKING_DIRECTORY "${made}" DEPENDS ${program} "${PROJECT_SOURCE_DIR}/scripts/list-linked" VERBATIM)
  add_custom_target(package_files_of_${component} ALL
    DEPENDS "${made}/changelog.Debian.gz" "${made}/${program}.spdx.json")
  install(FILES "${PROJECT_SOURCE_DIR}/data/debian/copyright" "${made}/changelog.Debian.gz" "${made}/changelog.gz"
    "${made}/${program}.spdx.json" DESTINATION "${doc}" COMPONENT ${component})
  if(EXISTS "${PROJECT_SOURCE_DIR}/data/debian/${package}.lintian-overrides")
    install(FILES "${PROJECT_SOURCE_DIR}/data/debian/${package}.lintian-overrides"
      DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides" RENAME ${package} COMPONENT ${component})
  endif()
endfunction()

set(docs)
foreach(name commands crash-reports dialects exact fleet folders foreign locks reports runs selection settings sources task-file)
  list(APPEND docs "${PROJECT_SOURCE_DIR}/docs/${name}.md")
endforeach()
install(FILES ${docs} DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velmora-cli" COMPONENT cli)
install(FILES "${PROJECT_SOURCE_DIR}/examples/reference.sql" "${PROJECT_SOURCE_DIR}/examples/target.sql"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/velmora-cli/examples" COMPONENT cli)
if(VELMORA_DEBIAN)
  velmora_package(cli velmora-cli velmora-cli)
endif()
if(VELMORA_DESKTOP)
  list(APPEND CPACK_COMPONENTS_ALL desktop)
  if(VELMORA_DEBIAN)
    velmora_package(desktop velmora velmora)
  endif()
endif()
include(CPack)
