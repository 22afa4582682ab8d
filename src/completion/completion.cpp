#include "completion/completion.h"

#include "commands/command_table.h"
#include "commands/setting_values.h"
#include "commands/usage_error.h"
#include "completion/disk_names.h"
#include "completion/known_values.h"
#include "json/writer.h"

#include <algorithm>
#include <span>

namespace fernlow::completion {

namespace {

bool isSetting(ValueKind kind) {
    return kind == ValueKind::setting || kind == ValueKind::defaultSetting ||
           kind == ValueKind::fileSetting || kind == ValueKind::rowSetting;
}

/// Completes the word being typed. `mayAsk` tells whether the application may be asked.
class Completer {
public:
    /// Keeps references to the line and the context.
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

    /// Returns whether the command is "help" or "version".
    [[nodiscard]] bool takesNothing() const {
        return command().ignoresOtherWords && command().operands.empty();
    }

    /// Adds a candidate that the program itself defines.
    void add(std::string_view value, std::string_view description) {
        completions_.candidates.push_back({std::string(value), std::string(description)});
    }

    /// Skips an option that is already typed, already offered, or contradicted by a typed option.
    void addOption(const Option& option) {
        const auto& offered = completions_.candidates;
        const bool isOffered =
            std::any_of(offered.begin(), offered.end(),
                        [&](const Candidate& candidate) { return candidate.value == option.word; });
        if (!isOffered && !line_.globals().has(option) &&
            (line_.before() == nullptr || !isTypedOrContradicted(option))) {
            add(option.word, option.summary);
        }
    }

    [[nodiscard]] bool isTypedOrContradicted(const Option& option) const {
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
        // An optional free text has no candidates, so all options are offered instead.
        const bool mayBeOption =
            operand == nullptr || (!operand->isRequired && operand->value.kind == ValueKind::text);
        if (mayBeOption && !line_.mayBeSubcommand()) {
            addOptions();
        } else {
            addOptions(command().required);
        }
    }

    /// Returns the operand that is being typed, or null.
    [[nodiscard]] const Operand* currentOperand() const {
        const auto& operands = command().operands;
        if (operands.empty()) {
            return nullptr;
        }
        const Operand* const first = operands.front();
        const Operand* const last = operands.back();
        std::size_t index = line_.before()->remaining().size();
        if (isSetting(last->value.kind)) {
            // Settings may also stand before the file.
            if (isSettingWord(line_.current())) {
                return last;
            }
            const auto& words = line_.whole()->remaining();
            index = words.size() - static_cast<std::size_t>(
                                       std::count_if(words.begin(), words.end(), isSettingWord));
        }
        if (first->alternative != nullptr && line_.whole()->find(*first->alternative) != nullptr) {
            ++index;
        }
        if (index < operands.size()) {
            return operands[index];
        }
        return last->repeats ? last : nullptr;
    }

    void addValues(const ValueDescription& value) {
        switch (value.kind) {
        case ValueKind::choice:
            for (const std::string_view choice : value.choices) {
                add(choice, "");
            }
            break;
        case ValueKind::choiceList:
            addListChoices(value.choices);
            break;
        case ValueKind::file:
            completions_.paths = PathKind::file;
            break;
        case ValueKind::folder:
        case ValueKind::project:
        case ValueKind::movableProject:
            // The command would take a bare folder name for a subcommand.
            if (!line_.mayBeSubcommand() || looksLikePath(line_.current())) {
                completions_.paths = PathKind::folder;
            }
            break;
        default:
            break;
        }
        if (isKnownOnlyToApplication(value.kind) && mayAsk_) {
            addKnownValues(value.kind);
        }
    }

    /// Adds the typed list with each choice that it does not contain yet.
    void addListChoices(std::span<const std::string_view> choices) {
        // Without a comma, rfind() returns npos, and npos + 1 is 0, so the list is empty.
        const std::string list = line_.current().substr(0, line_.current().rfind(',') + 1);
        for (const std::string_view each : choices) {
            const std::string choice(each);
            if (("," + list).find("," + choice + ",") == std::string::npos) {
                add(list + choice, "");
            }
        }
    }

    /// Returns whether the command would read the word as a value, not as an option.
    [[nodiscard]] bool isReadAsValue(const std::string& word) const {
        const auto globals = GlobalOptions::all();
        const bool isGlobal =
            std::any_of(globals.begin(), globals.end(),
                        [&](const Option* option) { return option->word == word; });
        const bool isOperand = line_.awaiting() == nullptr;
        return !word.empty() && !isGlobal && !(isOperand && word.starts_with('-'));
    }

    void addKnownValues(ValueKind kind) {
        auto known = knownValuesIfPossible(kind);
        std::erase_if(
            known, [this](const Candidate& candidate) { return !isReadAsValue(candidate.value); });
        auto& candidates = completions_.candidates;
        const std::size_t count = candidates.size();
        addNames(candidates, known, "", line_.current(), context_.shell);
        // A project must not be offered a second time as a folder, because Tab would then not
        // complete it. The matching names come first.
        if (candidates.size() > count && candidates[count].value.starts_with(line_.current())) {
            completions_.paths = PathKind::none;
        }
    }

    [[nodiscard]] std::vector<Candidate> knownValuesIfPossible(ValueKind kind) const {
        try {
            return knownValues(kind, line_, context_);
        } catch (const json::EncodingError&) {
            // A word of the line is not UTF-8.
            return {};
        } catch (const CurrentDirectoryError&) {
            // There is no project to ask about.
            return {};
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

Completions complete(const std::vector<std::string>& words, std::size_t index,
                     const CompletionContext& context) {
    try {
        const TypedLine line(words, index, context.currentDirectory);
        // With an unknown word, the answer could be about another project, or from another socket.
        const bool mayAsk = std::all_of(words.begin(), words.end(), isKnown);
        Completions completions = Completer(line, mayAsk, context).complete();
        // bash_line.cpp may misread the quotes in a line that bash expands.
        if (!mayAsk && context.shell == Shell::bash) {
            completions.paths = PathKind::none;
        }
        addNamesOnDisk(completions, line.current(), context);
        return completions;
    } catch (const AgentCLIUsageError&) {
        return {};
    }
}

} // namespace fernlow::completion
