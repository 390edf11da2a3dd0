# The Debian packages, made by `./dev package`: libzebase0.1 (the SONAME's number), libzebase-dev and,
# where the applications are built, zebase-tools; with a package of debug symbols for each that has code.
set(ZEBASE_MAINTAINER "The zeBase authors <maintainers@zebase.example>" CACHE STRING
  "Maintainer of the packages, as in `Name <address>`")

get_target_property(soversion zeBase SOVERSION)
set(runtime_package libzebase${soversion})
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "The zeBase authors")
set(CPACK_PACKAGE_CONTACT "${ZEBASE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS # whatever the umask
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/Components/Base)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/compress-man-pages.cmake)
set(CPACK_DEBIAN_PACKAGE_SOURCE zebase)

# ze_package(<Component> <package> <section> <description> [NAME VALUE]...): what one package holds and
# says; NAME is the rest of a variable of CPack. Its first line of description is the summary. The
# documents that Debian asks of a package are no part of an ordinary installation.
string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC) # SOURCE_DATE_EPOCH's, if that is set
file(READ LICENSE licence)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]+)\n\n(.+)\n$" licence "${licence}")
set(copyright_line "${CMAKE_MATCH_1}")
string(REPLACE "\n\n" "\n.\n" licence "${CMAKE_MATCH_2}")
string(REPLACE "\n" "\n " licence " ${licence}")
configure_file(cmake/debian/copyright.in debian/copyright @ONLY)
configure_file(cmake/debian/changelog.in debian/changelog @ONLY)
execute_process(COMMAND gzip --best --no-name --force ${PROJECT_BINARY_DIR}/debian/changelog COMMAND_ERROR_IS_FATAL ANY)

function(ze_package component package section description)
  string(TOUPPER ${component} COMPONENT)
  install(FILES ${PROJECT_BINARY_DIR}/debian/copyright ${PROJECT_BINARY_DIR}/debian/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${COMPONENT}_DESCRIPTION "${description}" PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  while(ARGN)
    list(POP_FRONT ARGN name value)
    set(CPACK_DEBIAN_${COMPONENT}_${name} "${value}" PARENT_SCOPE)
  endwhile()
endfunction()

ze_package(Runtime ${runtime_package} libs "foundation library for Linux applications (shared library)
zeBase holds what applications and their plug-ins share: strings and their
conversion, containers, signals, threads, files and saves that never cost the
old document, documents of typed packets with filters, packages, TCP, undo,
plug-ins, a program's frame, and linear algebra.
This package holds the library that programs run with."
  PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
install(FILES cmake/debian/lintian-overrides RENAME ${runtime_package}
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT Runtime EXCLUDE_FROM_ALL)
ze_package(Development libzebase-dev libdevel "foundation library for Linux applications (development files)
zeBase holds what applications and their plug-ins share: strings and their
conversion, containers, signals, threads, files and saves that never cost the
old document, documents of typed packets with filters, packages, TCP, undo,
plug-ins, a program's frame, and linear algebra.
This package holds the headers, and what CMake and pkg-config need."
  PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
if(ZEBASE_APPLICATIONS)
  ze_package(Tools zebase-tools utils "programs over the zeBase foundation library
scenefile keeps models from OBJ files in documents of typed packets, with
compression, checksums and protected saves, and gets them out again exactly.
zepackage keeps files as the entries of one package, relay keeps documents for
others on the network, notebook edits text with undo and exporters in plug-ins,
atlas packs rectangles, and occlusion computes how much light reaches the
vertices of a model."
    PACKAGE_DEPENDS "${runtime_package} (>= ${PROJECT_VERSION})")
endif()
include(CPack)
