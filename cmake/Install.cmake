# What an installation holds: the library, its headers, and what CMake and pkg-config need to find
# them. Every path in the installed files is relative to the file itself, so that the tree may be moved
# (unless CMAKE_INSTALL_LIBDIR or CMAKE_INSTALL_INCLUDEDIR are absolute).
# Three components: Runtime is what a program needs to run, Development what one needs to build it,
# Tools holds the applications, which say so in their own CMakeLists.txt.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS zeBase EXPORT zeBaseTargets
  LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zeBase COMPONENT Development)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Development)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Licence) # packages hold it in another form

# What makes gdb print values as text. gdb looks beside the file of the library, but loads by itself only from
# its own folder, which in /usr is this one; elsewhere it says what to add to its configuration.
set(gdb_dir ${CMAKE_INSTALL_LIBDIR})
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(gdb_dir ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR})
endif()
install(FILES Components/Base/zeBase-gdb.py RENAME libzeBase.so.${PROJECT_VERSION}-gdb.py
  DESTINATION ${gdb_dir} COMPONENT Development)

# Installed applications find the library beside them; in /usr the system does.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set(CMAKE_INSTALL_RPATH $ORIGIN/${bin_to_lib})
endif()

# find_package(zeBase) gives the target ze::Base, from an installation or from the build tree.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zeBase)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zeBaseConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(EXPORT zeBaseTargets NAMESPACE ze:: DESTINATION ${package_dir} COMPONENT Development)
install(FILES cmake/zeBaseConfig.cmake ${PROJECT_BINARY_DIR}/zeBaseConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT Development)
export(EXPORT zeBaseTargets NAMESPACE ze:: FILE ${PROJECT_BINARY_DIR}/zeBaseTargets.cmake)
configure_file(cmake/zeBaseConfig.cmake zeBaseConfig.cmake COPYONLY)

# pkg-config finds the prefix from the place of its file, unless a directory is fixed.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(pkgconfig_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH to_prefix /${pkgconfig_dir} /)
  cmake_path(APPEND pkgconfig_prefix \${pcfiledir} ${to_prefix})
  string(REGEX REPLACE "/$" "" pkgconfig_prefix ${pkgconfig_prefix})
endif()
cmake_path(APPEND pkgconfig_libdir \${prefix} ${CMAKE_INSTALL_LIBDIR}) # an absolute one stands alone
cmake_path(APPEND pkgconfig_includedir \${prefix} ${CMAKE_INSTALL_INCLUDEDIR} zeBase)
configure_file(cmake/zeBase.pc.in zeBase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zeBase.pc DESTINATION ${pkgconfig_dir} COMPONENT Development)

# `cmake --build BUILD_DIR --target uninstall` deletes what the last `cmake --install BUILD_DIR` wrote.
if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -D MANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt
      -P ${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake)
endif()
