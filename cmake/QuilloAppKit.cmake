# quillo_appkit(<flags-var> <libs-var> <what>): enables Objective-C++ and returns the compile flags and
# link libraries for AppKit code: the system frameworks on macOS; elsewhere GNUstep, whose
# Objective-C runtime comes with gcc, so the .mm files are always compiled by g++ (even when the rest
# of the build uses clang). Leaves both variables empty when GNUstep is missing (an error with
# QUILLO_COCOA=ON); <what> names the part in the messages.
macro(quillo_appkit flags_var libs_var what)
  set(${flags_var})
  set(${libs_var})
  if(APPLE)
    enable_language(OBJCXX)
    set(${flags_var} -fno-objc-arc)
    set(${libs_var} "-framework AppKit" "-framework Carbon")
  else()
    find_program(GNUSTEP_CONFIG gnustep-config)
    find_program(GNUSTEP_GXX NAMES g++)
    if(NOT GNUSTEP_CONFIG OR NOT GNUSTEP_GXX)
      if(QUILLO_COCOA STREQUAL "ON")
        message(FATAL_ERROR "QUILLO_COCOA=ON but gnustep-config or g++ is missing")
      endif()
      message(STATUS "${what}: GNUstep not found, skipped")
    else()
      set(CMAKE_OBJCXX_COMPILER ${GNUSTEP_GXX})
      enable_language(OBJCXX)
      execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags OUTPUT_VARIABLE _appkit_objc_flags
                      OUTPUT_STRIP_TRAILING_WHITESPACE)
      execute_process(COMMAND ${GNUSTEP_CONFIG} --gui-libs OUTPUT_VARIABLE _appkit_gui_libs
                      OUTPUT_STRIP_TRAILING_WHITESPACE)
      separate_arguments(_appkit_objc_flags UNIX_COMMAND "${_appkit_objc_flags}")
      separate_arguments(_appkit_gui_libs UNIX_COMMAND "${_appkit_gui_libs}")
      # Dependency files are CMake's business and the optimisation level the build type's.
      list(FILTER _appkit_objc_flags EXCLUDE REGEX "^-(MMD|MP|g|O[0-9s]?|Wall|I\\.)$")
      # Its headers are system headers: their warnings are not ours to fix.
      list(TRANSFORM _appkit_objc_flags REPLACE "^-I" "-isystem")
      # GNUstep's headers declare types in anonymous namespaces that its own inline code uses.
      set(${flags_var} ${_appkit_objc_flags} -Wno-subobject-linkage)
      set(${libs_var} ${_appkit_gui_libs})
      message(STATUS "${what}: GNUstep (${GNUSTEP_CONFIG})")
    endif()
  endif()
endmacro()
