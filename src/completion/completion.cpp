#include "completion/completion.h"

#include "bytes/utf8.h"
#include "commands/command_table.h"
#include "commands/usage_error.h"
#include "completion/known_values.h"
#include "json/writer.h"
#include "terminal/visible_controls.h"
#include "transport/socket_location.h"

#include <algorithm>
#include <span>

namespace fernlow::completion {

namespace {

constexpr std::size_t maxTextLength = 4096;

bool isSetting(ValueKind kind) {
    return kind == ValueKind::setting || kind == ValueKind::defaultSetting ||
           kind == ValueKind::fileSetting || kind == ValueKind::rowSetting;
}

class Completer {
public:
    Completer(const TypedLine& line, bool mayAsk, const CompletionContext& context)
        : line_(line), mayAsk_(mayAsk), context_(context) {}

    Completions complete() {
        const bool isOption = line_.current().starts_with('-');
        if (const auto* const option = line_.awaiting()) {
            addValues(option->value);
        } else if (line_.before() == nullptr && isOption) {
            addOptionsWithoutCommand();
        } else if (line_.before() == nullptr) {
            addCommands();
        } else if (!takesNothing() && isOption) {
            addOptions();
        } else if (!takesNothing()) {
            addWords();
        }
        return std::move(completions_);
    }

private:
    [[nodiscard]] const Command& command() const { return line_.before()->command(); }

    /// "help" and "version".
    [[nodiscard]] bool takesNothing() const {
        return command().ignoresOtherWords && command().operands.empty();
    }

    void add(std::string_view value, std::string_view description) {
        completions_.candidates.push_back({std::string(value), std::string(description)});
    }

    /// Unless it is on the line, or in the list, or its contrary is on the line.
    void addOption(const Option& option) {
        const auto& there = completions_.candidates;
        const bool isThere =
            std::any_of(there.begin(), there.end(),
                        [&](const Candidate& candidate) { return candidate.value == option.word; });
        if (!isThere && !line_.globals().has(option) &&
            (line_.before() == nullptr || !isRuledOut(option))) {
            add(option.word, option.summary);
        }
    }

    [[nodiscard]] bool isRuledOut(const Option& option) const {
        const auto& options = command().options;
        return line_.whole()->find(option) != nullptr ||
               std::any_of(options.begin(), options.end(), [&](const Option* other) {
                   return line_.whole()->find(*other) != nullptr &&
                          (other->opposite == &option || option.opposite == other);
               });
    }

    void addOptions(std::span<const Option* const> options) {
        for (const Option* const option : options) {
            addOption(*option);
        }
    }

    void addCommands() {
        for (const Command* const command : allCommands()) {
            if (command->subcommand.empty()) {
                add(command->word, command->summary);
            }
        }
    }

    void addOptionsWithoutCommand() {
        addOptions(GlobalOptions::all());
        for (const Command* const command : allCommands()) {
            if (!command->aliases.empty()) {
                add(command->aliases.front(), command->summary);
            }
        }
    }

    void addOptions() {
        addOptions(command().required);
        addOptions(command().options);
        if (line_.mayBeSubcommand()) {
            addOptions(command().beforeSubcommand);
        }
        addOptions(GlobalOptions::all());
    }

    void addWords() {
        if (line_.mayBeSubcommand()) {
            for (const Command* const other : allCommands()) {
                if (other->word == command().word && !other->subcommand.empty()) {
                    add(other->subcommand, other->summary);
                }
            }
        }
        const Operand* const operand = currentOperand();
        if (operand != nullptr) {
            addValues(operand->value);
        }
        if (!line_.current().empty()) {
            return;
        }
        addOptions(command().required);
        const bool mayBeLeftOut =
            operand == nullptr || (!operand->isRequired && operand->value.kind == ValueKind::text);
        if (mayBeLeftOut && !line_.mayBeSubcommand()) {
            completions_.candidates.clear();
            addOptions();
        }
    }

    [[nodiscard]] const Operand* currentOperand() const {
        const auto& operands = command().operands;
        if (operands.empty()) {
            return nullptr;
        }
        const Operand* const first = operands.front();
        const Operand* const last = operands.back();
        std::size_t position = line_.before()->remaining().size();
        if (isSetting(last->value.kind)) {
            // Settings may stand in front of the file too: a word with "=" is one.
            if (line_.current().find('=') != std::string::npos) {
                return last;
            }
            const auto& words = line_.whole()->remaining();
            position = static_cast<std::size_t>(
                std::count_if(words.begin(), words.end(), [](const std::string& word) {
                    return word.find('=') == std::string::npos;
                }));
        }
        if (first->option != nullptr && line_.whole()->find(*first->option) != nullptr) {
            ++position;
        }
        if (position < operands.size()) {
            return operands[position];
        }
        return last->repeats ? last : nullptr;
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
        if (value.kind >= ValueKind::project && mayAsk_) {
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
        const std::string* const socket = line_.globals().socketPath();
        if (socket == nullptr) {
            return defaultSocketPath();
        }
        // The shell will expand it when the line is run, but hasn't yet.
        return socket->starts_with('~') ? resolvePath(*socket, context_.currentDirectory) : *socket;
    }

    /// Whether the command would take the word for what it is: not for an option.
    [[nodiscard]] bool mayBeGiven(const std::string& value) const {
        const auto globals = GlobalOptions::all();
        const bool isGlobal =
            std::any_of(globals.begin(), globals.end(),
                        [&](const Option* option) { return option->word == value; });
        const bool isOperand = line_.awaiting() == nullptr;
        return !value.empty() && !isGlobal && !(isOperand && value.starts_with('-'));
    }

    void addKnownValues(ValueKind kind) {
        try {
            Application application(socketPath(), context_.deadline);
            const auto known = knownValues(kind, line_, context_.currentDirectory, application);
            // Those that begin like what is typed come first, lest the others leave them no room.
            for (const bool fits : {true, false}) {
                for (const auto& [value, description] : known) {
                    if (value.starts_with(line_.current()) == fits && mayBeGiven(value) &&
                        completions_.candidates.size() < maxCandidates && isHarmless(value)) {
                        add(value, isHarmless(description) ? description : "");
                        // The same folder twice would leave the word open, and a project is meant.
                        completions_.folders = completions_.folders && !fits;
                    }
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
    bool mayAsk_;
    const CompletionContext& context_;
    Completions completions_;
};

} // namespace

bool isKnown(const std::string& word) {
    return word.find(unknownText) == std::string::npos;
}

bool isHarmless(const std::string& text) {
    const bool hasControl = std::any_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) < ' ';
    });
    return text.size() <= maxTextLength && !hasControl && utf8::isWellFormed(text) &&
           !withVisibleControls(text);
}

std::string_view shellsOwn(const Completions& completions) {
    if (completions.files) {
        return "files";
    }
    return completions.folders ? "folders" : "nothing";
}

Completions complete(const std::vector<std::string>& words, std::size_t index,
                     const CompletionContext& context) {
    try {
        const TypedLine line(words, index, context.currentDirectory);
        // An answer about another project, or from another socket, would be a wrong one.
        const bool mayAsk = std::all_of(words.begin(), words.end(), isKnown);
        return Completer(line, mayAsk, context).complete();
    } catch (const AgentCLIUsageError&) {
        return {};
    }
}

} // namespace fernlow::completion
