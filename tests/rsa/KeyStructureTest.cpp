#include "zentavo/rsa/KeyStructure.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/rsa/MadeUpKey.h"

namespace zentavo::rsa::tests {
namespace {

using ::testing::HasSubstr;

enum class Form { privateKey, publicKey };

/// The bytes of the key inside, or the message of the error.
std::string read(Form form, const Bytes& der) {
    // In a block of its exact size, so that a sanitizer sees a read beyond it.
    const Bytes exact(der.begin(), der.end());
    const auto key = form == Form::privateKey ? privateKeyIn(exact) : publicKeyIn(exact);
    return key ? std::string(key->begin(), key->end()) : key.error().message;
}

std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(KeyStructureTest, TheHeaderIsStripped) {
    const MadeUpKey key;
    EXPECT_EQ(read(Form::privateKey, key.privateKey()), text(key.privateKey()));
    EXPECT_EQ(read(Form::privateKey, key.privateInfo()), text(key.privateKey()));
    EXPECT_EQ(read(Form::publicKey, key.publicKey()), text(key.publicKey()));
    EXPECT_EQ(read(Form::publicKey, key.publicInfo()), text(key.publicKey()));
    EXPECT_THAT(read(Form::privateKey, key.publicInfo()), HasSubstr("this is no RSA private key"));
    EXPECT_THAT(read(Form::publicKey, key.privateInfo()), HasSubstr("this is no RSA public key"));
}

TEST(KeyStructureTest, WhatMayFollowTheKeyIsPassedOver) {
    MadeUpKey key;
    key.behind = element(0xA0, element(0x31, {}));
    EXPECT_EQ(read(Form::privateKey, key.privateInfo()), text(key.privateKey()));
    key.behind = key.behind + element(0x81, {0, 1});
    EXPECT_THAT(read(Form::privateKey, key.privateInfo()), HasSubstr("more than was expected")) << "not in version 0";
    key.infoVersion = integer({1});
    EXPECT_EQ(read(Form::privateKey, key.privateInfo()), text(key.privateKey()));
    key.behind = key.behind + element(0x04, {});
    EXPECT_THAT(read(Form::privateKey, key.privateInfo()), HasSubstr("more than was expected"));
}

TEST(KeyStructureTest, NoPartOfAKeyIsOne) {
    const MadeUpKey key;
    for (const auto& [form, whole] :
         {std::pair(Form::privateKey, key.privateKey()), std::pair(Form::privateKey, key.privateInfo()),
          std::pair(Form::publicKey, key.publicKey()), std::pair(Form::publicKey, key.publicInfo())}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_THAT(read(form, part), HasSubstr("at byte ")) << size;
            // Cut off inside, with lengths that agree with what is left.
            if (size > 4) {
                EXPECT_THAT(read(form, sequence(Bytes(part.begin() + 4, part.end()))), HasSubstr("at byte ")) << size;
            }
        }
        EXPECT_THAT(read(form, whole + Bytes{0}), HasSubstr("more than was expected"));
    }
}

TEST(KeyStructureTest, EveryElementHasItsTag) {
    // Every byte before the digits of the modulus is replaced by every other one in turn.
    const MadeUpKey key;
    const Bytes whole = key.publicInfo();
    const std::size_t headers = whole.size() - key.exponent.size() - 129;
    for (std::size_t at = 0; at < headers; ++at) {
        for (int change = 1; change < 256; ++change) {
            Bytes changed = whole;
            changed[at] = static_cast<std::uint8_t>(changed[at] ^ change);
            ASSERT_THAT(read(Form::publicKey, changed), HasSubstr("at byte ")) << at << " ^ " << change;
        }
    }
}

TEST(KeyStructureTest, LengthsAreWrittenOneWay) {
    const auto refused = [](const Bytes& der, const char* why) {
        EXPECT_THAT(read(Form::publicKey, der), HasSubstr(why));
    };
    const MadeUpKey key;
    const Bytes inside = key.modulus + key.exponent; // 0x89 bytes
    refused(Bytes{0x30, 0x82, 0x00, 0x89} + inside, "shortest");
    refused(Bytes{0x30, 0x84, 0x00, 0x00, 0x00, 0x89} + inside, "shortest");
    refused(sequence(key.modulus + Bytes{0x02, 0x81, 0x03, 1, 0, 1}), "shortest");
    refused(Bytes{0x30, 0x80} + inside + Bytes{0, 0}, "indefinite");
    refused(Bytes{0x30, 0x84, 0xFF, 0xFF, 0xFF, 0xFF} + inside, "longer than what holds it");
    refused(Bytes{0x30, 0x88, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF} + inside, "far too large");
    refused(Bytes{0x30, 0xFF} + inside, "far too large");
    refused(Bytes{0x30, 0x81, 0x88} + inside, "longer than what holds it"); // the last integer by one byte
}

TEST(KeyStructureTest, NumbersAreThoseOfAKey) {
    const auto refused = [](Form form, const MadeUpKey& key, const char* why) {
        for (const auto& der : form == Form::privateKey ? std::vector{key.privateKey(), key.privateInfo()}
                                                        : std::vector{key.publicKey(), key.publicInfo()}) {
            EXPECT_THAT(read(form, der), HasSubstr(why));
        }
    };
    const auto modulus = [](const Bytes& digits) {
        MadeUpKey key;
        key.modulus = integer(digits);
        return key;
    };
    const auto exponent = [](const Bytes& digits) {
        MadeUpKey key;
        key.exponent = integer(digits);
        return key;
    };
    refused(Form::publicKey, modulus(Bytes(128, 0xC5)), "negative");
    refused(Form::publicKey, modulus({}), "negative");
    refused(Form::publicKey, modulus(Bytes{0, 0} + Bytes(128, 0xC5)), "shortest");
    refused(Form::publicKey, modulus(Bytes{0} + Bytes(128, 0x45)), "shortest");
    refused(Form::publicKey, modulus(Bytes(128, 0x45)), "fewer than 1024"); // 1023 of them
    refused(Form::publicKey, modulus(Bytes{1} + Bytes(2048, 0x45)), "more than 16384");
    refused(Form::publicKey, modulus(Bytes{0} + Bytes(128, 0xC4)), "even");
    refused(Form::publicKey, exponent({1}), "exponent");
    refused(Form::publicKey, exponent({4}), "exponent");
    refused(Form::publicKey, exponent(Bytes(33, 0x11)), "exponent");
    EXPECT_EQ(read(Form::publicKey, exponent({3}).publicKey()), text(exponent({3}).publicKey()));
    const auto longest = modulus(Bytes{0} + Bytes(2048, 0xC5));
    EXPECT_EQ(read(Form::publicKey, longest.publicInfo()), text(longest.publicKey()));

    MadeUpKey key;
    key.version = integer({1}); // more than two primes
    refused(Form::privateKey, key, "version");
    key = {};
    key.privateNumbers.back() = 0;
    EXPECT_EQ(read(Form::privateKey, key.privateKey()), text(key.privateKey())) << "which numbers is not looked at";
    key.privateNumbers = integer(Bytes(129, 0x35)) + key.privateNumbers;
    refused(Form::privateKey, key, "larger than the modulus");
}

TEST(KeyStructureTest, TheAlgorithmIsRSA) {
    const auto refused = [](const MadeUpKey& key, const char* why) {
        EXPECT_THAT(read(Form::privateKey, key.privateInfo()), HasSubstr(why));
        EXPECT_THAT(read(Form::publicKey, key.publicInfo()), HasSubstr(why));
    };
    MadeUpKey key;
    key.identifier.back() = 0x0A; // RSASSA-PSS, whose keys may sign only
    refused(key, "not for RSA");
    key.identifier = element(0x06, {0x2A, 0x86, 0x48, 0xCE, 0x3D, 0x02, 0x01});
    refused(key, "not for RSA");
    key = {};
    key.parameters = {};
    refused(key, "missing");
    key.parameters = element(0x05, {0});
    refused(key, "null");
    key = {};
    key.infoVersion = integer({2});
    EXPECT_THAT(read(Form::privateKey, key.privateInfo()), HasSubstr("version"));

    // A bit string whose last byte is not whole.
    key = {};
    const auto algorithm = sequence(key.identifier + key.parameters);
    EXPECT_THAT(read(Form::publicKey, sequence(algorithm + element(0x03, Bytes{1} + key.publicKey()))),
                HasSubstr("whole bytes"));
    EXPECT_THAT(read(Form::publicKey, sequence(algorithm + element(0x03, {}))), HasSubstr("whole bytes"));
}

} // namespace
} // namespace zentavo::rsa::tests
