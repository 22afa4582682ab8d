# Hardens release builds with the options that distributions use. Makes the same commit give the same
# bytes in every folder. Developer builds use sanitizers instead.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)

# Not all of these options work in the static programs. Stack clash protection is for x86_64 only. The
# toolchain compiles its C and C++ libraries without these options. Therefore the programs are not
# marked as protected, and the system enables neither BTI nor shadow stacks. Signed return addresses on
# arm64 work nevertheless.
#
# -Werror: some compilers only warn about an unknown option.
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag -fPIE -fstack-protector-strong -fstack-clash-protection -fcf-protection=full
             -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "FERNLOW_HAS${flag}" has_flag)
  check_cxx_compiler_flag(${flag} ${has_flag})
  if(${has_flag})
    add_compile_options(${flag})
  endif()
endforeach()

# Distributions may already define _FORTIFY_SOURCE, with another value. musl does not support it.
set(CMAKE_REQUIRED_FLAGS "-Werror -O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <cstdio>\nint main() { return 0; }" FERNLOW_HAS_FORTIFY_3)
set(fortify_level 2)
if(FERNLOW_HAS_FORTIFY_3)
  set(fortify_level 3)
endif()
unset(CMAKE_REQUIRED_FLAGS)
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${fortify_level}
                    "-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")

if(NOT APPLE)
  # On macOS all programs are position-independent, and these options do not exist.
  add_link_options(-pie -Wl,-z,relro,-z,now)
endif()
