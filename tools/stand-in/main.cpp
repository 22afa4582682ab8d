// fernlow-stand-in: serves the desktop application's protocol on any socket, so that the
// command-line client can be tried and tested where the application does not run.
#include "endpoints.h"
#include "http_server.h"
#include "state.h"
#include "unix_socket.h"

#include <time.h>

#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>

namespace {

constexpr const char* usage =
    "fernlow-stand-in: a small application that answers the same protocol as Fernlow.\n"
    "\n"
    "  fernlow-stand-in --socket PATH [--work-time MS]\n"
    "\n"
    "Listens on PATH, for this user only, until SIGTERM or SIGINT; then removes the socket. Each\n"
    "step of its work, such as a file compiled, takes MS milliseconds (10 when not given).\n"
    "\n"
    "What it does not do: watch folders, so a file saved is compiled only when it is processed;\n"
    "compile, since what it writes into a build folder are copies of sources whose brackets\n"
    "balance; run npm, optimise images, open a browser or serve a preview, which it only talks\n"
    "about; run hooks and build steps; export; remember anything once it stops. It knows a few\n"
    "settings of each kind, and no groups, rows or extensions of settings.\n";

volatile std::sig_atomic_t isStopRequested = 0;

void stop(int /*unused*/) {
    isStopRequested = 1;
}

void serveUntilStopped(const char* socketPath, int workTime) {
    using namespace fernlow::standin;
    (void)std::signal(SIGINT, stop);
    (void)std::signal(SIGTERM, stop);
    // If a client disconnects early, writing to it must not end the program.
    (void)std::signal(SIGPIPE, SIG_IGN);

    State state;
    state.workTime = std::chrono::milliseconds(workTime);
    const ListeningSocket socket(socketPath);
    HttpServer server(socket.descriptor(),
                      [&](const Request& request) { return answer(state, request); });
    std::printf("listening on %s\n", socketPath);
    (void)std::fflush(stdout);
    const timespec pollInterval{0, 5'000'000};
    while (isStopRequested == 0) {
        server.advance([&] { state.advance(); });
        nanosleep(&pollInterval, nullptr);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && (std::string_view(argv[1]) == "--help" || std::string_view(argv[1]) == "-h")) {
        (void)std::fputs(usage, stdout);
        return 0;
    }
    const char* socketPath = nullptr;
    int workTime = 10;
    bool isValid = argc % 2 == 1;
    for (int index = 1; isValid && index < argc; index += 2) {
        const std::string_view option = argv[index];
        const char* value = argv[index + 1];
        const char* end = value + std::strlen(value);
        if (option == "--socket") {
            socketPath = value;
        } else {
            const auto read = std::from_chars(value, end, workTime);
            isValid = option == "--work-time" && read.ptr == end && read.ec == std::errc() &&
                      workTime >= 0;
        }
    }
    if (!isValid || socketPath == nullptr) {
        (void)std::fputs(usage, stderr);
        return 2;
    }
    try {
        serveUntilStopped(socketPath, workTime);
        return 0;
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "fernlow-stand-in: %s\n", error.what());
        return 1;
    }
}
