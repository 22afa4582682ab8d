#pragma once

#include "commands/collections.h"
#include "commands/description.h"
#include "commands/files.h"
#include "commands/packages.h"
#include "commands/ranges.h"

/// The options, in the order of the help text. Where one word means different things to different
/// commands, it has a description for each.
namespace fernlow::options {

using enum ValueKind;

// Each is a row of a table: the word, what its value is, and a line for a person.
// NOLINTBEGIN(modernize-use-designated-initializers)

template <Worded Enumeration>
constexpr ValueDescription oneOf(std::string_view usually = {}) {
    return {choice, "name", usually, wireWords<Enumeration>};
}

constexpr ValueDescription numberOf(std::string_view unit, NumberRange range) {
    return {number, unit, {}, {}, range};
}

inline constexpr ValueDescription dependencyLists{
    choiceList, "lists", "the project's own npm settings", wireWords<AgentDependencyList>};

using Option = OptionDescription;

// May stand anywhere.
inline constexpr Option asJSON{"--json", {}, "Print the reply as JSON"};
inline constexpr Option socket{"--socket", {file, "path"}, "Talk to another socket"};
inline constexpr Option noLaunch{"--no-launch", {}, "Do not start Fernlow if it is not running"};

// Work.
inline constexpr Option noWait{"--no-wait", {}, "Return as soon as the work is submitted"};
inline constexpr Option timeout{
    "--timeout", numberOf("seconds", {0, longestTimeoutSeconds, defaultTimeoutSeconds}),
    "How long to wait"};
inline constexpr Option unboundedTimeout{
    "--timeout", numberOf("seconds", {.usual = defaultTimeoutSeconds}), "How long to wait"};
inline constexpr Option settle{
    "--settle", numberOf("milliseconds", {0, longestSettleMilliseconds, defaultSettleMilliseconds}),
    "Pause before deciding that nothing is happening"};
inline constexpr Option since{
    "--since", {logCursor, "cursor"}, "Only what happened after this log cursor"};
inline constexpr Option logSince{"--since",
                                 {logCursor, "cursor", "0, the oldest entries"},
                                 "Only what happened after this log cursor"};
inline constexpr Option onlyProject{
    "--project", {project, "path", "every project"}, "Only this project"};
inline constexpr Option errorsOnly{"--errors-only", {}, "Only errors"};
inline constexpr Option exactly{"--exactly", {}, "Precisely these files; rarely right"};
inline constexpr Option clean{"--clean", {}, "Empty the Build Folder first, this once"};
inline constexpr Option everyProject{"--all", {}, "Every project"};

// Settings.
inline constexpr Option ofLanguage{
    "--language", {language, "name", "project-wide"}, "Which language's settings"};
inline constexpr Option theLanguage{
    "--language", {language, "name"}, "Which language's output paths"};
inline constexpr Option onlyLanguage{
    "--language", {language, "name", "every language"}, "Only files of this language"};
inline constexpr Option fileLanguage{
    "--language", {language, "name"}, "What the files of this language have"};
inline constexpr Option ofExtension{
    "--extension", {extension, "ext"}, "Which user-defined language"};
inline constexpr Option newExtension{
    "--extension", {text, "ext"}, "The extension of a new user-defined language"};
inline constexpr Option inProject{"--path", {project, "path", "this directory"}, "Which project"};
inline constexpr Option values{
    "--values", {json, "json"}, "Settings as a JSON object, for lists or explicit types"};

// Files.
inline constexpr Option onlyAction{"--action", oneOf<AgentOutputAction>(),
                                   "Only files with this output action"};
inline constexpr Option setAction{"--action", oneOf<AgentOutputAction>(),
                                  "What becomes of the file"};
inline constexpr Option outputFolder{
    "--output-folder", {folder, "path"}, "Write the file's output into this folder"};
inline constexpr Option outputName{
    "--output-name", {text, "name"}, "What to call the output; needs --output-folder"};
inline constexpr Option folders{"--folders", {}, "Include folders"};
inline constexpr Option shadowItems{
    "--shadow-items", {}, "Include files imported from outside the project"};
inline constexpr Option limit{"--limit",
                              numberOf("n", {smallestPageSize, largestPageSize, defaultPageSize}),
                              "At most this many rows"};
inline constexpr Option offset{"--offset", numberOf("n", {.least = 0, .usual = 0}),
                               "Pass over this many rows first"};

// Packages and the preview.
inline constexpr Option install{"--install", dependencyLists, "Which lists to install from"};
inline constexpr Option saveTo{"--save-to", dependencyLists,
                               "Which lists to record in; empty for none"};
inline constexpr Option exact{"--exact", {}, "Record the exact version", "--no-exact"};
inline constexpr Option noExact{"--no-exact", {}, "Record a range of versions", "--exact"};
inline constexpr Option packageLock{
    "--package-lock", {}, "Write package-lock.json", "--no-package-lock"};
inline constexpr Option noPackageLock{
    "--no-package-lock", {}, "Do not write package-lock.json", "--package-lock"};
inline constexpr Option raiseLimits{"--raise-limits", {}, "With update: allow a breaking version"};
inline constexpr Option address{
    "--address", oneOf<AgentPreviewAddress>(wireWord(AgentPreviewAddress::preferred)),
    "Which of the preview server's addresses"};
inline constexpr Option browser{
    "--browser", {text, "bundleID", "Fernlow's choice"}, "Which browser, such as com.apple.Safari"};
inline constexpr Option page{"--page", {text, "path"}, "A path below the preview root"};

// Projects and groups.
inline constexpr Option framework{"--framework", {}, "Add it as a framework"};
inline constexpr Option toGroup{
    "--group", {group, "name", "the permanent Projects group"}, "Which group"};
inline constexpr Option projectName{"--name", {text, "text"}, "What to call the project"};
inline constexpr Option newGroup{"--name", {text, "text"}, "The group, instead of the word"};
inline constexpr Option oldGroup{"--name", {group, "text"}, "The group, instead of the word"};

// Collections.
inline constexpr Option onlyKind{"--kind", oneOf<AgentCollectionKind>("every kind"),
                                 "Only this kind of row"};
inline constexpr Option kind{"--kind", oneOf<AgentCollectionKind>(), "Which kind of row"};
inline constexpr Option id{"--id", {rowId, "id"}, "Which row, as the listing reports it"};
inline constexpr Option type{"--type", oneOf<AgentBuildStepType>(),
                             "The type of a new build step, which needs one"};
inline constexpr Option position{"--position", numberOf("n", {.least = 0}),
                                 "Where to put it, counting from zero"};

// NOLINTEND(modernize-use-designated-initializers)

} // namespace fernlow::options
