// fernlow-complete: what the shells ask when somebody presses Tab. Not for people: it prints lines
// for the files in completions/, says nothing when something is wrong, and always ends with 0.
//
//     fernlow-complete words INDEX [WORD...]
//     fernlow-complete fish INDEX [WORD...]
//     fernlow-complete bash BEFORE AFTER REPLACED HOME
//
// Each line is a candidate, followed by a tab and its description where the shell shows one. But
// for bash a line in front of them names the shell's own completions that are wanted too.
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

/// A shell waits for half a second in all, starting this program included.
constexpr std::chrono::milliseconds patience(350);

std::string completeWords(const std::vector<std::string>& arguments,
                          const CompletionContext& context) {
    const auto index = number::readInteger(arguments.at(1)).value_or(0);
    std::vector<std::string> words(arguments.begin() + 2, arguments.end());
    for (std::string& word : words) {
        // The shell has taken the quotes off, but expanded nothing.
        if (&word - words.data() != index && word.find_first_of("$`(*?") != std::string::npos) {
            word += unknownText;
        }
    }
    const auto completions = complete(words, static_cast<std::size_t>(index), context);
    std::string text(shellsOwn(completions));
    const bool isFish = arguments.front() == "fish";
    for (const Candidate& candidate : completions.candidates) {
        // fish quotes all but this, and makes a home folder of it.
        if (isFish && candidate.value.starts_with('~')) {
            continue;
        }
        text += "\n" + candidate.value + "\t" + candidate.description;
    }
    return text;
}

std::string completeBash(const std::vector<std::string>& arguments,
                         const CompletionContext& context) {
    std::string text;
    for (const std::string& line : completeBashLine(
             {arguments.at(1), arguments.at(2), arguments.at(3), arguments.at(4)}, context)) {
        text += text.empty() ? line : "\n" + line;
    }
    return text;
}

} // namespace

int main(int argc, char** argv) {
    platform::protectRelocations();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    // Where there isn't even the memory for throwing.
    std::set_terminate([] { ::_exit(0); });
    try {
        const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        const CompletionContext context{CurrentDirectory::ofProcess(), deadline};
        const bool isBash = !arguments.empty() && arguments.front() == "bash";
        static_cast<void>(writeLine(STDOUT_FILENO, isBash ? completeBash(arguments, context)
                                                          : completeWords(arguments, context)));
    } catch (const std::exception&) {
        // Too few arguments, or too little memory: no candidates.
        return 0;
    }
    return 0;
}
