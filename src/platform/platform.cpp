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

// musl defines no macro that identifies it.
#if defined(__linux__) && !defined(__GLIBC__)
#define FERNLOW_WITH_MUSL
#include <link.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#endif

// POSIX requires the program to declare `environ`.
// NOLINTNEXTLINE(readability-redundant-declaration): glibc declares it, macOS does not.
extern char** environ;

namespace fernlow::platform {

namespace {

std::optional<std::string> homeFolderIn(const passwd* entry) {
    if (entry == nullptr || entry->pw_dir == nullptr || *entry->pw_dir == '\0') {
        return std::nullopt;
    }
    return entry->pw_dir;
}

#ifndef __APPLE__
/// Marks every descriptor except the standard streams as close-on-exec. Returns false if a
/// descriptor may remain unmarked.
bool markDescriptorsCloseOnExec() {
#ifdef SYS_close_range
    // Some C libraries have no function for this system call, or no constant for its flag.
    constexpr unsigned closeOnExec = 1U << 2U;
    if (::syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, closeOnExec) == 0) {
        return true;
    }
#endif
    // The call fails on Linux before 5.11 and in a container that forbids it.
    DIR* const folder = ::opendir("/proc/self/fd");
    if (folder == nullptr) {
        return false;
    }
    bool allMarked = true;
    errno = 0;
    for (const dirent* entry = ::readdir(folder); entry != nullptr; entry = ::readdir(folder)) {
        const int descriptor = std::atoi(entry->d_name);
        if (descriptor > STDERR_FILENO && ::fcntl(descriptor, F_SETFD, FD_CLOEXEC) != 0) {
            allMarked = false;
        }
    }
    // Only errno distinguishes a failed readdir from the end of the folder.
    allMarked = allMarked && errno == 0;
    ::closedir(folder);
    return allMarked;
}
#endif

/// The file actions and attributes for a program that inherits no descriptor and no signal setting
/// of this process.
class SpawnAttributes {
public:
    SpawnAttributes()
        : hasActions_(::posix_spawn_file_actions_init(&actions_) == 0),
          hasAttributes_(::posix_spawnattr_init(&attributes_) == 0) {}
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    SpawnAttributes(SpawnAttributes&&) = delete;
    SpawnAttributes& operator=(SpawnAttributes&&) = delete;
    ~SpawnAttributes() {
        if (hasAttributes_) {
            ::posix_spawnattr_destroy(&attributes_);
        }
        if (hasActions_) {
            ::posix_spawn_file_actions_destroy(&actions_);
        }
    }

    /// Returns false if the system refuses a step. A program started with an incomplete set could
    /// inherit a descriptor, so none may be started then.
    [[nodiscard]] bool prepare() {
        return hasActions_ && hasAttributes_ && addFileActions() && setAttributes();
    }
    [[nodiscard]] const posix_spawn_file_actions_t* actions() const { return &actions_; }
    [[nodiscard]] const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    bool addOpen(int descriptor, int flags) {
        return ::posix_spawn_file_actions_addopen(&actions_, descriptor, "/dev/null", flags, 0) ==
               0;
    }

    bool addFileActions() {
        const bool opened = addOpen(STDIN_FILENO, O_RDONLY) && addOpen(STDOUT_FILENO, O_WRONLY) &&
                            addOpen(STDERR_FILENO, O_WRONLY);
#ifdef __APPLE__
        return opened;
#else
        // On Linux another program may have the name of macOS's program, and it may look for its
        // arguments in the current folder, whose files are untrusted.
        return opened && ::posix_spawn_file_actions_addchdir_np(&actions_, "/") == 0 &&
               markDescriptorsCloseOnExec();
#endif
    }

    bool setAttributes() {
        sigset_t blocked;
        sigemptyset(&blocked);
        sigset_t reset;
        sigfillset(&reset);
        // The actions of SIGKILL and SIGSTOP cannot be changed, and some systems refuse a request
        // that names them.
        sigdelset(&reset, SIGKILL);
        sigdelset(&reset, SIGSTOP);
#ifdef __APPLE__
        // macOS then closes every descriptor that no file action names.
        constexpr int flags =
            POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_CLOEXEC_DEFAULT;
#else
        constexpr int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
#endif
        return ::posix_spawnattr_setsigmask(&attributes_, &blocked) == 0 &&
               ::posix_spawnattr_setsigdefault(&attributes_, &reset) == 0 &&
               ::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags)) == 0;
    }

    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
    bool hasActions_;
    bool hasAttributes_;
};

} // namespace

#ifdef FERNLOW_WITH_MUSL

namespace {

/// Returns the home folder of the first user in /etc/passwd for whom `matches` is true.
///
/// Replaces musl's getpwuid() and getpwnam(). If a user is not in the file, these functions ask the
/// daemon nscd, wait for it without a limit, and trust the length that nscd gives for its answer.
/// They also accept an entry that is commented out.
template <class Predicate>
std::optional<std::string> findHomeFolder(Predicate matches) {
    std::FILE* const users = std::fopen("/etc/passwd", "re");
    if (users == nullptr) {
        return std::nullopt;
    }
    std::optional<std::string> home;
    for (const passwd* entry = ::fgetpwent(users); entry != nullptr; entry = ::fgetpwent(users)) {
        // A line that begins with "#" is a comment; a line that begins with "+" or "-" refers to a
        // directory service. strchr also finds the end of an empty name.
        const bool isUser = std::strchr("#+-", *entry->pw_name) == nullptr;
        if (isUser && matches(*entry)) {
            home = homeFolderIn(entry);
            break;
        }
    }
    std::fclose(users);
    return home;
}

/// A callback for dl_iterate_phdr, which calls it for the program first. Its result 1 ends the
/// iteration.
int protectRelocationsOf(dl_phdr_info* program, std::size_t /*size*/, void* /*context*/) {
    // `address & pageMask` is the beginning of the page that contains the address.
    const auto pageMask = ~(static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE)) - 1);
    for (int index = 0; index < program->dlpi_phnum; ++index) {
        const auto& segment = program->dlpi_phdr[index];
        if (segment.p_type == PT_GNU_RELRO) {
            const auto address = program->dlpi_addr + segment.p_vaddr;
            const auto begin = address & pageMask;
            const auto end = (address + segment.p_memsz) & pageMask;
            ::mprotect(reinterpret_cast<void*>(begin), end - begin, PROT_READ);
        }
    }
    return 1;
}

} // namespace

std::optional<std::string> homeFolder() {
    return findHomeFolder(
        [user = ::getuid()](const passwd& entry) { return entry.pw_uid == user; });
}

std::optional<std::string> homeFolderOf(const std::string& user) {
    return findHomeFolder([&](const passwd& entry) { return entry.pw_name == user; });
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
    // posix_spawn takes pointers to characters that are not const.
    std::vector<std::string> words{path};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);

    SpawnAttributes spawn;
    pid_t child = 0;
    if (!spawn.prepare() || ::posix_spawn(&child, path.c_str(), spawn.actions(), spawn.attributes(),
                                          argv.data(), environ) != 0) {
        return;
    }
    // If SIGCHLD is ignored, waitpid fails with ECHILD once the program has ended.
    while (::waitpid(child, nullptr, 0) == -1 && errno == EINTR) {
        // Waits again after an interruption.
    }
}

bool prepareSocket(int socket) {
    const bool isCloseOnExec = ::fcntl(socket, F_SETFD, FD_CLOEXEC) == 0;
#ifdef SO_NOSIGPIPE
    // On macOS this is an option of the socket. On Linux it is a flag of each send.
    const int on = 1;
    return isCloseOnExec && ::setsockopt(socket, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on) == 0;
#else
    return isCloseOnExec;
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
