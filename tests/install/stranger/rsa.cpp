// A stranger who reads keys, with no port linked: the cryptography is his own. What it is given must be the bare key.
#include <cstdio>

#include <zentavo/rsa/PublicKey.h>

namespace platform = zentavo::platform;

namespace {

class OwnKey final : public platform::RSAKey {
public:
    using Slice = std::span<const std::uint8_t>;

    std::size_t blockSize() const noexcept override { return 128; }
    bool isPrivate() const noexcept override { return false; }
    zentavo::Result<platform::Bytes> encrypt(Slice, platform::RSAEncryption) const override { return none(); }
    zentavo::Result<platform::Bytes> decrypt(Slice, platform::RSAEncryption) const override { return none(); }
    zentavo::Result<platform::Bytes> sign(Slice, platform::RSASignature) const override { return none(); }
    zentavo::Result<bool> verify(Slice, Slice, platform::RSASignature) const override { return true; }

private:
    static zentavo::Error none() { return {"not here"}; }
};

class OwnServices final : public platform::KeyServices {
public:
    using KeyResult = zentavo::Result<std::shared_ptr<const platform::RSAKey>>;

    KeyResult privateKey(std::span<const std::uint8_t>) const override { return zentavo::Error{"not here"}; }
    KeyResult publicKey(std::span<const std::uint8_t> pkcs1) const override {
        if (pkcs1.size() != 140) {
            return zentavo::Error{"the header is still there"};
        }
        return std::shared_ptr<const platform::RSAKey>(std::make_shared<OwnKey>());
    }
};

constexpr auto pem = "-----BEGIN PUBLIC KEY-----\n"
                     "MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQC1bL4/b++uTgBcZqzpWq0m1mda\n"
                     "xhUo6zAIi0yiIHurCa77QwquxI9/BSJh7QygXxEUWZo+oMpEHlkJNZcxa7l/2HX3\n"
                     "RspLSYOCI85AzGKwpJ/kAc9aMCTgjvBLFrFWnmmQEScfVdtDRCvzqejq3C7j2Rak\n"
                     "vrH8ohxe2aEqav7iQQIDAQAB\n"
                     "-----END PUBLIC KEY-----\n";

} // namespace

int main() {
    const auto key = zentavo::rsa::PublicKey::fromPEM(pem, OwnServices());
    if (!key) {
        std::printf("rsa: %s\n", key.error().message.c_str());
        return 1;
    }
    const auto limit = key->longestPlain(zentavo::rsa::Encryption::pkcs1);
    const auto right = key->verifyText("hello", "aGVsbG8=", zentavo::rsa::Signature::pssSHA256);
    std::printf("rsa: %zu bytes\n", limit);
    return limit == 117 && right.ok() && *right ? 0 : 1;
}
