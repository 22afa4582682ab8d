// fernlow-stand-in: answers the desktop application's protocol on a socket of one's choice, so
// that the command-line client can be tried and tested where the application does not run.
#include "endpoints.h"
#include "http_server.h"
#include "state.h"
#include "unix_socket.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string_view>

namespace {

constexpr const char* usage =
    "fernlow-stand-in: a small application that answers the same protocol as Fernlow.\n"
    "\n"
    "  fernlow-stand-in --socket PATH   Listen on PATH, for this user only, until SIGTERM or\n"
    "                                   SIGINT; then remove the socket.\n"
    "\n"
    "What it is told lives in memory and is gone when it stops. Builds really are written into a\n"
    "project's build folder; packages, previews and image optimising are only talked about.\n";

void serveUntilStopped(const char* socketPath) {
    using namespace fernlow::standin;
    // Blocked before the server's thread exists, so that the thread inherits the mask and the
    // signals can only arrive in sigwait.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    // A client that hangs up early must cost its own reply, not the program.
    (void)std::signal(SIGPIPE, SIG_IGN);

    State state;
    const ListeningSocket socket(socketPath);
    const HttpServer server(socket.descriptor(),
                            [&](const Request& request) { return answer(state, request); });
    std::printf("listening on %s\n", socketPath);
    (void)std::fflush(stdout);
    int received = 0;
    sigwait(&stopSignals, &received);
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (option == "--help" || option == "-h") {
        (void)std::fputs(usage, stdout);
        return 0;
    }
    if (argc != 3 || option != "--socket") {
        (void)std::fputs(usage, stderr);
        return 2;
    }
    try {
        serveUntilStopped(argv[2]);
        return 0;
    } catch (const std::exception& error) {
        (void)std::fprintf(stderr, "fernlow-stand-in: %s\n", error.what());
        return 1;
    }
}
