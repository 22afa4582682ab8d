// Measures two parts of a run separately: parsing a command line, and presenting a reply.
#include "bytes/byte_buffer.h"
#include "cli/invocation.h"
#include "commands/paths.h"
#include "render/reply.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using fernlow::ByteBuffer;

constexpr int rowCount = 5000;

/// A reply with many rows. Each "#" in a row stands for the row's number.
struct Reply {
    std::string_view view;
    std::string_view opening;
    std::string_view row;
    std::string_view closing;
};

constexpr Reply projects = {
    "projects", R"({"ok":true,"result":[)",
    R"({"name":"Storefront #","path":"/Users/sam/Sites/storefront-#","isEnabled":true,)"
    R"("isFramework":false})",
    "]}"};
constexpr Reply workReport = {
    "work report",
    R"({"ok":true,"result":{"compiledFileCount":5000,"errorCount":5000,"problems":[)",
    R"({"severity":"error","title":"menu-#.scss could not be compiled","message":"A fault.",)"
    R"("syntaxReports":[{"path":"/Users/sam/Sites/storefront/styles/menu-#.scss","issues":)"
    R"([{"line":#,"column":5,"reason":"Expected a semicolon."}]}]})",
    "]}}"};
constexpr Reply log = {
    "log", R"({"ok":true,"result":{"entries":[)",
    R"({"cursor":#,"severity":"success","title":"Compiled menu-#.scss","message":"",)"
    R"("path":"/Users/sam/Sites/storefront/styles/menu-#.scss","isCompiled":true})",
    "]}}"};
constexpr Reply schema = {
    "schema", R"({"ok":true,"result":{"notes":["Paths are absolute."],"endpoints":[)",
    R"({"method":"POST","path":"/v1/endpoint/#","summary":"What can be asked, and how."})", "]}}"};
constexpr Reply files = {
    "files", R"({"ok":true,"result":{"total":90000,"truncated":true,"offset":0,"files":[)",
    R"({"path":"/Users/sam/Sites/storefront/source/styles/components/section/menu-#.scss",)"
    R"("relativePath":"source/styles/components/section/menu-#.scss","language":"scss",)"
    R"("outputAction":"compile","outputActionIsChosen":false,"outputPathIsChosen":true,)"
    R"("isShadowItem":false,"isFolder":false,"exists":true,)"
    R"("outputPath":"/Users/sam/Sites/storefront/public/styles/components/section/menu-#.css"})",
    "]}}"};
constexpr Reply settings = {"settings",
                            R"({"ok":true,"result":{"languages":{},"project":{"none":null)",
                            R"("option#":["one","two"])", "}}}"};
constexpr Reply settingsSchema = {
    "settings schema", R"({"ok":true,"result":[)",
    R"({"name":"option#","valueType":"boolean","propagation":"compiling","language":"scss",)"
    R"("group":"Output"})",
    "]}"};

std::string bodyOf(const Reply& reply) {
    std::string body(reply.opening);
    for (int row = 0; row < rowCount; ++row) {
        const bool isFirst = body.back() == '[';
        body += isFirst ? "" : ",";
        for (const char character : reply.row) {
            if (character == '#') {
                body += std::to_string(row);
            } else {
                body += character;
            }
        }
    }
    return body.append(reply.closing);
}

/// Replaces each "/" with a byte that no UTF-8 text contains, so that the body has many errors.
std::string illFormed(std::string body) {
    for (char& byte : body) {
        byte = byte == '/' ? '\xFF' : byte;
    }
    return body;
}

/// Measures presentReply(). Each iteration copies the body first, and the measured time does not
/// include the copy, because a run of the program makes none.
void present(benchmark::State& state, const std::string& body, bool wantsJSON) {
    using Clock = std::chrono::steady_clock;
    for (auto _ : state) {
        ByteBuffer buffer(body);
        const auto start = Clock::now();
        auto output = fernlow::presentReply(200, std::move(buffer), wantsJSON);
        benchmark::DoNotOptimize(output);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        // A refusal is quick, and would look like a very fast reply.
        if (output.toStandardError || output.text.view().size() < rowCount) {
            state.SkipWithError("the reply was not presented");
            break;
        }
    }
}

void presentRows(benchmark::State& state, const std::string& body) {
    present(state, body, false);
    state.SetItemsProcessed(state.iterations() * rowCount);
}

void presentBytes(benchmark::State& state, const std::string& body, bool wantsJSON) {
    present(state, body, wantsJSON);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(body.size()));
}

void parseWords(benchmark::State& state, const std::vector<std::string>& words) {
    const fernlow::CurrentDirectory folder("/Users/sam/Sites/storefront");
    for (auto _ : state) {
        auto invocation = fernlow::parseInvocation(words, folder, true);
        benchmark::DoNotOptimize(invocation);
    }
    state.SetItemsProcessed(state.iterations());
}

void registerBenchmarks() {
    // Without --socket, most of the time would be spent reading the user database.
    const std::vector<std::pair<std::string, std::vector<std::string>>> commandLines = {
        {"status", {"status", "--socket", "/tmp/s"}},
        {"process",
         {"process", "styles/a.scss", "../b.scss", "/c.ts", "--exactly", "--timeout", "30",
          "--settle", "250", "--json", "--socket", "/tmp/s"}},
        {"files set",
         {"files", "set", "styles/a.scss", "style=compressed", "sourceMap=true", "precision=6",
          "--values", R"({"includePaths":["a","b"],"prefix":true,"tabSize":4,"note":null})",
          "--action", "compile", "--output-folder", "../css", "--socket", "/tmp/s"}},
    };
    for (const auto& [name, words] : commandLines) {
        benchmark::RegisterBenchmark(("parseInvocation/" + name).c_str(), parseWords, words);
    }
    for (const Reply& reply :
         {projects, workReport, log, schema, files, settings, settingsSchema}) {
        const std::string name = "view/" + std::string(reply.view);
        benchmark::RegisterBenchmark(name.c_str(), presentRows, bodyOf(reply))->UseManualTime();
    }
    const std::string body = bodyOf(files);
    const auto addBytes = [](const char* name, const std::string& bytes, bool wantsJSON) {
        benchmark::RegisterBenchmark(name, presentBytes, bytes, wantsJSON)->UseManualTime();
    };
    addBytes("presentReply/JSON", body, true);
    addBytes("presentReply/text", body, false);
    addBytes("presentReply/ill-formed JSON", illFormed(body), true);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return EXIT_FAILURE;
    }
    registerBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
