// Runs a command with a pseudo-terminal as its standard output, reads that empty, and ends with the
// command's exit status. With --show the output also goes to this program's standard output; with
// --peak only how much memory the command took at most and how long its output was (both in bytes,
// the terminal's carriage returns not counted).
//
//   in-terminal [--show | --peak] PROGRAM ARGUMENT...
#define _XOPEN_SOURCE 700
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

static char drained[65536];
static long long drainedCount = 0;

/// The most memory that any of this program's children has taken, in bytes.
static long long peakOfChildren(void) {
    struct rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
#ifdef __APPLE__
    return usage.ru_maxrss;
#else
    return 1024LL * usage.ru_maxrss;
#endif
}

/// Reads until every copy of the terminal is closed, which is an error on Linux and an end on
/// macOS.
static int drain(int terminal, int isShown) {
    for (;;) {
        const ssize_t count = read(terminal, drained, sizeof drained);
        if (count <= 0) {
            return 1;
        }
        for (ssize_t index = 0; index < count; ++index) {
            drainedCount += drained[index] != '\r';
        }
        if (isShown && write(STDOUT_FILENO, drained, (size_t)count) != count) {
            return 0;
        }
    }
}

int main(int argc, char** argv) {
    const int isShown = argc > 1 && strcmp(argv[1], "--show") == 0;
    const int isWeighed = argc > 1 && strcmp(argv[1], "--peak") == 0;
    char** const command = argv + 1 + isShown + isWeighed;
    const int controller = posix_openpt(O_RDWR | O_NOCTTY);
    if (argc < 2 + isShown + isWeighed || controller < 0 || grantpt(controller) != 0 ||
        unlockpt(controller) != 0) {
        return 2;
    }
    // Opened before the command runs, so that there is no moment at which nobody has it open.
    const int terminal = open(ptsname(controller), O_RDWR | O_NOCTTY);
    const pid_t child = terminal < 0 ? -1 : fork();
    if (child < 0) {
        return 2;
    }
    if (child == 0) {
        dup2(terminal, STDOUT_FILENO);
        close(terminal);
        close(controller);
        execv(command[0], command);
        _exit(127);
    }
    close(terminal);
    int status = 0;
    if (!drain(controller, isShown) || waitpid(child, &status, 0) != child) {
        return 2;
    }
    if (isWeighed) {
        printf("%lld %lld\n", peakOfChildren(), drainedCount);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 2;
}
