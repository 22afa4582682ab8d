// Runs a command with a pseudo-terminal as its standard output, reads all output, and ends with the
// command's exit status. With --show, copies the output to standard output. With --peak, prints the
// command's peak memory and the length of its output, both in bytes, without the carriage returns
// that the terminal adds.
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

/// Returns the peak memory of this program's children, in bytes.
static long long peakOfChildren(void) {
    struct rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
#ifdef __APPLE__
    return usage.ru_maxrss;
#else
    return 1024LL * usage.ru_maxrss;
#endif
}

/// Reads until every copy of the terminal is closed, which Linux reports as an error and macOS as
/// the end of the file. Returns whether all output could be shown.
static int drain(int terminal, int showsOutput) {
    for (;;) {
        const ssize_t count = read(terminal, drained, sizeof drained);
        if (count <= 0) {
            return 1;
        }
        for (ssize_t index = 0; index < count; ++index) {
            drainedCount += drained[index] != '\r';
        }
        if (showsOutput && write(STDOUT_FILENO, drained, (size_t)count) != count) {
            return 0;
        }
    }
}

int main(int argc, char** argv) {
    const int showsOutput = argc > 1 && strcmp(argv[1], "--show") == 0;
    const int printsPeak = argc > 1 && strcmp(argv[1], "--peak") == 0;
    char** const command = argv + 1 + showsOutput + printsPeak;
    const int controller = posix_openpt(O_RDWR | O_NOCTTY);
    if (argc < 2 + showsOutput + printsPeak || controller < 0 || grantpt(controller) != 0 ||
        unlockpt(controller) != 0) {
        return 2;
    }
    // Opened before the command runs: if nobody has the terminal open, reading it ends.
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
    if (!drain(controller, showsOutput) || waitpid(child, &status, 0) != child) {
        return 2;
    }
    if (printsPeak) {
        printf("%lld %lld\n", peakOfChildren(), drainedCount);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 2;
}
