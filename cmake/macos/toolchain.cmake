# Compiles for macOS on Linux, with what "scripts/setup --macos" puts under build/. The processor and
# the oldest macOS are the presets'.
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
if(NOT EXISTS ${root}/build/toolchain)
  message(FATAL_ERROR "The toolchain for macOS isn't there; scripts/setup --macos installs it.")
endif()

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_AR ${CMAKE_CURRENT_LIST_DIR}/ar CACHE FILEPATH "")
set(CMAKE_RANLIB ${CMAKE_CURRENT_LIST_DIR}/ranlib CACHE FILEPATH "")
# These are given to whatever CMake tries out, too. The compiler makes its own libraries at the first
# link with each combination of them, and that takes minutes.
set(CMAKE_CXX_COMPILER ${CMAKE_CURRENT_LIST_DIR}/c++ -O2 -s --target=${FERNLOW_MACOS_TARGET})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FERNLOW_MACOS_TARGET)
# CMake's trial of these passes an option that this linker doesn't know.
set(CMAKE_CXX_COMPILER_WORKS TRUE)
set(CMAKE_CXX_ABI_COMPILED TRUE)
set(CMAKE_SIZEOF_VOID_P 8)
# Left alone, the compiler signs what it links for Apple's processors only. Asked to grant
# entitlements, here none, it signs for Intel's too; but it has to be asked as a linker.
if(FERNLOW_MACOS_TARGET MATCHES "^x86_64")
  set(CMAKE_CXX_LINK_EXECUTABLE "\"${CMAKE_CURRENT_LIST_DIR}/build-exe\" -OReleaseFast -fstrip \
-dead_strip -target ${FERNLOW_MACOS_TARGET} --entitlements \
\"${CMAKE_CURRENT_LIST_DIR}/entitlements.plist\" -lc++ -femit-bin=<TARGET> <OBJECTS> <LINK_LIBRARIES>")
endif()
# CMake's flags for these are Xcode's; the target tells all this compiler wants to know.
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "")

# Last in the search, so that the toolchain's own headers prevail.
set(CMAKE_CXX_FLAGS_INIT "-idirafter \"${CMAKE_CURRENT_LIST_DIR}/headers\"")

# Nothing of this machine's is for a Mac, but headers are.
set(CMAKE_FIND_ROOT_PATH ${root}/build/toolchain)
foreach(kind INCLUDE LIBRARY PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(FERNLOW_BOOST_HEADERS ${root}/build/toolchain/headers CACHE PATH "The folder with boost/ in it")
