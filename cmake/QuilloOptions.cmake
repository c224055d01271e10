# Warnings, sanitizers and the source-relative __FILE__ that assertion messages print.

add_compile_options(-Wall -Wextra)
# Assertion messages name files relative to the repository: "nimbit/utils/latch.cpp".
add_compile_options(-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)

if(QUILLO_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "QUILLO_FUZZ needs clang (libFuzzer)")
  endif()
  set(QUILLO_SANITIZE ON)
  # Coverage instrumentation everywhere; only the fuzz targets link libFuzzer's main.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(QUILLO_SANITIZE)
  set(_san -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_compile_options(${_san})
  add_link_options(${_san})
  add_compile_definitions(QUILLO_SANITIZED=1)
endif()

# Everything in the plug-in is hidden unless exported on purpose.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
