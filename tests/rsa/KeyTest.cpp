// Keys as a host uses them, over scripted key services.

#include <gmock/gmock.h>

#include "ports/memory/MemoryPlatform.h"
#include "tests/rsa/MadeUpKey.h"
#include "zentavo/foundation/Base64.h"
#include "zentavo/rsa/PrivateKey.h"
#include "zentavo/rsa/PublicKey.h"

namespace zentavo::rsa::tests {
namespace {

using ::testing::HasSubstr;

std::string pem(const std::string& label, const Bytes& der) {
    return "-----BEGIN " + label + "-----\n" + base64::encode(der) + "\n-----END " + label + "-----\n";
}

class KeyTest : public ::testing::Test {
protected:
    testing::MemoryPlatform system_;
    testing::MemoryKeyServices& services_ = *system_.keyServices;
    const MadeUpKey parts_{};
};

TEST_F(KeyTest, SignsTextThroughTheKeyServices) {
    services_.setSignature(Bytes{0xFB, 0xFF, 0xFE});
    const auto key = PrivateKey::fromPEM(pem("PRIVATE KEY", parts_.privateInfo()), *system_.platform()->keyServices);
    ASSERT_TRUE(key) << key.error().message;
    EXPECT_EQ(*key->signText("hello", Signature::pkcs1SHA256), "+//+");
    ASSERT_EQ(services_.signings().size(), 1u);
    EXPECT_EQ(services_.signings()[0].message, (Bytes{'h', 'e', 'l', 'l', 'o'}));
    EXPECT_EQ(services_.signings()[0].scheme, Signature::pkcs1SHA256);
    EXPECT_TRUE(*key->verifyText("hello", "+//\n+", Signature::pkcs1SHA256));
    EXPECT_FALSE(key->verifyText("hello", "+", Signature::pkcs1SHA256).ok());
    EXPECT_FALSE(*key->verifyText("hello", "+///", Signature::pkcs1SHA256));

    services_.setSignature(Error{"the token was pulled out"});
    EXPECT_EQ(key->signText("hello", Signature::pssSHA512).error().message, "the token was pulled out");
    services_.refuseKeys(Error{"no token"});
    EXPECT_EQ(PublicKey::fromDER(parts_.publicInfo(), services_).error().message, "no token");
}

TEST_F(KeyTest, PrivateAndPublicAreNotTakenForEachOther) {
    EXPECT_THAT(PrivateKey::fromPEM(pem("PUBLIC KEY", parts_.publicInfo()), services_).error().message,
                HasSubstr("a public key where a private one belongs"));
    EXPECT_THAT(PublicKey::fromPEM(pem("RSA PRIVATE KEY", parts_.privateKey()), services_).error().message,
                HasSubstr("a private key where a public one belongs"));
    EXPECT_THAT(PublicKey::fromPEM(pem("PUBLIC KEY", parts_.privateKey()), services_).error().message,
                HasSubstr("no RSA public key"));
    EXPECT_THAT(PrivateKey::fromDER(parts_.publicKey(), services_).error().message, HasSubstr("no RSA private key"));
}

TEST_F(KeyTest, LimitsAreToldBeforeTheKeyServicesAreAsked) {
    const auto key = PrivateKey::fromDER(parts_.privateKey(), services_); // a block of the memory port is 256 bytes
    ASSERT_TRUE(key);
    EXPECT_EQ(key->longestPlain(Encryption::pkcs1), 245u);
    EXPECT_EQ(key->longestPlain(Encryption::oaepSHA1), 214u);
    EXPECT_EQ(key->longestPlain(Encryption::oaepSHA256), 190u);
    EXPECT_THAT(key->encryptText(std::string(246, 'x'), Encryption::pkcs1).error().message,
                HasSubstr("at most 245 bytes can be encrypted with this key and padding"));
    EXPECT_THAT(key->encryptText(std::string(245, 'x'), Encryption::pkcs1).error().message, HasSubstr("memory port"));
    EXPECT_THAT(key->decryptText("Zm9v", Encryption::pkcs1).error().message, HasSubstr("256 bytes long, not 3"));
    EXPECT_THAT(key->decryptText("Z", Encryption::pkcs1).error().message, HasSubstr("not base64"));
}

} // namespace
} // namespace zentavo::rsa::tests
