# usage: cmake -D MANIFEST=FILE -P Uninstall.cmake
# Deletes the files that an installation listed, and those of its own directories that end up empty.
if(NOT EXISTS "${MANIFEST}")
  message(FATAL_ERROR "Nothing was installed from here: there is no ${MANIFEST}")
endif()
file(STRINGS "${MANIFEST}" files)
set(directories)
foreach(file IN LISTS files)
  set(file "$ENV{DESTDIR}${file}")
  message(STATUS "Deleting ${file}")
  file(REMOVE "${file}")
  cmake_path(GET file PARENT_PATH directory)
  while(directory MATCHES "/(zeBase|plug-ins)(/|$)") # the directories that are ours
    list(APPEND directories "${directory}")
    cmake_path(GET directory PARENT_PATH directory)
  endwhile()
endforeach()
list(REMOVE_DUPLICATES directories)
list(SORT directories ORDER DESCENDING) # the inner ones first
execute_process(COMMAND rmdir --ignore-fail-on-non-empty -- ${directories})
