# Run by CPack on what it is about to put into packages: Debian wants manual pages compressed.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/*.[1-8])
list(FILTER pages INCLUDE REGEX "/share/man/man[1-8]/")
if(pages)
  execute_process(COMMAND gzip --best --no-name --force ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()
