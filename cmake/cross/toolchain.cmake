# Compiles on Linux for the systems that something is shipped for, with what "scripts/setup --cross"
# puts under build/. FERNLOW_TARGET, the processor and the system, is the presets'.
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
if(NOT EXISTS ${root}/build/toolchain)
  message(FATAL_ERROR "The toolchain for other systems isn't there; scripts/setup --cross installs it.")
endif()

# These are given to whatever CMake tries out, too. The compiler makes its own libraries at the first
# link with each combination of them, and that takes minutes.
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FERNLOW_TARGET)
# -fPIE it takes only when it links.
set(CMAKE_CXX_COMPILER ${CMAKE_CURRENT_LIST_DIR}/c++ -O2 -s -fPIC --target=${FERNLOW_TARGET})
set(CMAKE_C_COMPILER ${CMAKE_CURRENT_LIST_DIR}/cc -O2 -s -fPIC --target=${FERNLOW_TARGET})
foreach(kind "" CXX_COMPILER_ C_COMPILER_)
  set(CMAKE_${kind}AR ${CMAKE_CURRENT_LIST_DIR}/ar CACHE FILEPATH "")
  set(CMAKE_${kind}RANLIB ${CMAKE_CURRENT_LIST_DIR}/ranlib CACHE FILEPATH "")
endforeach()
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${FERNLOW_TARGET})
if(FERNLOW_TARGET MATCHES macos)
  set(CMAKE_SYSTEM_NAME Darwin)
  # CMake's trial of these passes an option that this linker doesn't know.
  set(CMAKE_CXX_COMPILER_WORKS TRUE)
  set(CMAKE_CXX_ABI_COMPILED TRUE)
  set(CMAKE_SIZEOF_VOID_P 8)
  # Left alone, the compiler signs what it links for Apple's processors only. Asked to grant
  # entitlements, here none, it signs for Intel's too; but it has to be asked as a linker.
  if(FERNLOW_TARGET MATCHES "^x86_64")
    set(CMAKE_CXX_LINK_EXECUTABLE "\"${CMAKE_CURRENT_LIST_DIR}/build-exe\" -OReleaseFast -fstrip \
-dead_strip -target ${FERNLOW_TARGET} --entitlements \
\"${CMAKE_CURRENT_LIST_DIR}/macos/entitlements.plist\" -lc++ -femit-bin=<TARGET> <OBJECTS> <LINK_LIBRARIES>")
  endif()
  # CMake's flags for these are Xcode's; the target tells all this compiler wants to know.
  set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
  set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "")
  # Last in the search, so that the toolchain's own headers prevail.
  set(CMAKE_CXX_FLAGS_INIT "-idirafter \"${CMAKE_CURRENT_LIST_DIR}/macos/headers\"")
else()
  set(CMAKE_SYSTEM_NAME Linux)
  if(FERNLOW_TARGET MATCHES "^aarch64")
    # Optimised as one with the C++ library, which has no branch protection, nothing would have it.
    set(CMAKE_EXE_LINKER_FLAGS_INIT -fno-lto)
  endif()
endif()

# Nothing of this machine's is for the other, but headers are.
set(CMAKE_FIND_ROOT_PATH ${root}/build/toolchain)
foreach(kind INCLUDE LIBRARY PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(FERNLOW_BOOST_HEADERS ${root}/build/toolchain/headers CACHE PATH "The folder with boost/ in it")
