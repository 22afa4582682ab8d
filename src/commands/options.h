#pragma once

#include "commands/command.h"

#include <string_view>

/// The global options, and the options and operands that several command families share.
namespace fernlow::options {

inline constexpr Flag json{"--json", "Print the reply as JSON"};
inline constexpr Text socket{"--socket", {ValueKind::file, "path"}, "Talk to another socket"};
inline constexpr Flag noLaunch{"--no-launch", "Do not start Fernlow if it is not running"};

inline constexpr Flag noWait{"--no-wait", "Return as soon as the work is submitted"};
inline constexpr Decimal timeout{
    "--timeout", "seconds", {.min = 0, .max = 86400, .defaultValue = 600}, "How long to wait"};
inline constexpr WholeNumber settle{"--settle",
                                    "milliseconds",
                                    {.min = 0, .max = 60000, .defaultValue = 400},
                                    "Pause before deciding that nothing is happening"};
inline constexpr WholeNumber limit{
    "--limit", "n", {.min = 1, .max = 5000, .defaultValue = 500}, "At most this many rows"};

inline constexpr Text language{
    "--language", {ValueKind::language, "name", "project-wide"}, "Which language's settings"};
inline constexpr Text extension{
    "--extension", {ValueKind::extension, "ext"}, "Which user-defined language"};
inline constexpr Path project{
    "--path", {ValueKind::project, "path", "this directory"}, "Which project"};

} // namespace fernlow::options

namespace fernlow::operands {

inline constexpr Operand anyProject{.value = {ValueKind::project, "path", "this directory"}};
inline constexpr Operand oneFile{.value = {ValueKind::file, "file"}, .isRequired = true};

} // namespace fernlow::operands
