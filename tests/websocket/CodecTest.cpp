// The inner loops against the plainest way to say the same.

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "zentavo/foundation/UTF8.h"
#include "zentavo/websocket/Deflate.h"
#include "zentavo/websocket/Masking.h"
#include "zentavo/websocket/UTF8Validator.h"

namespace zentavo::websocket {
namespace {

TEST(Masking, isThePlainLoopAtEveryLengthOffsetAndAlignment) {
    constexpr MaskKey key{0x12, 0xF4, 0x00, 0x9B};
    for (std::size_t length = 0; length < 150; ++length) {
        for (std::size_t position = 0; position < 5; ++position) {
            for (std::size_t alignment = 0; alignment < 3; ++alignment) {
                std::string bytes(alignment + length, '\0');
                std::string wanted = bytes;
                for (std::size_t i = 0; i < length; ++i) {
                    bytes[alignment + i] = static_cast<char>(i * 31);
                    wanted[alignment + i] = static_cast<char>((i * 31 & 0xFF) ^ key[(position + i) % 4]);
                }
                applyMask({bytes.data() + alignment, length}, key, position);
                ASSERT_EQ(bytes, wanted) << length << " " << position;
            }
        }
    }
}

/// Random text of all kinds of characters, now and then spoiled.
std::string randomText(std::mt19937& chance) {
    const std::vector<std::string> characters{
        "a", "b0123456789abcdef", "\xC3\xA9", "\xE2\x82\xAC", "\xED\x9F\xBF", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"};
    std::string text;
    const auto count = chance() % 60;
    for (unsigned i = 0; i < count; ++i) {
        text += characters[chance() % characters.size()];
    }
    if (!text.empty() && chance() % 2 == 0) {
        text[chance() % text.size()] = static_cast<char>(chance());
    }
    if (chance() % 4 == 0) {
        text.resize(text.size() - std::min<std::size_t>(text.size(), chance() % 4));
    }
    return text;
}

TEST(UTF8Validator, agreesWithThePlainCheckHoweverTextIsCut) {
    std::mt19937 chance(4711);
    int invalid = 0;
    for (int i = 0; i < 60000; ++i) {
        const std::string text = randomText(chance);
        const bool wanted = utf8::isValid(text);
        invalid += wanted ? 0 : 1;
        UTF8Validator whole;
        ASSERT_EQ(whole.feed(text) && whole.complete(), wanted) << i;
        UTF8Validator parts;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t size = chance() % 50;
            parts.feed(std::string_view(text).substr(at, size));
            at += size;
        }
        ASSERT_EQ(parts.complete(), wanted) << i;
    }
    EXPECT_GT(invalid, 10000);
}

TEST(Inflater, goesOnBehindABlockMarkedAsTheLast) {
    // "Hello" in a final block, then the zero byte that the standard asks for; then once more.
    const std::string final("\xF3\x48\xCD\xC9\xC9\x07\x00\x00", 8);
    Inflater inflater(15, true);
    for (int i = 0; i < 2; ++i) {
        std::string out;
        EXPECT_EQ(inflater.expand(final, true, out, 100), Inflater::Outcome::ok);
        EXPECT_EQ(out, "Hello");
    }
    const std::string backwards("\xF2\x00\x11\x00\x00", 5);
    std::string out;
    EXPECT_EQ(inflater.expand(backwards, true, out, 100), Inflater::Outcome::ok);
    EXPECT_EQ(out, "Hello");
}

TEST(Inflater, worksNoMoreForManyBlocksThanForTheirBytes) {
    std::string text(40000, '\0');
    std::mt19937 chance(7);
    std::generate(text.begin(), text.end(), [&] { return static_cast<char>(chance()); });
    Deflater deflater(15, true, 6);
    Inflater inflater(15, true);
    const auto taken = [&](std::string_view message) {
        std::string out;
        EXPECT_EQ(inflater.expand(message, true, out, 1U << 20U), Inflater::Outcome::ok);
        return out;
    };
    EXPECT_EQ(taken(deflater.compress(text)), text);
    const std::size_t before = inflater.prepared();
    std::string blocks;
    for (int i = 0; i < 65536; ++i) {
        blocks += std::string("\x03\x00", 2); // a last block with nothing in it
    }
    blocks += '\0'; // as the standard asks for behind a last block
    EXPECT_EQ(taken(blocks), "");
    EXPECT_LT(inflater.prepared() - before, 1U << 20U);
    // The window is still there, behind all of them.
    const std::string_view again = deflater.compress(text.substr(20000));
    EXPECT_LT(again.size(), 1000U);
    EXPECT_EQ(taken(again), text.substr(20000));
}

TEST(Inflater, refusesGarbageAndReferencesBeforeTheBeginning) {
    for (const std::string& bad :
         {std::string("\xFF\xFF\xFF"), std::string("\x06\x00"), std::string("\xF2\x00\x11\x00", 4)}) {
        Inflater inflater(15, true);
        std::string out;
        EXPECT_EQ(inflater.expand(bad, true, out, 100), Inflater::Outcome::corrupt);
    }
}

} // namespace
} // namespace zentavo::websocket
