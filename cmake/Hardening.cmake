# Builds what is shipped as distributions build their programs, and so that the same commit gives the
# same bytes wherever its folder is. The other builds have their sanitizers instead.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)

# What comes of them in the static programs: stack clashes are looked for on x86_64 alone; the C and
# C++ libraries that the toolchain makes have none of it, so the system is told of no control-flow
# protection and switches neither BTI nor shadow stacks on; signed return addresses on ARM's
# processors act nevertheless.
#
# Some compilers only warn of a flag that means nothing to them.
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag -fPIE -fstack-protector-strong -fstack-clash-protection -fcf-protection=full
             -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "FERNLOW_HAS${flag}" has_flag)
  check_cxx_compiler_flag(${flag} ${has_flag})
  if(${has_flag})
    add_compile_options(${flag})
  endif()
endforeach()

# Distributions may define it already, to something else. Of the C libraries musl has nothing like it.
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
  # macOS has position-independent programs only, and nothing like the rest.
  add_link_options(-pie -Wl,-z,relro,-z,now)
endif()
