# Warning flags and sanitizers, handed to every target through one
# interface library.
add_library(ferrox_compiler_flags INTERFACE)
target_compile_options(ferrox_compiler_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
target_compile_definitions(ferrox_compiler_flags INTERFACE
  QT_NO_URL_CAST_FROM_STRING)

if(FERROX_SANITIZE OR FERROX_FUZZ)
  target_compile_options(ferrox_compiler_flags INTERFACE
    -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(ferrox_compiler_flags INTERFACE -fsanitize=address,undefined)
endif()

# Fuzzing instruments every library for coverage; the targets add the
# fuzzer's own main.
if(FERROX_FUZZ)
  target_compile_options(ferrox_compiler_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
