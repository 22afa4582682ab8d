// fernlow-complete: the program that the shells run when somebody presses Tab. It is not for
// people: it prints lines for the files in completions/, prints nothing when something is wrong,
// and always ends with status 0.
//
//     fernlow-complete bash HOME BEFORE AFTER REPLACED
//     fernlow-complete fish HOME INDEX [WORD...]
//     fernlow-complete zsh HOME INDEX [WORD...]
//
// HOME is the folder that the shell puts in place of "~". Each line is a candidate; for fish and
// zsh, a tab and its description follow. zsh lists names on the disk itself: a line in front of the
// candidates is "files", "folders" or "nothing".
#include "bytes/number.h"
#include "completion/bash_line.h"
#include "completion/completion.h"
#include "platform/platform.h"
#include "terminal/output.h"

#include <unistd.h>

#include <exception>

namespace {

using namespace fernlow;
using namespace fernlow::completion;

/// Leaves a shell time to show the candidates within half a second, starting this program included.
constexpr std::chrono::milliseconds timeout(250);

using Lines = std::vector<std::string>;

Lines completeWords(const Lines& arguments, const CompletionContext& context) {
    const auto index = number::readInteger(arguments.at(2)).value_or(0);
    Lines words(arguments.begin() + 3, arguments.end());
    for (std::string& word : words) {
        // The shell has taken the quotes off, but expanded nothing.
        if (&word - words.data() != index && word.find_first_of("$`(*?") != std::string::npos) {
            word += unknownText;
        }
    }
    const auto completions = complete(words, static_cast<std::size_t>(index), context);
    Lines lines;
    if (context.shell == Shell::zsh) {
        const bool isNone = completions.paths == PathKind::none;
        lines.emplace_back(isNone                                ? "nothing"
                           : completions.paths == PathKind::file ? "files"
                                                                 : "folders");
    }
    for (const auto& [value, description] : completions.candidates) {
        lines.push_back(value + "\t" + description);
    }
    return lines;
}

Lines completeBash(const Lines& arguments, const CompletionContext& context) {
    return completeBashLine({arguments.at(2), arguments.at(3), arguments.at(4)}, context);
}

} // namespace

int main(int argc, char** argv) {
    platform::protectRelocations();
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    // Throwing an exception needs memory too.
    std::set_terminate([] { ::_exit(0); });
    try {
        const Lines arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        const std::string& shell = arguments.at(0);
        const CompletionContext context{shell == "bash"   ? Shell::bash
                                        : shell == "fish" ? Shell::fish
                                                          : Shell::zsh,
                                        arguments.at(1), CurrentDirectory::ofProcess(), deadline};
        std::string text;
        for (const std::string& line : context.shell == Shell::bash
                                           ? completeBash(arguments, context)
                                           : completeWords(arguments, context)) {
            text += text.empty() ? line : "\n" + line;
        }
        if (!text.empty()) {
            static_cast<void>(writeLine(STDOUT_FILENO, text));
        }
    } catch (const std::exception&) {
        // There are too few arguments, or too little memory.
        return 0;
    }
    return 0;
}
