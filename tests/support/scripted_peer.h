#pragma once

#include "support/temporary_folder.h"

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace fernlow::test {

/// A server on a real socket that runs one script for each connection, one after the other, and
/// stores the requests.
class ScriptedPeer {
public:
    /// The peer's side of a connection.
    class Connection {
    public:
        explicit Connection(int socket) : socket_(socket) {}

        /// Reads until the request is complete or the client closes the connection. Returns the
        /// request: head and body.
        const std::string& readRequest();
        /// Writes until the client has all bytes or closes the connection.
        void write(std::string_view bytes) const;
        /// Waits for the first byte of the request, without reading it. If the script then ends,
        /// the connection closes with unread bytes, which resets it.
        void awaitFirstByte() const;
        /// Waits until the client has closed its side, without reading.
        void waitUntilGone() const;
        /// Returns whether the client has closed its side. Waits up to one millisecond for it.
        [[nodiscard]] bool isGone() const;

    private:
        friend ScriptedPeer;
        int socket_;
        std::string request_;
    };
    using Script = std::function<void(Connection&)>;

    /// Each script serves one connection. After the last script the socket is closed. On Linux the
    /// queue holds one more connection; connecting a third one blocks.
    explicit ScriptedPeer(std::vector<Script> scripts);
    ~ScriptedPeer();

    [[nodiscard]] std::string path() const { return folder_.file("agent.sock"); }
    /// Waits until the last script has ended. Returns the request of each connection.
    const std::vector<std::string>& requests();

private:
    void serve(int listener);

    TemporaryFolder folder_;
    std::vector<Script> scripts_;
    std::vector<std::string> requests_;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

/// Returns a script that reads the request and writes these bytes.
ScriptedPeer::Script answer(std::string bytes);

/// Returns a complete reply with this body.
std::string reply(std::string_view body);

/// Returns a script that answers with success and this "result".
ScriptedPeer::Script answerResult(std::string_view result);

} // namespace fernlow::test
