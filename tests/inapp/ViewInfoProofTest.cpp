// The signature by real cryptography, with the key of this very build.

#include "zentavo/inapp/ViewInfoProof.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/linux/OpenSslKeyServices.h"
#include "ports/memory/MemoryPlatform.h"
#include "zentavo/foundation/Fault.h"
#include "zentavo/rsa/PrivateKey.h"

namespace zentavo {
namespace {

class ViewInfoProofTest : public ::testing::Test {
protected:
    ViewInfoProofTest() { memory.platform()->keyServices = std::make_shared<linux_port::OpenSslKeyServices>(); }

    testing::MemoryPlatform memory;
};

TEST_F(ViewInfoProofTest, ThePublicKeyVerifiesTheExactText) {
    const std::string body = R"({"url":"https://a/b","name":"Größe \\/ 42"})";
    const auto proof = proveViewInfo(body, signingKeyPEM(), *memory.platform());
    ASSERT_TRUE(proof) << proof.error().message;
    EXPECT_EQ(proof->ts, 1'768'478'400'000);
    const auto key = rsa::PrivateKey::fromPEM(signingKeyPEM(), *memory.platform()->keyServices);
    ASSERT_TRUE(key);
    EXPECT_EQ(key->blockSize(), 256U);
    const auto verifies = [&](const std::string& text) {
        return key->verifyText(text, proof->sn, rsa::Signature::pkcs1SHA256).value();
    };
    EXPECT_TRUE(verifies(body + "1768478400000" + proof->ri));
    EXPECT_FALSE(verifies(body + proof->ri + "1768478400000"));
    EXPECT_FALSE(verifies(body + " 1768478400000" + proof->ri));
    const auto next = proveViewInfo(body, signingKeyPEM(), *memory.platform());
    EXPECT_NE(next->ri, proof->ri);
}

TEST_F(ViewInfoProofTest, WithoutAKeyThereIsNoProofAndNoErrorQuotesTheKey) {
    EXPECT_THAT(proveViewInfo("{}", "", *memory.platform()).error().message,
                ::testing::HasSubstr("ZENTAVO_SIGNING_KEY"));
    std::string damaged(signingKeyPEM());
    damaged[damaged.size() / 2] ^= 1;
    damaged.erase(100, 40);
    const auto refused = proveViewInfo("{}", damaged, *memory.platform());
    ASSERT_FALSE(refused);
    EXPECT_LT(refused.error().message.size(), 120U);
    EXPECT_EQ(refused.error().message.find(damaged.substr(40, 12)), std::string::npos);
}

} // namespace
} // namespace zentavo
