# Compiles on Linux for macOS and for every Linux, with the toolchain that "scripts/setup --cross" installs
# in build/. The presets set FERNLOW_TARGET, which names the processor and the system.
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
if(NOT EXISTS ${root}/build/toolchain)
  message(FATAL_ERROR "There is no toolchain for other systems in build/; scripts/setup --cross installs it.")
endif()

# CMake also uses these options for its trial programs. The toolchain compiles its own libraries at the
# first link with each combination of options, which takes minutes.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FERNLOW_TARGET)
# This compiler accepts -fPIE only when it links.
set(CMAKE_CXX_COMPILER ${CMAKE_CURRENT_LIST_DIR}/c++ -O2 -s -fPIC --target=${FERNLOW_TARGET})
set(CMAKE_C_COMPILER ${CMAKE_CURRENT_LIST_DIR}/cc -O2 -s -fPIC --target=${FERNLOW_TARGET})
foreach(kind "" CXX_COMPILER_ C_COMPILER_)
  set(CMAKE_${kind}AR ${CMAKE_CURRENT_LIST_DIR}/ar CACHE FILEPATH "")
  set(CMAKE_${kind}RANLIB ${CMAKE_CURRENT_LIST_DIR}/ranlib CACHE FILEPATH "")
endforeach()
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${FERNLOW_TARGET})
if(FERNLOW_TARGET MATCHES macos)
  set(CMAKE_SYSTEM_NAME Darwin)
  # CMake would test the compiler with an option that this linker does not know.
  set(CMAKE_CXX_COMPILER_WORKS TRUE)
  set(CMAKE_CXX_ABI_COMPILED TRUE)
  set(CMAKE_SIZEOF_VOID_P 8)
  # The toolchain signs programs for Apple processors. It signs programs for Intel processors only if it is
  # given entitlements (here an empty list), which only its command build-exe accepts.
  if(FERNLOW_TARGET MATCHES "^x86_64")
    set(CMAKE_CXX_LINK_EXECUTABLE "\"${CMAKE_CURRENT_LIST_DIR}/build-exe\" -OReleaseFast -fstrip \
-dead_strip -target ${FERNLOW_TARGET} --entitlements \
\"${CMAKE_CURRENT_LIST_DIR}/macos/entitlements.plist\" -lc++ -femit-bin=<TARGET> <OBJECTS> <LINK_LIBRARIES>")
  endif()
  # With these settings CMake would pass options for Xcode. The target is enough for this compiler.
  set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
  set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "")
  # These headers are searched last, so that the toolchain's own headers take precedence.
  set(CMAKE_CXX_FLAGS_INIT "-idirafter \"${CMAKE_CURRENT_LIST_DIR}/macos/headers\"")
else()
  set(CMAKE_SYSTEM_NAME Linux)
  if(FERNLOW_TARGET MATCHES "^aarch64")
    # The toolchain's C++ library has no branch protection, and link-time optimisation with that library
    # would remove the protection from the whole program.
    set(CMAKE_EXE_LINKER_FLAGS_INIT -fno-lto)
  endif()
endif()

# Only headers of this machine can be used for the other system, none of its libraries.
set(CMAKE_FIND_ROOT_PATH ${root}/build/toolchain)
foreach(kind INCLUDE LIBRARY PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(FERNLOW_BOOST_HEADERS ${root}/build/toolchain/headers CACHE PATH "The folder that contains boost/")
