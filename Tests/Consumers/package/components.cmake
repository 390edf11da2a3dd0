# usage: cmake -D STAGE=DIRECTORY -P components.cmake
# The package has no components, and says so to whoever asks for one.
find_package(zeBase QUIET CONFIG PATHS ${STAGE} NO_DEFAULT_PATH COMPONENTS Gadgets)
if(zeBase_FOUND OR NOT zeBase_NOT_FOUND_MESSAGE MATCHES "no component Gadgets")
  message(FATAL_ERROR "zeBase was found with a component that it does not have: ${zeBase_NOT_FOUND_MESSAGE}")
endif()
