#include "platform/platform.h"

#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#ifdef __APPLE__
#include <sysdir.h>

#include <array>
#include <climits>
#else
#include <dirent.h>
#include <sys/syscall.h>

#include <cstdlib>
#endif

// musl, which gives itself no name.
#if defined(__linux__) && !defined(__GLIBC__)
#define FERNLOW_WITH_MUSL
#include <link.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#endif

// POSIX leaves declaring it to the program.
extern char**
    environ; // NOLINT(readability-redundant-declaration): glibc declares it, macOS doesn't

namespace fernlow::platform {

namespace {

std::optional<std::string> homeFolderIn(const passwd* entry) {
    if (entry == nullptr || entry->pw_dir == nullptr || *entry->pw_dir == '\0') {
        return std::nullopt;
    }
    return entry->pw_dir;
}

#ifndef __APPLE__
/// Sees to it that no started program inherits a descriptor but the standard streams.
void closeDescriptorsAtExec() {
#ifdef SYS_close_range
    // Not every C library has a function for it, nor each one's headers a name for marking only.
    constexpr unsigned closeAtExec = 1U << 2U;
    if (::syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, closeAtExec) == 0) {
        return;
    }
#endif
    // Linux before 5.11, or a container that forbids it.
    if (DIR* const open = ::opendir("/proc/self/fd")) {
        while (const dirent* const entry = ::readdir(open)) {
            const int descriptor = std::atoi(entry->d_name);
            if (descriptor > STDERR_FILENO) {
                ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
            }
        }
        ::closedir(open);
    }
}
#endif

/// What a started program gets instead of our descriptors, and of what is done about signals here.
class CleanStart {
public:
    CleanStart() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        // Their defaults can't be changed, and some systems refuse to be asked for it.
        sigdelset(&signals, SIGKILL);
        sigdelset(&signals, SIGSTOP);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
#ifdef __APPLE__
        // macOS closes every descriptor that no file action names.
        constexpr int flags =
            POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
        constexpr int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
        closeDescriptorsAtExec();
        // What goes by the name of macOS's program here may look for its words in this folder,
        // which may be anybody's.
        posix_spawn_file_actions_addchdir_np(&actions_, "/");
#endif
        posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }
    CleanStart(const CleanStart&) = delete;
    CleanStart& operator=(const CleanStart&) = delete;
    CleanStart(CleanStart&&) = delete;
    CleanStart& operator=(CleanStart&&) = delete;
    ~CleanStart() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }

    [[nodiscard]] const posix_spawn_file_actions_t* actions() const { return &actions_; }
    [[nodiscard]] const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

} // namespace

#ifdef FERNLOW_WITH_MUSL

namespace {

/// musl's own look-ups ask nscd about whom the file doesn't know, wait for it without limit, and
/// believe what it says of its answer's length. They also take an entry that is commented out.
template <class Condition>
std::optional<std::string> homeFolderWhere(Condition holds) {
    std::FILE* const users = std::fopen("/etc/passwd", "re");
    if (users == nullptr) {
        return std::nullopt;
    }
    const passwd* entry = nullptr;
    do {
        entry = ::fgetpwent(users);
    } while (entry != nullptr &&
             (std::strchr("#+-", *entry->pw_name) != nullptr || !holds(*entry)));
    auto home = homeFolderIn(entry);
    std::fclose(users);
    return home;
}

/// For dl_iterate_phdr, which begins with the program itself.
int protectRelocationsOf(dl_phdr_info* program, std::size_t /*size*/, void* /*context*/) {
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    for (int index = 0; index < program->dlpi_phnum; ++index) {
        const auto& part = program->dlpi_phdr[index];
        if (part.p_type == PT_GNU_RELRO) {
            const auto begin = (program->dlpi_addr + part.p_vaddr) & -page;
            const auto end = (program->dlpi_addr + part.p_vaddr + part.p_memsz) & -page;
            ::mprotect(reinterpret_cast<void*>(begin), end - begin, PROT_READ);
        }
    }
    return 1;
}

} // namespace

std::optional<std::string> homeFolder() {
    return homeFolderWhere(
        [user = ::getuid()](const passwd& entry) { return entry.pw_uid == user; });
}

std::optional<std::string> homeFolderOf(const std::string& user) {
    return homeFolderWhere([&](const passwd& entry) { return entry.pw_name == user; });
}

void protectRelocations() {
    ::dl_iterate_phdr(protectRelocationsOf, nullptr);
}

#else

std::optional<std::string> homeFolder() {
    return homeFolderIn(::getpwuid(::getuid()));
}

std::optional<std::string> homeFolderOf(const std::string& user) {
    return homeFolderIn(::getpwnam(user.c_str()));
}

void protectRelocations() {}

#endif

std::string applicationSupportFolder() {
#ifdef __APPLE__
    std::array<char, PATH_MAX> path{};
    const auto state = sysdir_start_search_path_enumeration(SYSDIR_DIRECTORY_APPLICATION_SUPPORT,
                                                            SYSDIR_DOMAIN_MASK_USER);
    return sysdir_get_next_search_path_enumeration(state, path.data()) == 0 ? "" : path.data();
#else
    return "";
#endif
}

void runProgram(const std::string& path, const std::vector<std::string>& arguments) {
    std::vector<std::string> words{path};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);

    const CleanStart clean;
    pid_t child = 0;
    if (::posix_spawn(&child, path.c_str(), clean.actions(), clean.attributes(), argv.data(),
                      environ) != 0) {
        return;
    }
    // Where SIGCHLD is ignored there is nothing to collect: waiting ends with ECHILD once the
    // program has ended.
    while (::waitpid(child, nullptr, 0) == -1 && errno == EINTR) {
    }
}

void prepareSocket(int socket) {
    ::fcntl(socket, F_SETFD, FD_CLOEXEC);
#ifdef SO_NOSIGPIPE
    // macOS has this as a property of the socket, Linux as a flag of each send.
    const int on = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
}

ssize_t sendWithoutSignal(int socket, const char* bytes, std::size_t count) {
#ifdef SO_NOSIGPIPE
    return ::send(socket, bytes, count, 0);
#else
    return ::send(socket, bytes, count, MSG_NOSIGNAL);
#endif
}

} // namespace fernlow::platform
