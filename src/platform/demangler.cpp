// Replaces the C++ library's demangler in the static programs. The library calls it only for the
// message about an uncaught exception. The library's own demangler would be a quarter of the
// program, with a thousand pointers that every run has to relocate before main.
#include <cstddef>

/// Always fails. The C++ library then prints the mangled name of the exception's type, and still
/// the text of its what(). The C++ ABI prescribes the name and the signature of this function.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the C++ ABI prescribes the name.
extern "C" char* __cxa_demangle(const char* /*mangled*/, char* /*buffer*/, std::size_t* /*size*/,
                                int* status) {
    if (status != nullptr) {
        constexpr int outOfMemory = -1;
        *status = outOfMemory;
    }
    return nullptr;
}
