// Tests completion in the real shells, in a pseudo-terminal. The test types a line, Tab and Return.
// A script with the name "fernlow" prints the words that it receives.
#include "support/paths.h"
#include "support/process.h"
#include "support/scripted_peer.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#ifdef __APPLE__
#include <util.h>
#else
#include <pty.h>
#endif

namespace fernlow::test {

namespace {

struct Shell {
    std::string program;
    std::string arguments;
    /// Commands that load the completion in a shell with settings that users often have. "P/"
    /// stands for the folder of the installation.
    std::string start;
    /// Commands that load the completion from text, so that it does not know the path of its file.
    std::string startWithoutFile = ":";
};

const Shell bash{"bash", "--norc --noprofile -i",
                 "set -u; IFS=:; readonly line= IFS; cd ..; "
                 "ln -s P/share/bash-completion/completions/fernlow .; . ./fernlow; cd",
                 "eval \"$(cat ~/../fernlow)\""};
const Shell zsh{
    "zsh", "-f -i",
    "cd ..; ln -s P/share/zsh/site-functions .; fpath=($PWD/site-functions $fpath); cd; "
    "autoload -Uz compinit; compinit -u -D; setopt nounset; IFS=:; alias -g evil=x"};
// Newer versions of fish ask the terminal for its name and wait for an answer, unless the feature
// query-term is switched off.
const Shell fish{
    "fish", "--features=no-query-term --no-config -i",
    "cd ..; ln -s P/share/fish/vendor_completions.d/fernlow.fish .; source fernlow.fish; cd",
    "cat ~/../fernlow.fish | source"};

/// A session of the shell with the installed completion, in a folder with files to complete.
class Session : public TemporaryFolder {
public:
    explicit Session(const Shell& shell) {
        namespace fs = std::filesystem;
        const std::string prefix = file("prefix");
        fs::create_directories(file("home/my déjà vu"));
        write("home/a naïve file.js", "");
        const char* const installed = std::getenv("FERNLOW_PREFIX");
        const std::string install = installed == nullptr
                                        ? FERNLOW_INSTALL " --prefix " + prefix + " >/dev/null"
                                        : "cp -R '" + std::string(installed) + "' " + prefix;
        EXPECT_EQ(std::system(install.c_str()), 0);
        fs::remove(prefix + "/bin/fernlow");
        // A link leads to the program, as with Homebrew.
        writeScript("prefix/bin/real", "printf GOT; printf '[%s]' \"$@\"; echo END\n");
        fs::create_directories(file("links"));
        fs::create_symlink(prefix + "/bin/real", file("links/fernlow"));
        winsize size{50, 200, 0, 0};
        process_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
        if (process_ == 0) {
            ::setenv("HOME", file("home").c_str(), 1);
            ::setenv("PATH", (file("links") + ":" + std::getenv("PATH")).c_str(), 1);
            ::setenv("LC_ALL", "C.UTF-8", 1);
            ::setenv("TERM", "xterm", 1);
            if (::chdir(file("home").c_str()) == 0) {
                ::execlp("sh", "sh", "-c",
                         ("exec " + shell.program + " " + shell.arguments).c_str(), nullptr);
            }
            ::_exit(127);
        }
        std::string start = shell.start;
        start.replace(start.find("P/"), 1, prefix);
        typed(start + "; fernlow ready");
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        ::close(terminal_);
    }

    /// Types the keys and Return. Returns the words that the program received, each in brackets.
    std::string typed(const std::string& keys) {
        const std::string line = keys + "\r";
        EXPECT_EQ(::write(terminal_, line.data(), line.size()), static_cast<ssize_t>(line.size()));
        std::string seen;
        std::array<char, 4096> buffer{};
        pollfd more{terminal_, POLLIN, 0};
        while (seen.find("]END\r") == std::string::npos && ::poll(&more, 1, 5000) == 1) {
            const ssize_t count = ::read(terminal_, buffer.data(), buffer.size());
            if (count <= 0) {
                break;
            }
            seen.append(buffer.data(), static_cast<std::size_t>(count));
        }
        const auto end = seen.rfind("END\r");
        const auto start = seen.rfind("GOT", end);
        return end == std::string::npos ? "nothing: " + seen
                                        : seen.substr(start + 3, end - start - 3);
    }

private:
    int terminal_ = -1;
    pid_t process_ = -1;
};

/// Returns whether the completion omits the name, because the shell would change the name.
bool isLeftOut(const Shell& shell, const std::string& name) {
    if (shell.program == "zsh") {
        return name == "evil";
    }
    return shell.program == "fish" &&
           (name.starts_with('~') || name.starts_with('%') || name.starts_with("\u3000"));
}

/// Expects that each hostile name is completed as exactly one word or not at all, and that the
/// shell runs none of the commands in the names.
void expectNames(const Shell& shell, Session& session) {
    namespace fs = std::filesystem;
    for (const char* const program : {"links/evil", "home/libexec/fernlow-complete"}) {
        session.writeScript(program, "touch '" + session.file("ran") + "'\n");
    }
    fs::create_directories(session.file("home/bin"));
    fs::copy_file(session.file("prefix/bin/real"), session.file("home/bin/fernlow"));
    EXPECT_EQ(session.typed("cd ~/bin; ./fernlow stat\t"), "[status]");
    for (const std::string name :
         {"a`evil`", "a$(evil)", "a$HOME",       "a;evil",   "a<(evil)", "a>evil",       "a{b,c}",
          "a* [b]?", "a!!",      "a'b",          "a\"b",     "a\\",      " a",           "~",
          "~root",   "a=~root",  "=evil",        "-x",       "#a",       "/gone/`evil`", "evil",
          "/usr",    "%self",    "\u3000--json", "Web: work"}) {
        const bool isPath = name.starts_with('/');
        const std::string member = isPath ? "path" : "name";
        for (const std::string quote : {"", "'", "\""}) {
            if ((isLeftOut(shell, name) || (shell.program == "bash" && name.ends_with('!'))) &&
                !quote.empty()) {
                continue;
            }
            const ScriptedPeer peer({answer(
                reply(nlohmann::json{{"ok", true}, {"result", {{{member, name}}}}}.dump()))});
            EXPECT_EQ(session.typed("fernlow --socket " + peer.path() +
                                    (isPath ? " remove " + quote + name.substr(0, 3) + "\t"
                                            : " move --group " + quote + "\t")),
                      "[--socket][" + peer.path() + (isPath ? "][remove]" : "][move][--group]") +
                          (isLeftOut(shell, name) ? "" : "[" + name + "]"));
        }
    }
    const ScriptedPeer braces({answerResult(R"([{"name":"abc"},{"name":"a{b,c"}])")});
    EXPECT_EQ(session.typed("fernlow --socket " + braces.path() + " move --group a{b\t}"),
              "[--socket][" + braces.path() + "][move][--group][a{b}]");
    fs::create_directories(session.file("disk/$HOME/evil"));
    session.typed("cd ~/../disk; fernlow ready");
    EXPECT_EQ(session.typed("fernlow add $HOME/\tx"), "[add][" + session.file("home/x]"));
    fs::remove_all(session.file("disk/$HOME"));
    // Names on the disk are tested too. A relative path cannot begin with "~", so the names with
    // "~" are omitted.
    for (const std::string name : {"`evil`", "$(evil)", "a$HOME", "a!!", "a'b", "a\"", "a\\", " a",
                                   "=evil", "-x", "{b,c}", "~root", "\u3000~root", "\n", "a\tb"}) {
        const bool hasControl = name.find_first_of("\n\t") != std::string::npos;
        if (hasControl && shell.program == "zsh") {
            // zsh itself completes the names on the disk, and writes control characters as $'\n'.
            continue;
        }
        fs::create_directories(session.file("disk/" + name));
        session.typed("cd ~/../disk; fernlow ready");
        const std::string completed = hasControl ? "x" : name + "/x";
        const bool isOmitted = isLeftOut(shell, name) || name == "~root";
        EXPECT_EQ(session.typed("fernlow add \tx"), "[add][" + (isOmitted ? "x" : completed) + "]");
        EXPECT_EQ(session.typed("fernlow add '~\t'"), "[add][~]");
        EXPECT_EQ(session.typed("fernlow add ~/../disk/\tx"),
                  "[add][" + session.file("home/../disk/") + completed + "]");
        fs::remove_all(session.file("disk"));
    }
    EXPECT_FALSE(session.contains("ran"));
}

void expectCompletions(const Shell& shell) {
    if (std::system(("command -v " + shell.program + " >/dev/null").c_str()) != 0) {
        GTEST_SKIP() << "there is no " << shell.program << " here";
    }
    Session session(shell);
    const StandIn standIn(session.file("s"));
    const std::string site = session.file("home/my déjà vu");
    const ProgramRun add{{"--socket", session.file("s"), "add", site}};
    ASSERT_EQ(runProgram(add).status, 0);
    expectNames(shell, session);
    session.typed("cd ~; fernlow ready");
    EXPECT_EQ(session.typed("fernlow stat\t"), "[status]");
    EXPECT_EQ(session.typed("fernlow wait --proj\tx"), "[wait][--project][x]");
    EXPECT_EQ(session.typed("fernlow preview --address bon\t"), "[preview][--address][bonjour]");
    EXPECT_EQ(session.typed("fernlow process a\\ na\t"), "[process][a naïve file.js]");
    EXPECT_EQ(session.typed("fernlow add ~/my\tx"), "[add][" + session.file("home/my déjà vu/x]"));
    EXPECT_EQ(session.typed("fernlow add my\tx"), "[add][my déjà vu/x]");
    session.typed("cd my*; fernlow ready");
    EXPECT_EQ(session.typed("fernlow --socket ../../s settings set buildFolderA\tfal\t"),
              "[--socket][../../s][settings][set][buildFolderActive=false]");
    const ScriptedPeer stalled({[](ScriptedPeer::Connection& peer) { peer.waitUntilGone(); }});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(session.typed("fernlow --socket " + stalled.path() + " settings sche\t"),
              "[--socket][" + stalled.path() + "][settings][schema]");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    // Completion without a file cannot find its engine. It must not run the program
    // libexec/fernlow-complete that the current folder leads to.
    std::filesystem::create_directories(session.file("home/a/b/c"));
    session.typed("cd ~/a/b/c; " + shell.startWithoutFile + "; fernlow ready");
    session.typed("fernlow stat\t");
    EXPECT_FALSE(session.contains("ran"));
}

} // namespace

TEST(Shells, Bash) {
    expectCompletions(bash);
}

TEST(Shells, Zsh) {
    expectCompletions(zsh);
}

TEST(Shells, Fish) {
    expectCompletions(fish);
}

} // namespace fernlow::test
