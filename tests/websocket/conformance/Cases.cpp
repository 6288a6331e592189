#include "tests/websocket/conformance/Cases.h"

namespace zentavo::websocket::conformance {
namespace {

using Length = RawFrame::Length;
const RawFrame bye = close(1000);

// Every list ends with a goodbye, which a sound endpoint answers, so that one that stays silent is found out.

void framing(std::vector<Case>& cases) {
    for (const std::size_t size : {0U,   1U,   2U,   3U,     4U,     5U,     7U,
                                   15U,  16U,  17U,  63U,    64U,    65U,    125U,
                                   126U, 127U, 128U, 65535U, 65536U, 65537U, static_cast<unsigned>(messageLimit)}) {
        const std::string payload(size, '*');
        cases.push_back({"framing/text-" + std::to_string(size), {text(payload), bye}, {text(payload), bye}});
        std::string bytes(size, '\xFE');
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<char>(i * 7);
        }
        cases.push_back({"framing/binary-" + std::to_string(size), {binary(bytes), bye}, {binary(bytes), bye}});
    }
    cases.push_back({"framing/long-form-of-short-length", {{0x82, "a", Length::two}}, {close(1002)}});
    cases.push_back({"framing/longest-form-of-short-length", {{0x82, "a", Length::eight}}, {close(1002)}});
    cases.push_back(
        {"framing/longest-form-of-long-length", {{0x82, std::string(65535, 'a'), Length::eight}}, {close(1002)}});
    cases.push_back({"framing/wrong-mask", {{0x82, "ab", Length::shortest, true}}, {close(1002)}});
}

void pings(std::vector<Case>& cases) {
    const std::string all("\x00\xFF\xFE\x80 any byte", 13);
    cases.push_back({"pings/empty", {ping(""), bye}, {pong(""), bye}});
    cases.push_back({"pings/bytes", {ping(all), bye}, {pong(all), bye}});
    cases.push_back({"pings/125", {ping(std::string(125, 'p')), bye}, {pong(std::string(125, 'p')), bye}});
    cases.push_back({"pings/126", {ping(std::string(126, 'p')), bye}, {close(1002)}});
    cases.push_back({"pings/unasked-pong", {pong("why"), ping("x"), bye}, {pong("x"), bye}});
    std::vector<RawFrame> asked;
    std::vector<RawFrame> given;
    for (int i = 0; i < 10; ++i) {
        asked.push_back(ping(std::to_string(i)));
        given.push_back(pong(std::to_string(i)));
    }
    asked.push_back(bye);
    given.push_back(bye);
    cases.push_back({"pings/ten-in-order", asked, given});
}

void reservedBitsAndOpcodes(std::vector<Case>& cases) {
    for (unsigned bits = 1; bits < 8; ++bits) {
        const std::string suffix = std::to_string(bits);
        cases.push_back(
            {"reserved/text-" + suffix, {text("ok"), {0x81 | bits << 4, "x"}, ping("")}, {text("ok"), close(1002)}});
        cases.push_back({"reserved/ping-" + suffix, {{0x89 | bits << 4, "x"}}, {close(1002)}});
        cases.push_back({"reserved/close-" + suffix, {{0x88 | bits << 4, ""}}, {close(1002)}});
    }
    for (const unsigned opcode : {3U, 4U, 5U, 6U, 7U, 11U, 12U, 13U, 14U, 15U}) {
        cases.push_back({"opcodes/" + std::to_string(opcode),
                         {text("ok"), {0x80 | opcode, "x"}, ping("")},
                         {text("ok"), close(1002)}});
    }
}

void fragmentation(std::vector<Case>& cases) {
    cases.push_back({"fragmentation/two", {{0x01, "ab"}, {0x80, "cd"}, bye}, {text("abcd"), bye}});
    cases.push_back({"fragmentation/empty-parts", {{0x01, ""}, {0x00, ""}, {0x80, ""}, bye}, {text(""), bye}});
    cases.push_back({"fragmentation/empty-around", {{0x02, ""}, {0x00, "mid"}, {0x80, ""}, bye}, {binary("mid"), bye}});
    cases.push_back(
        {"fragmentation/ping-between", {{0x01, "ab"}, ping("p"), {0x80, "cd"}, bye}, {pong("p"), text("abcd"), bye}});
    cases.push_back({"fragmentation/close-between", {{0x01, "ab"}, bye, {0x80, "cd"}}, {bye}});
    cases.push_back({"fragmentation/continues-nothing", {{0x80, "x"}}, {close(1002)}});
    cases.push_back({"fragmentation/continues-nothing-open", {{0x00, "x"}, {0x80, "y"}}, {close(1002)}});
    cases.push_back({"fragmentation/continues-after-end", {text("a"), {0x80, "x"}}, {text("a"), close(1002)}});
    cases.push_back({"fragmentation/text-in-text", {{0x01, "ab"}, text("cd")}, {close(1002)}});
    cases.push_back({"fragmentation/binary-in-text", {{0x01, "ab"}, {0x02, "cd"}}, {close(1002)}});
    cases.push_back({"fragmentation/fragmented-ping", {{0x09, "a"}, {0x80, "b"}}, {close(1002)}});
    cases.push_back({"fragmentation/fragmented-close", {{0x08, "a"}}, {close(1002)}});
    std::vector<RawFrame> parts{{0x02, "0"}};
    std::string whole = "0";
    for (int i = 1; i < 200; ++i) {
        const std::string part(static_cast<std::size_t>(i), static_cast<char>('a' + i % 26));
        parts.push_back({0x00, part});
        whole += part;
    }
    parts.push_back({0x80, "z"});
    parts.push_back(bye);
    cases.push_back({"fragmentation/two-hundred", parts, {binary(whole + "z"), bye}});
}

void utf8(std::vector<Case>& cases) {
    const std::vector<std::string> valid{"\xCE\xBA\xE1\xBD\xB9\xCF\x83\xCE\xBC\xCE\xB5",
                                         "\x7F",
                                         "\xC2\x80",
                                         "\xDF\xBF",
                                         "\xE0\xA0\x80",
                                         "\xED\x9F\xBF",
                                         "\xEE\x80\x80",
                                         "\xEF\xBF\xBF",
                                         "\xF0\x90\x80\x80",
                                         "\xF0\x9F\x98\x80",
                                         "\xF4\x8F\xBF\xBF",
                                         std::string(1, '\0')};
    const std::vector<std::string> invalid{"\x80",
                                           "\xBF",
                                           "\xC0\x80",
                                           "\xC1\xBF",
                                           "\xC2",
                                           "\xC2\x41",
                                           "\xE0\x80\x80",
                                           "\xE0\x9F\xBF",
                                           "\xE1\x80",
                                           "\xED\xA0\x80",
                                           "\xED\xBF\xBF",
                                           "\xEF\xBF",
                                           "\xF0\x80\x80\x80",
                                           "\xF0\x8F\xBF\xBF",
                                           "\xF0\x9F\x98",
                                           "\xF4\x90\x80\x80",
                                           "\xF5\x80\x80\x80",
                                           "\xF8\x88\x80\x80\x80",
                                           "\xFE",
                                           "\xFF",
                                           "\xE1\x80\xE1\x80\x80",
                                           "\xC3\xC3\xA9"};
    // In front of each, nothing and enough text for every path of the checker.
    for (const std::string& before :
         {std::string(), std::string(5, 'a'), std::string(70, 'b'),
          std::string("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80-0123456789-\xC3\xA9-abcdefghijk")}) {
        const std::string suffix = "-after-" + std::to_string(before.size());
        for (std::size_t i = 0; i < valid.size(); ++i) {
            const std::string whole = before + valid[i] + before;
            cases.push_back({"utf8/valid-" + std::to_string(i) + suffix, {text(whole), bye}, {text(whole), bye}});
            // One byte a frame: characters are cut everywhere.
            std::vector<RawFrame> parts{{0x01, ""}};
            for (const char c : whole) {
                parts.push_back({0x00, std::string(1, c)});
            }
            parts.push_back({0x80, ""});
            parts.push_back(bye);
            cases.push_back({"utf8/valid-in-parts-" + std::to_string(i) + suffix, parts, {text(whole), bye}});
        }
        for (std::size_t i = 0; i < invalid.size(); ++i) {
            cases.push_back(
                {"utf8/invalid-" + std::to_string(i) + suffix, {text(before + invalid[i]), ping("")}, {close(1007)}});
            cases.push_back({"utf8/invalid-within-" + std::to_string(i) + suffix,
                             {text(before + invalid[i] + std::string(40, 'c')), ping("")},
                             {close(1007)}});
        }
    }
    // The fault is seen before the message ends.
    cases.push_back({"utf8/fail-fast", {{0x01, "abc\xF4\x90"}}, {close(1007)}});
    cases.push_back({"utf8/half-a-character-at-the-end", {{0x01, "abc\xE2"}, {0x80, "\x82"}}, {close(1007)}});
    cases.push_back({"utf8/binary-is-free", {binary("\xFF\xC0\x80"), bye}, {binary("\xFF\xC0\x80"), bye}});
}

void closing(std::vector<Case>& cases) {
    cases.push_back({"close/empty", {{0x88, ""}}, {{0x88, ""}}});
    cases.push_back({"close/half-a-code", {{0x88, "\x03"}}, {close(1002)}});
    cases.push_back({"close/longest-reason", {close(1000, std::string(123, 'r'))}, {bye}});
    cases.push_back({"close/reason-too-long", {close(1000, std::string(124, 'r'))}, {close(1002)}});
    cases.push_back({"close/reason-no-text", {close(1000, "\xED\xA0\x80")}, {close(1007)}});
    cases.push_back({"close/twice", {bye, bye}, {bye}});
    cases.push_back({"close/then-ping", {bye, ping("x")}, {bye}});
    cases.push_back({"close/then-text", {bye, text("x")}, {bye}});
    for (const unsigned code : {1000U, 1001U, 1002U, 1003U, 1007U, 1008U, 1009U, 1010U, 1011U, 1012U, 1013U, 1014U,
                                3000U, 3999U, 4000U, 4999U}) {
        cases.push_back({"close/code-" + std::to_string(code), {close(code, "why")}, {close(code)}});
    }
    for (const unsigned code : {0U, 1U, 999U, 1004U, 1005U, 1006U, 1015U, 1016U, 1100U, 2000U, 2999U, 5000U, 65535U}) {
        cases.push_back({"close/bad-code-" + std::to_string(code), {close(code)}, {close(1002)}});
    }
}

void limits(std::vector<Case>& cases) {
    const std::string half(messageLimit / 2, 'h');
    cases.push_back({"limits/one-frame", {binary(std::string(messageLimit + 1, 'x'))}, {close(1009)}});
    cases.push_back({"limits/exactly", {{0x02, half}, {0x80, half}, bye}, {binary(half + half), bye}});
    cases.push_back({"limits/in-parts", {{0x02, half}, {0x00, half}, {0x80, "x"}}, {close(1009)}});
}

} // namespace

std::vector<Case> allCases() {
    std::vector<Case> cases;
    framing(cases);
    pings(cases);
    reservedBitsAndOpcodes(cases);
    fragmentation(cases);
    utf8(cases);
    closing(cases);
    limits(cases);
    return cases;
}

} // namespace zentavo::websocket::conformance
