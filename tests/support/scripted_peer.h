#pragma once

#include "support/temporary_folder.h"

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace fernlow::test {

/// A peer on a real socket that treats each connection as it is told, one after the other, and
/// remembers what it was sent.
class ScriptedPeer {
public:
    /// One connection: the peer's side of it, and the whole request (head and body) once read.
    class Connection {
    public:
        explicit Connection(int socket) : socket_(socket) {}

        /// Reads until the request is complete or the client closes.
        const std::string& readRequest();
        /// Writes as much as the client takes.
        void write(std::string_view bytes) const;
        /// Waits for the request to begin, without taking it. A script that ends there closes with
        /// unread bytes, which the client sees as a reset: these sockets have no linger.
        void awaitFirstByte() const;
        /// Waits until the client has closed its side, without taking anything.
        void waitUntilGone() const;
        [[nodiscard]] bool isGone() const;

    private:
        friend ScriptedPeer;
        int socket_;
        std::string request_;
    };
    using Script = std::function<void(Connection&)>;

    /// Each script serves one connection, after which nobody listens. On Linux one more fits into
    /// the queue, and a third has to wait before it is connected.
    explicit ScriptedPeer(std::vector<Script> scripts);
    ~ScriptedPeer();

    [[nodiscard]] std::string path() const { return folder_.file("agent.sock"); }
    /// Waits for the last script, then gives each connection's request.
    const std::vector<std::string>& requests();

private:
    void serve(int listener);

    TemporaryFolder folder_;
    std::vector<Script> scripts_;
    std::vector<std::string> requests_;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

/// The script that reads the request and answers with these bytes.
ScriptedPeer::Script answer(std::string bytes);

/// A whole reply with that body.
std::string reply(std::string_view body);

} // namespace fernlow::test
