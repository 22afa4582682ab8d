#include "commands/description.h"

#include "commands/option_descriptions.h"
#include "commands/packages.h"
#include "commands/wire_words.h"

#include <array>
#include <span>
#include <string_view>

namespace fernlow {

namespace {

using namespace options;

// Rows of tables: the kind, the name and what is usual; whether it is required, and may be
// repeated. NOLINTBEGIN(modernize-use-designated-initializers)

constexpr OperandDescription anyProject{{project, "path", "this directory"}};
constexpr OperandDescription oneProject{{project, "path"}, true};
constexpr OperandDescription newProject{{folder, "path", "this directory"}};
constexpr OperandDescription oneFile{{file, "file"}, true};
constexpr OperandDescription anyFile{{file, "file"}};
constexpr OperandDescription sources{{file, "path"}, true, true};
constexpr OperandDescription images{{file, "image"}, true, true};
constexpr OperandDescription scripts{{file, "file"}, true, true};
constexpr OperandDescription someFolders{{folder, "folder"}, true, true};
constexpr OperandDescription oneGroup{{group, "name"}, true};
constexpr OperandDescription newName{{text, "name"}, true};
constexpr OperandDescription newGroupName{{text, "to"}, true};
constexpr OperandDescription changes{{setting, "key=value"}, false, true};
constexpr OperandDescription action{{choice, "action", {}, wireWords<AgentPackageAction>}, true};
constexpr OperandDescription packages{{text, "pkg"}, false, true};

constexpr auto forms = std::to_array<CommandDescription>({
    {.command = "status", .summary = "What Fernlow is doing, and the current log cursor"},
    {.command = "projects", .summary = "Every project and framework"},
    {.command = "schema", .summary = "The whole API, with notes"},

    {.command = "process",
     .summary = "Compile files, as though they had just been saved",
     .operands = {sources},
     .options = {&exactly, &noWait, &timeout, &settle}},
    {.command = "wait",
     .summary = "Wait until nothing is happening",
     .options = {&timeout, &settle, &since, &onlyProject}},
    {.command = "log",
     .summary = "Read the log from a cursor",
     .options = {&logSince, &onlyProject, &errorsOnly, &limit}},

    {.command = "build",
     .summary = "Build a whole project; rarely needed",
     .operands = {anyProject},
     .options = {&clean, &noWait, &timeout}},
    {.command = "optimize",
     .summary = "Optimise images in place",
     .operands = {images},
     .options = {&noWait, &timeout}},
    {.command = "check",
     .summary = "Check the syntax of Javascript",
     .operands = {scripts},
     .options = {&noWait, &timeout}},
    {.command = "packages",
     .summary = "Run one npm operation in a project",
     .operands = {action, packages},
     .options = {&install, &saveTo, &exact, &noExact, &packageLock, &noPackageLock, &raiseLimits,
                 &inProject, &noWait, &timeout}},
    {.command = "preview",
     .summary = "Open the preview address in a browser",
     .options = {&address, &browser, &page}},
    {.command = "refresh",
     .summary = "Re-read projects from disk",
     .operands = {anyProject},
     .options = {&everyProject, &noWait, &timeout}},

    {.command = "add",
     .summary = "Add a folder as a project",
     .operands = {newProject},
     .options = {&framework}},
    {.command = "remove", .summary = "Remove a project", .operands = {oneProject}},
    {.command = "enable",
     .summary = "Switch a project on, and refresh it",
     .operands = {anyProject}},
    {.command = "disable",
     .summary = "Switch a project off; Fernlow stops watching it",
     .operands = {anyProject}},
    {.command = "watch", .subcommand = "pause", .summary = "Stop watching every project"},
    {.command = "watch", .subcommand = "resume", .summary = "Watch every project again"},

    {.command = "groups", .summary = "Every sidebar group, and what is in each"},
    {.command = "groups",
     .subcommand = "add",
     .summary = "Make a group",
     .operands = {newName},
     .options = {&newGroup},
     .ignoresOtherWords = true},
    {.command = "groups",
     .subcommand = "remove",
     .summary = "Delete a group; its projects go back to Projects",
     .operands = {oneGroup},
     .options = {&oldGroup},
     .ignoresOtherWords = true},
    {.command = "groups",
     .subcommand = "rename",
     .summary = "Rename a group",
     .operands = {oneGroup, newGroupName},
     .options = {&oldGroup},
     .ignoresOtherWords = true},
    {.command = "move",
     .summary = "Move a project into a group",
     .operands = {anyProject},
     .options = {&toGroup}},
    {.command = "rename",
     .summary = "Change what Fernlow calls a project, not the folder",
     .operands = {anyProject},
     .required = {&projectName}},

    {.command = "settings", .summary = "Every setting a project holds", .operands = {anyProject}},
    {.command = "settings",
     .subcommand = "set",
     .summary = "Change settings, wholly or not at all",
     .operands = {changes},
     .options = {&ofLanguage, &ofExtension, &inProject, &values}},
    {.command = "settings",
     .subcommand = "schema",
     .summary = "What settings exist, and what changing each one does",
     .operands = {anyProject},
     .options = {&ofLanguage}},
    {.command = "settings",
     .subcommand = "apply-output-paths",
     .summary = "Recalculate the output paths of existing files",
     .operands = {anyProject},
     .required = {&theLanguage},
     .options = {&ofExtension}},

    {.command = "defaults", .summary = "The settings a project added later will start with"},
    {.command = "defaults",
     .subcommand = "set",
     .summary = "Change the defaults, wholly or not at all",
     .operands = {changes},
     .options = {&ofLanguage, &values}},
    {.command = "defaults",
     .subcommand = "schema",
     .summary = "Which of those settings exist",
     .options = {&ofLanguage}},

    {.command = "files",
     .summary = "Every file Fernlow is watching in a project",
     .operands = {anyProject},
     .options = {&onlyLanguage, &onlyAction, &folders, &shadowItems, &limit, &offset}},
    {.command = "files",
     .subcommand = "settings",
     .summary = "One file's own settings",
     .operands = {oneFile}},
    {.command = "files",
     .subcommand = "set",
     .summary = "Change one file, wholly or not at all",
     .operands = {oneFile, changes},
     .options = {&setAction, &outputFolder, &outputName, &values}},
    {.command = "files",
     .subcommand = "schema",
     .summary = "What settings a file has",
     .operands = {anyFile},
     .options = {&fileLanguage}},
    {.command = "files",
     .subcommand = "skip",
     .summary = "Stop indexing folders; not the same as ignoring",
     .operands = {someFolders},
     .options = {&noWait, &unboundedTimeout}},
    {.command = "files",
     .subcommand = "unskip",
     .summary = "Index folders again",
     .operands = {someFolders},
     .options = {&noWait, &unboundedTimeout}},

    {.command = "collections",
     .summary = "Hooks, build steps, WebP presets, custom extensions",
     .operands = {anyProject},
     .options = {&onlyKind}},
    {.command = "collections",
     .subcommand = "add",
     .summary = "Make a row",
     .operands = {anyProject},
     .required = {&kind},
     .options = {&type, &newExtension, &values}},
    {.command = "collections",
     .subcommand = "remove",
     .summary = "Delete a row",
     .operands = {anyProject},
     .required = {&kind, &id}},
    {.command = "collections",
     .subcommand = "move",
     .summary = "Put a build step elsewhere",
     .operands = {anyProject},
     .required = {&kind, &id, &position}},
    {.command = "collections",
     .subcommand = "set",
     .summary = "Change a row, wholly or not at all",
     .operands = {changes},
     .required = {&kind, &id},
     .options = {&values}},
    {.command = "collections",
     .subcommand = "schema",
     .summary = "What a row of each kind holds",
     .options = {&onlyKind}},

    {.command = "help",
     .summary = "The whole manual",
     .aliases = {"--help", "-h"},
     .ignoresOtherWords = true},
    {.command = "version",
     .summary = "The version of this program",
     .aliases = {"--version", "-v"},
     .ignoresOtherWords = true},
});

constexpr auto globals = std::to_array<const OptionDescription*>({&asJSON, &socket, &noLaunch});

struct Family {
    std::string_view command;
    OptionList shared;
};

constexpr auto families = std::to_array<Family>({
    {"groups", {&oldGroup}},
    {"settings", {&ofLanguage, &ofExtension, &values}},
    {"defaults", {&ofLanguage, &values}},
    {"files",
     {&fileLanguage, &values, &setAction, &outputFolder, &outputName, &limit, &offset, &noWait,
      &unboundedTimeout, &folders, &shadowItems}},
    {"collections", {&kind, &id, &type, &newExtension, &values, &position}},
});

// NOLINTEND(modernize-use-designated-initializers)

} // namespace

std::span<const CommandDescription> commandDescriptions() {
    return forms;
}

std::span<const OptionDescription* const> globalOptions() {
    return globals;
}

std::span<const OptionDescription* const> sharedOptions(std::string_view command) {
    for (const Family& family : families) {
        if (family.command == command) {
            return {family.shared.begin(), family.shared.size()};
        }
    }
    return {};
}

} // namespace fernlow
