# What find_package(zeBase) reads, in an installation and in a build tree: the target ze::Base. The
# package has no components.
foreach(component IN LISTS zeBase_FIND_COMPONENTS)
  set(zeBase_${component}_FOUND FALSE)
  if(zeBase_FIND_REQUIRED_${component})
    set(zeBase_FOUND FALSE)
    set(zeBase_NOT_FOUND_MESSAGE "zeBase has no component ${component}")
    return()
  endif()
endforeach()
include(${CMAKE_CURRENT_LIST_DIR}/zeBaseTargets.cmake)
