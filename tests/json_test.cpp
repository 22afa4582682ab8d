#include "bytes/number.h"
#include "bytes/utf8.h"
#include "json/document.h"
#include "render/reply.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace fernlow::test {
namespace {

using namespace std::string_view_literals;

// One, three and eight replacement characters.
#define R1 "\uFFFD"
#define R3 R1 R1 R1
#define R8 R3 R3 R1 R1

TEST(Utf8, ReplacesMaximalSubparts) {
    struct Case {
        std::string_view text;
        std::string_view replaced;
    };
    const Case cases[] = {
        {"", ""},
        {"a\0\x7f"sv, "a\0\x7f"sv},
        {"\xc2\x80\xdf\xbf", "\u0080\u07ff"},
        {"\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf", "\u0800\ud7ff\ue000\uffff"},
        {"\xef\xbf\xbd", R1},
        {"\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", "\U00010000\U0010ffff"},
        {"\xc0\xaf\xe0\x80\xbf\xf0\x81\x82\x41", R8 "A"},
        {"\xc1\xbf\xe0\x9f\xbf\xf0\x8f\xbf\xbf", R8 R1},
        {"\xed\xa0\x80\xed\xbf\xbf\xed\xaf\x41", R8 "A"},
        {"\xf4\x91\x92\x93\xff\x41\x80\xbf\x42", R3 R1 R1 "A" R1 R1 "B"},
        {"\xf4\x90\x80\x80", R3 R1},
        {"\xf5\x80\xfe", R3},
        {"\xe1\x80\xe2\xf0\x91\x92\xf1\xbf\x41", R3 R1 "A"},
        {"\x61\xf1\x80\x80\xe1\x80\xc2\x62\x80\x63\x80\xbf\x64", "a" R3 "b" R1 "c" R1 R1 "d"},
        {"\xc2", R1},
        {"\xe2\x82", R1},
        {"\xf0\x9f\x98", R1},
        {"\xf0\x9f\xc3\xa9", R1 "\u00e9"},
        {"\xf0\x9f\x98\x80\x80", "\U0001F600" R1},
    };
    // Each text is tested at many offsets, because the product checks several bytes at a time.
    for (const Case& row : cases) {
        for (std::size_t offset = 0; offset < 40; ++offset) {
            for (const std::size_t padding : {0U, 1U, 40U}) {
                const std::string before(offset, 'x');
                const std::string after(padding, 'y');
                const std::string text = before + std::string(row.text) + after;
                const std::string expected = before + std::string(row.replaced) + after;
                ASSERT_EQ(utf8::replaceIllFormed(text).view(), expected) << offset;
                ASSERT_EQ(utf8::isWellFormed(text), text == expected) << expected;
            }
        }
    }
}

TEST(Number, HasPlainDigitsInTheText) {
    const struct {
        std::string literal;
        std::string shown;
    } cases[] = {
        {"-0", "0"},
        {"0e999", "0"},
        {"-7.000", "-7"},
        {"-1E+2", "-100"},
        {"1.50e1", "15"},
        {"0.001e3", "1"},
        {"100e-2", "1"},
        {"9007199254740993.0", "9007199254740993"},
        {"-123456789012345678901234567890", "-123456789012345678901234567890"},
        {"1e308", "1" + std::string(308, '0')},
        {"15e-1", "1.5"},
        {"1.05e1", "10.5"},
        {"-0.50", "-0.5"},
        {"0.30000000000000004", "0.30000000000000004"},
        {"1234567.125", "1234567.125"},
        {"1e-5", "0.00001"},
        {"1e400", "1e400"},
    };
    for (const auto& [literal, shown] : cases) {
        const std::string body = R"({"ok":true,"result":{"applied":{"n":)" + literal + "}}}";
        EXPECT_EQ(presentReply(200, ByteBuffer(body), false).text.view(),
                  "Project-wide:\n  n = " + shown);
    }
    for (const double extreme : {1e-7, 5e-324, 1e21, 1e23, std::numeric_limits<double>::max()}) {
        const std::string text = number::shortestDecimal(extreme);
        EXPECT_EQ(std::strtod(text.c_str(), nullptr), extreme) << text;
        EXPECT_EQ(text.find_first_of("e.") == std::string::npos, extreme > 1) << text;
    }
}

TEST(Document, RejectsInvalidJSONAtAnyDepth) {
    std::vector<std::string> bodies = {"", "{\"a\":\"\n\"}", "{\"ok\":true}\xff"};
    std::istringstream rest(R"(
        [] null true 1 ok { "ok" [{"ok":true}] {"ok":true {"ok":true,} {"ok":true}x {"ok":true}{}
        {'ok':true} {ok:true} {"a":tru} {"a":1.} {"a":+1} {"a":NaN} {"a":1/**/}
        {"a":{"b":{"c":01}}} {"a":{"b":{"c":[1,]}}} {"a":{"b":{"c":"\x"}}} {"a":{"b":{"c":1})");
    bodies.insert(bodies.end(), std::istream_iterator<std::string>(rest), {});
    const std::string lists = R"({"ok":true,"a":)" + std::string(100'000, '[');
    bodies.push_back(lists);
    bodies.push_back(lists + std::string(100'000, ']') + "}");
    std::string objects;
    for (int level = 0; level < 100'000; ++level) {
        objects += R"({"ok":)";
    }
    bodies.push_back(objects + "1" + std::string(100'000, '}'));
    for (const std::string& body : bodies) {
        for (const bool wantsJSON : {false, true}) {
            const ReplyOutput output = presentReply(200, ByteBuffer(body), wantsJSON);
            EXPECT_EQ(output.text.view(), "Fernlow's reply could not be read.") << body;
            EXPECT_TRUE(output.toStandardError) << body;
            EXPECT_EQ(output.exitStatus, 5) << body;
        }
    }
}

TEST(Document, AcceptsDeepNesting) {
    const std::string body = R"({"ok":true,"result":{"entries":[],"x":)" + std::string(900, '[') +
                             std::string(900, ']') + "}}";
    EXPECT_EQ(presentReply(200, ByteBuffer(body), false).text.view(), "Nothing logged.");
    EXPECT_EQ(presentReply(200, ByteBuffer(body), true).text.view(), body);
}

TEST(Document, ReadsLongTextsAndNumbers) {
    const std::string x(5000, 'x');
    const std::string body = R"({"ok":true,"result":{"errorCount":)" + std::string(5000, '7') +
                             R"(,"applied":{")" + x + "\\u0041" + x + "\":\"" + x + "\\n" + x +
                             "\"}}}";
    EXPECT_EQ(presentReply(200, ByteBuffer(body), false).text.view(),
              "Project-wide:\n  " + x + "A" + x + " = " + x + "\n" + x);
}

} // namespace
} // namespace fernlow::test
