// Signatures made here with the key of this build, right and wrong.

#include "devserver/ProofCheck.h"

#include <cstdio>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include "zentavo/foundation/Base64.h"

namespace zentavo::devserver {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr std::int64_t now = 1'768'478'400'000;
const std::string ts = std::to_string(now);
const std::string body = R"({"url":"https://shop.example/"})";

std::string uuid(int number) {
    std::string text = "00000000-0000-4000-8000-000000000000";
    const std::string digits = std::to_string(number);
    return text.replace(text.size() - digits.size(), digits.size(), digits);
}

std::string sign(const std::string& text, const EVP_MD* digest = EVP_sha256()) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(ZENTAVO_SIGNING_KEY_FILE, "r"), std::fclose);
    const std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY*)> key(
        file ? PEM_read_PrivateKey(file.get(), nullptr, nullptr, nullptr) : nullptr, EVP_PKEY_free);
    const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    std::vector<std::uint8_t> signature(256);
    std::size_t size = signature.size();
    EXPECT_EQ(EVP_DigestSignInit(context.get(), nullptr, digest, nullptr, key.get()), 1);
    EXPECT_EQ(EVP_DigestSign(context.get(), signature.data(), &size,
                             reinterpret_cast<const unsigned char*>(text.data()), text.size()),
              1);
    return base64::encode(signature);
}

class ProofCheckTest : public ::testing::Test {
protected:
    std::vector<std::string> problems(const std::string& sn, const std::string& ri = uuid(1),
                                      const std::string& time = ts) {
        Problems found;
        check.check({{"ts", time}, {"sn", sn}, {"ri", ri}}, body, now, found);
        return found.list();
    }
    ProofCheck check;
};

TEST_F(ProofCheckTest, ARightSignaturePassesAndMayComeAgainWithItsRequest) {
    const std::string sn = sign(body + ts + uuid(1));
    EXPECT_THAT(problems(sn), IsEmpty());
    EXPECT_THAT(problems(sn), IsEmpty()) << "clients repeat what failed";
    const std::string later = std::to_string(now + 1);
    EXPECT_THAT(problems(sign(body + later + uuid(1)), uuid(1), later),
                ElementsAre(HasSubstr("which another request has had")));
    const std::string edge = std::to_string(now - ProofCheck::clockTolerance);
    EXPECT_THAT(problems(sign(body + edge + uuid(2)), uuid(2), edge), IsEmpty());
    const std::string old = std::to_string(now - ProofCheck::clockTolerance - 1);
    EXPECT_THAT(problems(sign(body + old + uuid(3)), uuid(3), old),
                ElementsAre("ts is -300 s from the server's time; at most 300 s are accepted"));
}

TEST_F(ProofCheckTest, UsualMistakesAreRecognised) {
    const std::string ri = uuid(4);
    EXPECT_THAT(problems(sign(body), ri), ElementsAre(HasSubstr("the body alone")));
    EXPECT_THAT(problems(sign(body + ri + ts), ri), ElementsAre(HasSubstr("ri before ts")));
    EXPECT_THAT(problems(sign(body + ts), ri), ElementsAre(HasSubstr("without ri")));
    EXPECT_THAT(problems(sign(R"({"url":"https:\/\/shop.example\/"})" + ts + ri), ri),
                ElementsAre(HasSubstr("a backslash before each slash")));
    EXPECT_THAT(problems(sign(body + ts + ri, EVP_sha1()), ri), ElementsAre(HasSubstr("in another way than RSA")));
    EXPECT_THAT(problems(sign(body + " " + ts + ri), ri), ElementsAre(HasSubstr("over another text")));
}

} // namespace
} // namespace zentavo::devserver
