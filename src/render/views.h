#pragma once

#include "json/document.h"
#include "render/lines.h"

#include <string_view>

/// The text views: each adds the lines that show a result, or an element of one, to a person.
///
/// Those that give a boolean are tried in turn on an object result: they add nothing and give false
/// when the result is not theirs.
namespace fernlow {

/// One line per item by the row renderer, in the reply's order; a single line, the empty text, when
/// there are none.
template <class Row>
void renderList(const json::List<json::Object>& items, Row renderRow, std::string_view emptyText,
                Lines& lines) {
    if (items.empty()) {
        lines.add(emptyText);
    }
    for (const json::Object item : items) {
        renderRow(item, lines);
    }
}

/// How much was compiled, and every problem with its places. A result with an integer
/// "compiledFileCount".
bool renderWorkReport(const json::Object& result, Lines& lines);

/// What the application is doing. A result with a "logCursor" that is not negative.
bool renderStatus(const json::Object& result, Lines& lines);

/// A result with a list of objects "entries".
bool renderLog(const json::Object& result, Lines& lines);

/// The whole API. A result with texts "notes" and a list of objects "endpoints".
bool renderSchema(const json::Object& result, Lines& lines);

/// A page of files, with the count and where the next page begins. A result with a list of objects
/// "files".
bool renderFileList(const json::Object& result, Lines& lines);

/// One file and its settings. A result with an object "file".
bool renderFile(const json::Object& result, Lines& lines);

/// A project's settings, those of the whole project and then those of each language. A result with
/// an object "project".
bool renderProjectSettings(const json::Object& result, Lines& lines);

/// Settings as they now stand after a change. A result with an object "applied".
bool renderAppliedSettings(const json::Object& result, Lines& lines);

/// One line a setting: its key, ascending by code point, and its value.
void renderValues(const json::Object& values, Lines& lines);

/// One line of a settings schema.
void renderSettingRow(const json::Object& setting, Lines& lines);

/// The two lines of a project, framework or group.
void renderProjectRow(const json::Object& project, Lines& lines);

} // namespace fernlow
