#pragma once

#include "json/document.h"
#include "render/lines.h"

#include <string_view>

/// The text views. Each view adds the lines that show a result, or one element of a result.
///
/// The views that return a boolean are tried in order on an object result. A view that does not
/// recognise the result adds nothing and returns false.
namespace fernlow {

/// Renders each item with the row renderer, in the reply's order. Adds `emptyText` as the only line
/// if there are no items.
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

/// Shows how much was compiled, and each problem with the lines and columns that it affects.
/// Recognises a result by the integer "compiledFileCount".
bool renderWorkReport(const json::Object& result, Lines& lines);

/// Shows what the application is doing. Recognises a result by a "logCursor" that is not negative.
bool renderStatus(const json::Object& result, Lines& lines);

/// Shows log entries. Recognises a result by the list of objects "entries".
bool renderLog(const json::Object& result, Lines& lines);

/// Shows the whole API. Recognises a result by the texts "notes" and the list of objects
/// "endpoints".
bool renderSchema(const json::Object& result, Lines& lines);

/// Shows a page of files, their count, and the offset of the next page. Recognises a result by the
/// list of objects "files".
bool renderFileList(const json::Object& result, Lines& lines);

/// Shows one file and its settings. Recognises a result by the object "file".
bool renderFile(const json::Object& result, Lines& lines);

/// Shows the settings of the whole project and then of each language. Recognises a result by the
/// object "project".
bool renderProjectSettings(const json::Object& result, Lines& lines);

/// Shows settings after a change. Recognises a result by the object "applied".
bool renderAppliedSettings(const json::Object& result, Lines& lines);

/// Shows the key and value of each setting on one line, sorted by the keys' code points.
void renderValues(const json::Object& values, Lines& lines);

/// Shows one setting of a schema on one line.
void renderSettingRow(const json::Object& setting, Lines& lines);

/// Shows a project, framework or group on two lines.
void renderProjectRow(const json::Object& project, Lines& lines);

} // namespace fernlow
