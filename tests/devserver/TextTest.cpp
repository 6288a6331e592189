#include "devserver/Text.h"

#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devserver/Console.h"
#include "devserver/LivePage.h"
#include "devserver/Options.h"

namespace zentavo::devserver {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Text, WhatIsNoUTF8IsReplacedByteByByte) {
    const std::string mark = "\xEF\xBF\xBD";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"plain ü € 😀", "plain ü € 😀"},
        {"a\xFFz", "a" + mark + "z"},
        {"\xC3", mark},                                  // cut short
        {"\xE0\x80\xAF", mark + mark + mark},            // overlong
        {"\xC0\xAF", mark + mark},                       // overlong
        {"\xED\xA0\x80", mark + mark + mark},            // a surrogate
        {"\xF4\x90\x80\x80", mark + mark + mark + mark}, // beyond U+10FFFF
        {"\xE2\x82z", mark + mark + "z"},
    };
    for (const auto& [bytes, expected] : cases) {
        EXPECT_EQ(utf8Text(bytes), expected);
        EXPECT_EQ(isUTF8(bytes), bytes == expected);
    }
    const std::string cut = inQuotes("x" + std::string(59, 'y') + "ü and more");
    EXPECT_EQ(cut, "\"x" + std::string(59, 'y') + "…\"");
    EXPECT_TRUE(isUTF8(inQuotes(std::string(59, 'y') + "😀😀")));
}

TEST(Console, NoRequestSteersTheTerminal) {
    LoggedRequest request;
    request.number = 7;
    request.request.method = "POST";
    request.request.path = "/event";
    request.findings.event = "\x1B[2J\r\nfake \xC2\x9B"
                             "31m";
    request.findings.problems.add("uid is missing");
    EXPECT_EQ(Console::line(request), "00:00:00.000  #7  POST /event  no answer  ?[2J??fake ?31m  ! uid is missing");
}

TEST(LivePage, NeedsNothingFromOutsideAndMakesNoMarkupOfStrings) {
    const std::string page(LivePage::html());
    EXPECT_THAT(page, HasSubstr("</html>"));
    EXPECT_THAT(page, HasSubstr("new WebSocket"));
    EXPECT_THAT(page, HasSubstr("--accent"));
    for (const char* risk :
         {"innerHTML", "outerHTML", "insertAdjacentHTML", "document.write", "eval(", "src=", "https://"}) {
        EXPECT_THAT(page, Not(HasSubstr(risk)));
    }
}

TEST(Options, AreReadStrictly) {
    const auto parse = [](std::vector<const char*> arguments) { return Options::parse(arguments); };
    const auto options =
        parse({"--port", "0", "--host=::1", "--quiet", "--parent", "--session-id", "s", "--lifetime=0.25"});
    ASSERT_TRUE(options);
    EXPECT_EQ(options->port, 0);
    EXPECT_EQ(options->host, "::1");
    EXPECT_TRUE(options->quiet && options->parent && !options->expose);
    EXPECT_EQ(options->sessionId, "s");
    EXPECT_EQ(options->lifetime, std::chrono::milliseconds(250));
    for (const char* wrong : {"--prot", "--port", "--port=65536", "--port=-1", "--port=1x", "--lifetime=0",
                              "--lifetime=nan", "--lifetime=1e300", "--host=", "8787"}) {
        EXPECT_FALSE(parse({wrong})) << wrong;
    }
}

} // namespace
} // namespace zentavo::devserver
