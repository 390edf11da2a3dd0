# What an installation holds: the library, its headers, and what CMake and pkg-config need to find
# them. Every path in the installed files is relative to the file itself, so that the tree may be moved.
# Two components: Runtime is what a program needs to run, Development what one needs to build it.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS zeBase EXPORT zeBaseTargets
  LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
  FILE_SET HEADERS COMPONENT Development)
install(FILES LICENSE README.md CHANGELOG.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Runtime)

# find_package(zeBase) gives the target ze::Base.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zeBase)
install(EXPORT zeBaseTargets NAMESPACE ze:: DESTINATION ${package_dir} FILE zeBaseConfig.cmake
  COMPONENT Development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zeBaseConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zeBaseConfigVersion.cmake DESTINATION ${package_dir}
  COMPONENT Development)

# pkg-config finds the prefix from the place of its file.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfig_to_prefix /${pkgconfig_dir} /)
string(REGEX REPLACE "/$" "" pkgconfig_to_prefix ${pkgconfig_to_prefix})
configure_file(cmake/zeBase.pc.in zeBase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zeBase.pc DESTINATION ${pkgconfig_dir} COMPONENT Development)

# The Debian packages, made by `./dev package`: libzebase0 and libzebase-dev.
set(soname_package libzebase${PROJECT_VERSION_MAJOR})
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "The zeBase authors")
set(CPACK_PACKAGE_CONTACT "The zeBase authors <zebase@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${soname_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzebase-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${soname_package} (= ${PROJECT_VERSION})")
include(CPack)
