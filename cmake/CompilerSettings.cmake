# What every target of this project is compiled with. Nothing here leaks to a consumer or a parent
# project: the settings travel on the interface target zeBaseSettings, which is linked privately.
add_library(zeBaseSettings INTERFACE)
target_compile_features(zeBaseSettings INTERFACE cxx_std_20)
target_compile_options(zeBaseSettings INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wconversion -Wsign-conversion
  # Results of arithmetic are part of the behaviour: no fused multiply-add behind our back.
  -ffp-contract=off
  # __FILE__ (in assertions) is relative, the same on every machine.
  -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(ZEBASE_WERROR)
  target_compile_options(zeBaseSettings INTERFACE -Werror)
endif()
if(ZEBASE_SANITIZE)
  target_compile_options(zeBaseSettings INTERFACE -fsanitize=${ZEBASE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zeBaseSettings INTERFACE -fsanitize=${ZEBASE_SANITIZE})
endif()
if(ZEBASE_HARDENING AND NOT ZEBASE_SANITIZE)
  set(optimised $<NOT:$<CONFIG:Debug,>>) # the fortified C library needs optimisation
  target_compile_options(zeBaseSettings INTERFACE
    $<${optimised}:-fstack-protector-strong> $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>)
  target_link_options(zeBaseSettings INTERFACE $<${optimised}:LINKER:-z,relro,-z,now>)
endif()
