#include "completion/completion.h"

#include "bytes/utf8.h"
#include "cli/terminal.h"
#include "commands/subcommand.h"
#include "completion/known_values.h"
#include "json/writer.h"
#include "transport/socket_location.h"

#include <algorithm>

namespace fernlow::completion {

namespace {

/// More than anybody looks through; shells become slow with many.
constexpr std::size_t mostCandidates = 2000;
constexpr std::size_t longestText = 4096;

/// Whether the text can neither break a line of output nor play tricks on a terminal: much of what
/// the application tells comes from projects that somebody has downloaded.
bool isHarmless(const std::string& text) {
    const bool hasControl = std::any_of(
        text.begin(), text.end(), [](char character) { return character >= 0 && character < ' '; });
    return text.size() <= longestText && !hasControl && utf8::isWellFormed(text) &&
           !withVisibleControls(text);
}

class Completer {
public:
    Completer(const TypedLine& line, const Surroundings& surroundings)
        : line_(line), surroundings_(surroundings) {}

    Completions complete() {
        if (const auto* const option = line_.optionBeforeCurrent()) {
            addValues(option->value);
        } else if (line_.command().empty()) {
            line_.current().starts_with('-') ? addOptionsWithoutCommand() : addCommands();
        } else if (line_.form() == nullptr ? line_.mayBeSubcommand() : !takesNothing()) {
            line_.current().starts_with('-') ? addOptions() : addWords();
        }
        return std::move(completions_);
    }

private:
    /// "help" and "version".
    [[nodiscard]] bool takesNothing() const {
        return line_.form()->ignoresOtherWords && line_.form()->operands.empty();
    }

    void add(std::string_view value, std::string_view description) {
        completions_.candidates.push_back({std::string(value), std::string(description)});
    }

    void addOption(const OptionDescription& option) {
        if (!line_.has(option)) {
            add(option.word, option.summary);
        }
    }

    void addCommands() {
        for (const CommandDescription& form : commandDescriptions()) {
            if (completions_.candidates.empty() ||
                completions_.candidates.back().value != form.command) {
                add(form.command, form.summary);
            }
        }
    }

    void addOptionsWithoutCommand() {
        for (const auto* const option : globalOptions()) {
            addOption(*option);
        }
        for (const CommandDescription& form : commandDescriptions()) {
            if (!form.aliases.empty()) {
                add(*form.aliases.begin(), form.summary);
            }
        }
    }

    void addOptions() {
        addRequiredOptions();
        if (line_.form() != nullptr) {
            for (const auto* const option : line_.form()->options) {
                addOption(*option);
            }
        }
        if (line_.mayBeSubcommand()) {
            addSharedOptions();
        }
        for (const auto* const option : globalOptions()) {
            addOption(*option);
        }
    }

    void addRequiredOptions() {
        if (line_.form() != nullptr) {
            for (const auto* const option : line_.form()->required) {
                addOption(*option);
            }
        }
    }

    /// The subcommands' options that may stand in front of them, where the listing has none of the
    /// same name.
    void addSharedOptions() {
        for (const auto* const option : sharedOptions(line_.command())) {
            const auto& there = completions_.candidates;
            if (std::none_of(there.begin(), there.end(), [option](const Candidate& candidate) {
                    return candidate.value == option->word;
                })) {
                addOption(*option);
            }
        }
    }

    void addWords() {
        if (line_.mayBeSubcommand()) {
            for (const CommandDescription& form : commandDescriptions()) {
                if (form.command == line_.command() && !form.subcommand.empty()) {
                    add(form.subcommand, form.summary);
                }
            }
        }
        const OperandDescription* const operand = currentOperand();
        if (operand != nullptr) {
            addValues(operand->value);
        }
        if (!line_.current().empty()) {
            return;
        }
        addRequiredOptions();
        const bool mayBeLeftOut =
            operand == nullptr || (!operand->isRequired && operand->value.kind == ValueKind::text);
        if (mayBeLeftOut && !line_.mayBeSubcommand()) {
            completions_.candidates.clear();
            addOptions();
        }
    }

    [[nodiscard]] const OperandDescription* currentOperand() const {
        if (line_.form() == nullptr) {
            return nullptr;
        }
        const auto& operands = line_.form()->operands;
        std::size_t position = line_.operandsBefore();
        const auto* const last = operands.end() - 1;
        if (!operands.empty() && last->value.kind == ValueKind::setting) {
            // Settings may stand in front of the file too; what they are not, they are told by.
            if (line_.current().find('=') != std::string::npos) {
                return last;
            }
            position = static_cast<std::size_t>(std::count_if(
                line_.operands().begin(), line_.operands().end(),
                [](const std::string& word) { return word.find('=') == std::string::npos; }));
        }
        if (line_.command() == "groups" && line_.valueOf("--name") != nullptr) {
            ++position;
        }
        if (position < operands.size()) {
            return operands.begin() + position;
        }
        return !operands.empty() && last->repeats ? last : nullptr;
    }

    void addValues(const ValueDescription& value) {
        if (value.kind == ValueKind::choiceList) {
            addListChoices(value);
        }
        for (const std::string_view choice : value.choices) {
            if (value.kind == ValueKind::choice) {
                add(choice, "");
            }
        }
        // A bare folder name would be taken for a subcommand.
        const bool mustLookLikePath = line_.mayBeSubcommand() && !looksLikePath(line_.current());
        completions_.files = value.kind == ValueKind::file;
        completions_.folders = !mustLookLikePath && (value.kind == ValueKind::folder ||
                                                     value.kind == ValueKind::project);
        if (value.kind >= ValueKind::project) {
            addKnownValues(value.kind);
        }
    }

    /// Every choice behind those that are in the list already.
    void addListChoices(const ValueDescription& value) {
        const std::size_t comma = line_.current().rfind(',');
        const std::string start =
            comma == std::string::npos ? "" : line_.current().substr(0, comma + 1);
        for (const std::string_view choice : value.choices) {
            const std::string before = "," + start;
            if (before.find("," + std::string(choice) + ",") == std::string::npos) {
                add(start + std::string(choice), "");
            }
        }
    }

    [[nodiscard]] std::string socketPath() const {
        const std::string* const socket = line_.valueOf("--socket");
        if (socket == nullptr) {
            return defaultSocketPath();
        }
        // The shell will expand it when the line is run, but hasn't yet.
        return socket->starts_with('~') ? resolvePath(*socket, surroundings_.currentDirectory)
                                        : *socket;
    }

    void addKnownValues(ValueKind kind) {
        try {
            Application application(socketPath(), surroundings_.deadline);
            for (const Candidate& candidate :
                 knownValues(kind, line_, surroundings_.currentDirectory, application)) {
                if (completions_.candidates.size() < mostCandidates && !candidate.value.empty() &&
                    isHarmless(candidate.value)) {
                    add(candidate.value,
                        isHarmless(candidate.description) ? candidate.description : "");
                }
            }
        } catch (const json::EncodingError&) {
            // A word of the line is not UTF-8.
            return;
        } catch (const CurrentDirectoryError&) {
            // No project to ask about.
            return;
        }
    }

    const TypedLine& line_;
    const Surroundings& surroundings_;
    Completions completions_;
};

} // namespace

std::string_view shellsOwn(const Completions& completions) {
    if (completions.files) {
        return "files";
    }
    return completions.folders ? "folders" : "nothing";
}

Completions complete(const std::vector<std::string>& words, std::size_t index,
                     const Surroundings& surroundings) {
    return Completer(TypedLine(words, index), surroundings).complete();
}

} // namespace fernlow::completion
