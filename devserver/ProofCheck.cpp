#include "devserver/ProofCheck.h"

#include <array>
#include <charconv>
#include <memory>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include "devserver/BodyChecks.h"
#include "devserver/Text.h"
#include "zentavo/foundation/Base64.h"

namespace zentavo::devserver {

namespace {

constexpr std::array<QueryRule, 3> queryRules{{{"ts"}, {"sn"}, {"ri"}}};

using Key = std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY*)>;
using Bytes = std::vector<std::uint8_t>;

Key buildKey() {
    const std::string_view text = signingPublicKeyPEM();
    const std::unique_ptr<BIO, int (*)(BIO*)> file(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())),
                                                   BIO_free);
    return {text.empty() ? nullptr : PEM_read_bio_PUBKEY(file.get(), nullptr, nullptr, nullptr), EVP_PKEY_free};
}

bool verifies(EVP_PKEY* key, const Bytes& signature, std::string_view text) {
    const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    const bool verified = EVP_DigestVerifyInit(context.get(), nullptr, EVP_sha256(), nullptr, key) == 1 &&
                          EVP_DigestVerify(context.get(), signature.data(), signature.size(),
                                           reinterpret_cast<const unsigned char*>(text.data()), text.size()) == 1;
    ERR_clear_error();
    return verified;
}

/// As JSON writers do that put a backslash before each slash.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        result += c == '/' ? std::string("\\/") : std::string(1, c);
    }
    return result;
}

/// What the signature covers instead of what it should; empty where no usual mistake explains it.
std::string mistake(EVP_PKEY* key, const Bytes& signature, const std::string& body, const std::string& ts,
                    const std::string& ri) {
    const std::array<std::pair<std::string, const char*>, 5> guesses{{
        {body, "it covers the body alone, without ts and ri"},
        {body + ri + ts, "it has ri before ts"},
        {body + ts, "it covers the body and ts, without ri"},
        {ts + ri, "it covers ts and ri, without the body"},
        {escaped(body) + ts + ri, "it covers a text with a backslash before each slash"},
    }};
    for (const auto& [text, words] : guesses) {
        if (verifies(key, signature, text)) {
            return words;
        }
    }
    return {};
}

bool isUUID(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? c != '-' : !((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'))) {
            return false;
        }
    }
    return text.size() == 36;
}

void checkTime(const std::string& ts, std::int64_t now, Problems& problems) {
    std::int64_t sent = 0;
    const char* const end = ts.data() + ts.size();
    const auto [stop, error] = std::from_chars(ts.data(), end, sent);
    // Far enough from the ends for the difference to be one.
    constexpr std::int64_t most = std::int64_t{1} << 60;
    if (error != std::errc() || stop != end || sent > most || sent < -most) {
        problems.add("ts is " + inQuotes(ts) + "; expected milliseconds since 1970");
        return;
    }
    const std::int64_t off = sent - now;
    if (off > ProofCheck::clockTolerance || off < -ProofCheck::clockTolerance) {
        problems.add("ts is " + std::to_string(off / 1000) + " s from the server's time; at most " +
                     std::to_string(ProofCheck::clockTolerance / 1000) + " s are accepted" +
                     (sent > 0 && sent < now / 100 ? " (are these seconds? milliseconds are expected)" : ""));
    }
}

void checkSignature(const std::string& sn, const std::string& body, const std::string& ts, const std::string& ri,
                    Problems& problems) {
    const Key key = buildKey();
    if (!key) {
        problems.add("sn cannot be checked: this server was built without a signing key");
        return;
    }
    const auto signature = base64::decode(sn);
    if (!signature) {
        problems.add("sn is no base64 text" +
                     std::string(sn.find(' ') != std::string::npos ? " (a + in a query has to be sent as %2B)" : ""));
        return;
    }
    const auto size = static_cast<std::size_t>(EVP_PKEY_get_size(key.get()));
    if (signature->size() != size) {
        problems.add("sn has " + std::to_string(signature->size()) + " bytes; a signature by this build's key has " +
                     std::to_string(size));
        return;
    }
    if (!verifies(key.get(), *signature, body + ts + ri)) {
        const std::string why = mistake(key.get(), *signature, body, ts, ri);
        problems.add("sn is no signature of body, ts and ri: " +
                     (why.empty() ? "it was made with another key, over another text or in another way than RSA "
                                    "PKCS#1 v1.5 with SHA-256"
                                  : why));
    }
}

} // namespace

void ProofCheck::check(const std::vector<QueryItem>& query, const std::string& body, std::int64_t now,
                       Problems& problems) {
    checkQuery(query, queryRules, problems);
    const std::string* ts = queryValue(query, "ts");
    const std::string* sn = queryValue(query, "sn");
    const std::string* ri = queryValue(query, "ri");
    if (ts != nullptr) {
        checkTime(*ts, now, problems);
    }
    if (ri != nullptr && !isUUID(*ri)) {
        problems.add("ri is " + inQuotes(*ri) + "; expected a UUID in upper case");
    }
    if (ts != nullptr && sn != nullptr && ri != nullptr) {
        checkSignature(*sn, body, *ts, *ri, problems);
    }
    if (!problems.empty()) {
        return;
    }
    MutexLock lock(mutex_);
    const auto [earlier, isNew] = seen_.emplace(*ri, *sn);
    if (isNew) {
        order_.push_back(*ri);
    } else if (earlier->second != *sn) {
        problems.add("ri is " + inQuotes(*ri) + ", which another request has had");
    }
    if (order_.size() > mostRemembered) {
        seen_.erase(order_.front());
        order_.pop_front();
    }
}

} // namespace zentavo::devserver
