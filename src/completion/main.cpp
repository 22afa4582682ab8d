// fernlow-complete: the program that the shells run when a user presses Tab. It prints lines for
// the files in completions/. If it fails, it prints nothing. It always ends with status 0.
//
//     fernlow-complete bash HOME BEFORE AFTER REPLACED
//     fernlow-complete fish HOME INDEX [WORD...]
//     fernlow-complete zsh HOME INDEX [WORD...]
//
// HOME is the folder that the shell puts in place of "~". INDEX is the index of the word being
// typed. Each line is a candidate; for fish and zsh, a tab and its description follow. zsh lists
// names on the disk itself, and for zsh the first line is the kind of these names: "files",
// "folders" or "nothing".
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

/// The timeout for the whole completion. A shell should show the candidates within half a second,
/// including the start of this program.
constexpr std::chrono::milliseconds timeout(250);

using Lines = std::vector<std::string>;

Shell shellNamed(std::string_view name) {
    if (name == "bash") {
        return Shell::bash;
    }
    return name == "fish" ? Shell::fish : Shell::zsh;
}

/// Returns the line that tells zsh which names on the disk to list.
std::string lineFor(PathKind paths) {
    switch (paths) {
    case PathKind::file:
        return "files";
    case PathKind::folder:
        return "folders";
    default:
        return "nothing";
    }
}

Lines completeWords(const Lines& arguments, const CompletionContext& context) {
    const auto index = static_cast<std::size_t>(number::readInteger(arguments.at(2)).value_or(0));
    Lines words(arguments.begin() + 3, arguments.end());
    for (std::size_t each = 0; each < words.size(); ++each) {
        // The shell has removed the quotes, but has expanded nothing.
        if (each != index && words[each].find_first_of("$`(*?") != std::string::npos) {
            words[each] += unknownText;
        }
    }
    const auto completions = complete(words, index, context);
    Lines lines;
    if (context.shell == Shell::zsh) {
        lines.push_back(lineFor(completions.paths));
    }
    for (const auto& [value, description] : completions.candidates) {
        lines.push_back(std::string(value).append("\t").append(description));
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
        const CompletionContext context{shellNamed(arguments.at(0)), arguments.at(1),
                                        CurrentDirectory::ofProcess(), deadline};
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
        // There are too few arguments, or not enough memory.
        return 0;
    }
    return 0;
}
