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
        /// Closes so that the client sees a reset instead of an end.
        void reset();
        void close();
        /// Waits for the request to begin, without taking it.
        void awaitFirstByte() const;
        /// Takes whatever comes until the client has closed its side.
        void waitForClose() const;
        /// Waits until the client has closed its side, without taking anything.
        void waitUntilGone() const;
        [[nodiscard]] bool isGone() const;

        [[nodiscard]] const std::string& request() const { return request_; }

    private:
        int socket_;
        std::string request_;
    };
    using Script = std::function<void(Connection&)>;

    /// Listens at once; each script serves one connection, after which nobody listens.
    explicit ScriptedPeer(std::vector<Script> scripts);
    /// Listens once start() is called.
    struct Later {};
    ScriptedPeer(Later later, std::vector<Script> scripts);
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;
    ScriptedPeer(ScriptedPeer&&) = delete;
    ScriptedPeer& operator=(ScriptedPeer&&) = delete;
    ~ScriptedPeer();

    void start();

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
