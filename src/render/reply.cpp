#include "render/reply.h"

#include "bytes/utf8.h"
#include "render/views.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

namespace fernlow {

namespace {

constexpr int somethingFailed = 1;
constexpr int waitExpired = 4;
constexpr int refused = 5;

/// The keys that determine a reply's exit status.
constexpr auto exitStatusKeys =
    std::to_array<std::string_view>({"ok", "result", "timedOut", "errorCount"});

using View = bool (*)(const json::Object& result, Lines& lines);

/// The views of an object result, in the order in which they are tried.
constexpr auto views = std::to_array<View>({
    renderWorkReport,
    renderStatus,
    renderLog,
    renderSchema,
    renderFileList,
    renderFile,
    renderProjectSettings,
    renderAppliedSettings,
});

/// Parses the body. Replaces ill-formed UTF-8 in it first if necessary.
std::optional<json::Document> parseBody(ByteBuffer& body, std::span<const std::string_view> keys) {
    auto document = json::Document::parse(body.view(), keys);
    // The parser accepts only valid UTF-8, so only a body that it rejects is checked.
    if (!document && !utf8::isWellFormed(body.view())) {
        body = utf8::replaceIllFormed(body.view());
        document = json::Document::parse(body.view(), keys);
    }
    return document;
}

ReplyOutput refusal(std::string_view sentence) {
    return {ByteBuffer(sentence), true, refused};
}

ReplyOutput unreadable() {
    return refusal("Fernlow's reply could not be read.");
}

std::string_view refusalMessage(const json::Object& reply) {
    const auto error = reply.object("error");
    const auto message = error ? error->optionalText("message") : std::nullopt;
    return message.value_or("Fernlow refused the request.");
}

/// Settings schemas and projects are both lists of objects. The first row determines the view.
void renderRows(const json::List<json::Object>& rows, Lines& lines) {
    const bool areSettings = !rows.empty() && (*rows.begin()).find("valueType");
    renderList(rows, areSettings ? renderSettingRow : renderProjectRow, "No projects.", lines);
}

int replyExitStatus(bool ok, const std::optional<json::Object>& result) {
    if (!ok) {
        return refused;
    }
    if (!result) {
        return 0;
    }
    if (result->boolean("timedOut")) {
        return waitExpired;
    }
    return result->integer("errorCount") >= 1 ? somethingFailed : 0;
}

/// Returns the text for a successful reply. `result` is the reply's "result" if it is an object.
/// Throws TextTooLong if the text exceeds its limit.
ByteBuffer renderResult(const std::optional<json::Object>& result, const json::Object& reply) {
    Lines lines;
    if (const auto rows = reply.optionalObjects("result")) {
        renderRows(*rows, lines);
    } else if (!result || std::none_of(views.begin(), views.end(),
                                       [&](View view) { return view(*result, lines); })) {
        lines.add("Done.");
    }
    return std::move(lines).join();
}

} // namespace

ReplyOutput presentReply(std::int64_t /*statusCode*/, ByteBuffer body, bool wantsJSON) {
    std::span<const std::string_view> keys;
    if (wantsJSON) {
        keys = exitStatusKeys;
    }
    const auto document = parseBody(body, keys);
    const auto reply = document ? document->root().object() : std::nullopt;
    if (!reply) {
        return unreadable();
    }
    const bool ok = reply->boolean("ok");
    const auto result = reply->object("result");
    const int exitStatus = replyExitStatus(ok, result);
    if (wantsJSON) {
        return {std::move(body), !ok, exitStatus};
    }
    if (!ok) {
        return refusal(refusalMessage(*reply));
    }
    try {
        return {renderResult(result, *reply), false, exitStatus};
    } catch (const TextTooLong&) {
        return unreadable();
    }
}

} // namespace fernlow
