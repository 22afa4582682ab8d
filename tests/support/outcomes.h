#pragma once

#include "support/command_line.h"
#include "support/process.h"
#include "support/scripted_peer.h"

#include <chrono>
#include <functional>
#include <string>
#include <utility>

namespace fernlow::test {

inline const Outcome notRunning{
    "",
    "Fernlow is not running, or it is not listening for agents. Open Fernlow "
    "and try again.\n",
    3};
inline const Outcome writeFailed{"", "The request could not be sent to Fernlow.\n", 3};
inline const Outcome readFailed{"", "Fernlow stopped answering partway through its reply.\n", 3};
inline const Outcome malformed{
    "", "Something answered on Fernlow's socket, but not with a reply Fernlow would send.\n", 3};
inline const Outcome done{"Done.\n", "", 0};
// Closing with unread bytes resets the connection on Linux. On macOS it only ends the connection.
#ifdef __APPLE__
inline const Outcome& afterReset = malformed;
#else
inline const Outcome& afterReset = readFailed;
#endif

/// Returns a script that answers with success and no result.
inline ScriptedPeer::Script answerDone() {
    return answer(reply(R"({"ok":true})"));
}

/// Settings for a command line with a negative timeout. With the default settings, the program
/// would wait 5 seconds for a peer that does not answer.
inline const ExchangeSettings shortTimeout{.minReplyTimeout = std::chrono::milliseconds(100)};

/// Runs a command line in this process against the peer.
inline Outcome runAgainst(const ScriptedPeer& peer, const std::string& line,
                          const ExchangeSettings& settings = {}) {
    return runLine("--no-launch --socket " + peer.path() + " " + line, settings);
}

/// Runs a command line with the built program against the peer. ProgramRun describes `prepare` and
/// `inTerminal`.
inline Outcome runProgramAgainst(const ScriptedPeer& peer, const std::string& line,
                                 std::function<void()> prepare = {}, bool inTerminal = false) {
    return runProgram({splitWords("--no-launch --socket " + peer.path() + " " + line), "/",
                       std::move(prepare), inTerminal});
}

} // namespace fernlow::test
