// What KeyServices.h promises, held against every port that has real cryptography.

#include <set>
#include <thread>

#include <gmock/gmock.h>

#include "tests/ports/Machine.h"
#include "tests/support/TestKeys.h"

namespace zentavo::tests {
namespace {

using platform::Bytes;
using platform::RSAEncryption;
using platform::RSASignature;
using ::testing::HasSubstr;

constexpr auto signatures = {RSASignature::pkcs1SHA1, RSASignature::pkcs1SHA256, RSASignature::pkcs1SHA512,
                             RSASignature::pssSHA1,   RSASignature::pssSHA256,   RSASignature::pssSHA512};
constexpr auto paddings = {RSAEncryption::pkcs1, RSAEncryption::oaepSHA1, RSAEncryption::oaepSHA256};

class KeyServicesConformance : public MachineTest {
protected:
    const std::shared_ptr<platform::KeyServices> services_ = machine->keyServices();
    const Bytes message_{'h', 'e', 'l', 'l', 'o'};
    std::shared_ptr<const platform::RSAKey> privateKey() { return *services_->privateKey(testKey("2048.pkcs1.der")); }
    std::shared_ptr<const platform::RSAKey> publicKey() { return *services_->publicKey(testKey("2048.public.der")); }
};

TEST_P(KeyServicesConformance, SignsAndVerifies) {
    const auto key = privateKey();
    const auto other = publicKey();
    EXPECT_TRUE(key->isPrivate());
    EXPECT_FALSE(other->isPrivate());
    EXPECT_EQ(key->blockSize(), 256u);
    EXPECT_EQ(other->blockSize(), 256u);
    for (const auto scheme : signatures) {
        auto signature = key->sign(message_, scheme);
        ASSERT_TRUE(signature) << signature.error().message;
        EXPECT_EQ(signature->size(), 256u);
        EXPECT_TRUE(*other->verify(message_, *signature, scheme));
        EXPECT_TRUE(*key->verify(message_, *signature, scheme));
        for (const auto wrong : signatures) {
            EXPECT_EQ(*other->verify(message_, *signature, wrong), wrong == scheme);
        }
        EXPECT_FALSE(*other->verify(Bytes{'h'}, *signature, scheme));
        signature->back() ^= 1;
        EXPECT_FALSE(*other->verify(message_, *signature, scheme));
        for (const std::size_t size : {0, 1, 255, 257, 5000}) {
            signature->resize(size);
            EXPECT_FALSE(*other->verify(message_, *signature, scheme)) << size;
        }
        EXPECT_TRUE(*other->verify({}, *key->sign({}, scheme), scheme)) << "nothing is a message";
    }
    EXPECT_NE(*key->sign(message_, RSASignature::pssSHA256), *key->sign(message_, RSASignature::pssSHA256))
        << "the salt is new each time";
}

TEST_P(KeyServicesConformance, EncryptsWhatFitsIntoABlock) {
    const auto key = privateKey();
    const auto other = publicKey();
    for (const auto padding : paddings) {
        const std::size_t most = padding == RSAEncryption::pkcs1 ? 245 : padding == RSAEncryption::oaepSHA1 ? 214 : 190;
        for (const std::size_t size : {std::size_t{0}, std::size_t{1}, most}) {
            const Bytes plain(size, 0);
            const auto cipher = other->encrypt(plain, padding);
            ASSERT_TRUE(cipher) << cipher.error().message;
            EXPECT_EQ(cipher->size(), 256u);
            EXPECT_EQ(*key->decrypt(*cipher, padding), plain);
            EXPECT_NE(*key->encrypt(plain, padding), *cipher) << "no two are alike";
        }
        EXPECT_FALSE(other->encrypt(Bytes(most + 1, 0), padding).ok());
    }
}

TEST_P(KeyServicesConformance, DecryptionDoesNotTellWhatWasWrong) {
    const auto key = privateKey();
    for (const auto padding : paddings) {
        auto cipher = *key->encrypt(message_, padding);
        std::set<std::string> messages;
        const auto note = [&](RSAEncryption as) {
            const auto plain = key->decrypt(cipher, as);
            if (plain) { // bytes that mean nothing, where the system answers so
                EXPECT_EQ(as, RSAEncryption::pkcs1);
                EXPECT_NE(*plain, message_);
            } else {
                messages.insert(plain.error().message);
            }
        };
        for (const auto wrong : paddings) {
            if (wrong != padding) {
                note(wrong);
            }
        }
        cipher.back() ^= 1;
        note(padding);
        cipher.assign(256, 0xFF); // larger than the modulus
        note(padding);
        cipher.assign(256, 0);
        note(padding);
        cipher.pop_back();
        note(padding);
        EXPECT_LE(messages.size(), 1u) << ::testing::PrintToString(messages);
    }
}

TEST_P(KeyServicesConformance, PublicKeysDoNothingPrivate) {
    const auto key = publicKey();
    EXPECT_FALSE(key->sign(message_, RSASignature::pkcs1SHA256).ok());
    EXPECT_FALSE(key->decrypt(*key->encrypt(message_, RSAEncryption::oaepSHA256), RSAEncryption::oaepSHA256).ok());
}

TEST_P(KeyServicesConformance, OnlyTheStructureOfTheNameIsAKey) {
    for (const char* name : {"2048.pkcs1.pem", "2048.public.der", "2048.spki.der", "768.pkcs1.der"}) {
        EXPECT_FALSE(services_->privateKey(testKey(name)).ok()) << name;
    }
    for (const char* name : {"2048.public.pem", "2048.pkcs1.der", "2048.pkcs8.der", "768.public.der"}) {
        EXPECT_FALSE(services_->publicKey(testKey(name)).ok()) << name;
    }
    Bytes longer = testKey("2048.pkcs1.der");
    longer.push_back(0);
    EXPECT_FALSE(services_->privateKey(longer).ok());
    EXPECT_FALSE(services_->privateKey({}).ok());
    EXPECT_FALSE(services_->publicKey({}).ok());
}

TEST_P(KeyServicesConformance, DamagedKeysDoNoHarm) {
    // That the numbers of a key belong together is taken on trust; those that do not must not take the process along.
    const Bytes whole = testKey("1024.pkcs1.der");
    for (std::size_t at = 0; at < whole.size(); at += 3) {
        Bytes damaged = whole;
        damaged[at] ^= 0xFF;
        if (const auto key = services_->privateKey(damaged)) {
            const auto signature = (*key)->sign(message_, RSASignature::pkcs1SHA256);
            EXPECT_TRUE(!signature || signature->size() == (*key)->blockSize());
        }
    }
}

TEST_P(KeyServicesConformance, AKeyServesManyThreads) {
    const auto key = privateKey();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const auto own = publicKey();
            for (int round = 0; round < 20; ++round) {
                const auto signature = key->sign(message_, RSASignature::pkcs1SHA256);
                EXPECT_TRUE(*own->verify(message_, *signature, RSASignature::pkcs1SHA256));
                const auto cipher = key->encrypt(message_, RSAEncryption::oaepSHA256);
                EXPECT_EQ(*key->decrypt(*cipher, RSAEncryption::oaepSHA256), message_);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

std::vector<MachineUnderTest> machinesWithCryptography() {
    auto machines = machinesUnderTest();
    std::erase_if(machines, [](const auto& machine) { return machine.make()->keyServices() == nullptr; });
    return machines;
}

INSTANTIATE_TEST_SUITE_P(Ports, KeyServicesConformance, ::testing::ValuesIn(machinesWithCryptography()),
                         [](const auto& machine) { return machine.param.name; });
// In a build with the memory port alone.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(KeyServicesConformance);

} // namespace
} // namespace zentavo::tests
