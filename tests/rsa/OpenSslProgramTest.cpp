// Our keys on the Linux port against the openssl program: what the one writes, the other reads.

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>

#include "ports/linux/OpenSslKeyServices.h"
#include "tests/ports/TemporaryFolder.h"
#include "tests/support/TestKeys.h"
#include "zentavo/rsa/PrivateKey.h"
#include "zentavo/rsa/PublicKey.h"

namespace zentavo::rsa::tests {
namespace {

using ::testing::HasSubstr;
using zentavo::tests::testKey;
using zentavo::tests::testKeyText;

struct SchemeCase {
    Signature scheme;
    const char* options;
};
const SchemeCase schemes[] = {
    {Signature::pkcs1SHA1, "-sha1"},
    {Signature::pkcs1SHA256, "-sha256"},
    {Signature::pkcs1SHA512, "-sha512"},
    {Signature::pssSHA1, "-sha1 -sigopt rsa_padding_mode:pss -sigopt rsa_pss_saltlen:digest"},
    {Signature::pssSHA256, "-sha256 -sigopt rsa_padding_mode:pss -sigopt rsa_pss_saltlen:digest"},
    {Signature::pssSHA512, "-sha512 -sigopt rsa_padding_mode:pss -sigopt rsa_pss_saltlen:digest"},
};

struct PaddingCase {
    Encryption padding;
    const char* options;
    std::size_t overhead;
};
const PaddingCase paddings[] = {
    {Encryption::pkcs1, "-pkeyopt rsa_padding_mode:pkcs1", 11},
    {Encryption::oaepSHA1, "-pkeyopt rsa_padding_mode:oaep", 42},
    {Encryption::oaepSHA256, "-pkeyopt rsa_padding_mode:oaep -pkeyopt rsa_oaep_md:sha256 -pkeyopt rsa_mgf1_md:sha256",
     66},
};

/// A key of so many bits, in all its forms.
class OpenSslProgramTest : public ::testing::TestWithParam<int> {
protected:
    /// Runs the program in a folder of the test's own, where the keys are "private" and "public".
    bool openssl(const std::string& arguments) const {
        return std::system(
                   ("cd '" + folder_.path().string() + "' && '" ZENTAVO_OPENSSL "' " + arguments + " >output 2>&1")
                       .c_str()) == 0;
    }
    void write(const char* name, const Bytes& bytes) const {
        folder_.write(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    Bytes read(const char* name) const {
        std::ifstream file(folder_.path() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::string bits_ = std::to_string(GetParam());
    const std::size_t block_ = static_cast<std::size_t>(GetParam()) / 8;
    const linux_port::OpenSslKeyServices services_{};
    const Result<PrivateKey> private_ = PrivateKey::fromPEM(testKeyText(bits_ + ".pkcs8.pem"), services_);
    const Result<PublicKey> public_ = PublicKey::fromPEM(testKeyText(bits_ + ".spki.pem"), services_);
    const zentavo::tests::TemporaryFolder folder_;

    void SetUp() override {
        ASSERT_TRUE(private_) << private_.error().message;
        ASSERT_TRUE(public_) << public_.error().message;
        write("private", testKey(bits_ + ".pkcs8.pem"));
        write("public", testKey(bits_ + ".spki.pem"));
    }
};

TEST_P(OpenSslProgramTest, AllFormsAreTheSameKey) {
    const Bytes message(1000, 'm');
    const auto signature = private_->sign(message, Signature::pkcs1SHA256);
    ASSERT_TRUE(signature);
    EXPECT_EQ(signature->size(), block_);
    EXPECT_EQ(PrivateKey::fromPEM(testKeyText(bits_ + ".pkcs1.pem"), services_)->blockSize(), block_);
    for (const char* form : {".pkcs8.der", ".pkcs1.der"}) {
        const auto key = PrivateKey::fromDER(testKey(bits_ + form), services_);
        ASSERT_TRUE(key) << key.error().message;
        EXPECT_EQ(*key->sign(message, Signature::pkcs1SHA256), *signature) << form;
    }
    EXPECT_TRUE(*PublicKey::fromPEM(testKeyText(bits_ + ".public.pem"), services_)
                     ->verify(message, *signature, Signature::pkcs1SHA256));
    for (const char* form : {".spki.der", ".public.der"}) {
        const auto key = PublicKey::fromDER(testKey(bits_ + form), services_);
        ASSERT_TRUE(key) << key.error().message;
        EXPECT_TRUE(*key->verify(message, *signature, Signature::pkcs1SHA256)) << form;
    }
}

TEST_P(OpenSslProgramTest, SignaturesAreUnderstoodBothWays) {
    const Bytes message{'h', 'e', 'l', 'l', 'o', 0, 0xFF};
    write("message", message);
    for (const auto& [scheme, options] : schemes) {
        const auto ours = private_->sign(message, scheme);
        if (block_ == 128 && scheme == Signature::pssSHA512) {
            EXPECT_THAT(ours.error().message, HasSubstr("takes a key of at least 130 bytes, not 128"));
            continue;
        }
        ASSERT_TRUE(ours) << ours.error().message;
        write("ours", *ours);
        EXPECT_TRUE(openssl(std::string("dgst -verify public -signature ours ") + options + " message")) << options;

        ASSERT_TRUE(openssl(std::string("dgst -sign private -out theirs ") + options + " message")) << options;
        EXPECT_TRUE(*public_->verify(message, read("theirs"), scheme)) << options;
    }
}

TEST_P(OpenSslProgramTest, CiphertextsAreUnderstoodBothWays) {
    for (const auto& [padding, options, overhead] : paddings) {
        const Bytes plain(block_ - overhead, 'p'); // the longest
        EXPECT_EQ(public_->longestPlain(padding), plain.size());
        const auto ours = public_->encrypt(plain, padding);
        ASSERT_TRUE(ours) << ours.error().message;
        write("ours", *ours);
        ASSERT_TRUE(openssl(std::string("pkeyutl -decrypt -inkey private -in ours -out decrypted ") + options));
        EXPECT_EQ(read("decrypted"), plain) << options;

        write("plain", plain);
        ASSERT_TRUE(openssl(std::string("pkeyutl -encrypt -pubin -inkey public -in plain -out theirs ") + options));
        EXPECT_EQ(*private_->decrypt(read("theirs"), padding), plain) << options;
    }
    const auto text = private_->encryptText("", Encryption::oaepSHA256); // with the public half; nothing is a plaintext
    ASSERT_TRUE(text) << text.error().message;
    EXPECT_EQ(*private_->decryptText(*text, Encryption::oaepSHA256), "");
}

INSTANTIATE_TEST_SUITE_P(Keys, OpenSslProgramTest, ::testing::Values(1024, 2048, 3072, 4096),
                         [](const auto& bits) { return std::to_string(bits.param); });

TEST(OpenSslProgramKeysTest, OtherKeysAreRefusedByTheirNames) {
    const linux_port::OpenSslKeyServices services;
    const auto refusal = [&](const char* name) {
        return PrivateKey::fromPEM(testKeyText(name), services).error().message;
    };
    EXPECT_THAT(refusal("encrypted.pkcs8.pem"), HasSubstr("is encrypted"));
    EXPECT_THAT(refusal("encrypted.pkcs1.pem"), HasSubstr("is encrypted"));
    EXPECT_THAT(refusal("ec.pkcs8.pem"), HasSubstr("not for RSA"));
    EXPECT_THAT(refusal("768.pkcs8.pem"), HasSubstr("fewer than 1024"));
}

} // namespace
} // namespace zentavo::rsa::tests
