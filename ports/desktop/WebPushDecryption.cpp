#include "ports/desktop/WebPushDecryption.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <span>

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/hmac.h>
#include <openssl/obj_mac.h>

#include "ports/desktop/OpenSsl.h"

namespace zentavo::desktop::web_push {

namespace {

using Bytes = std::span<const std::uint8_t>;

/// The smallest record that there may be: a byte that ends the text, another one, and the tag.
constexpr std::uint32_t minimumRecordSize = tagBytes + 2;
/// Ends the text of the last record; of any other it would be 1.
constexpr char lastRecord = 2;

Bytes bytesOf(std::string_view text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

/// A string's own bytes and the 0 at its end, which is part of each label.
template <std::size_t size>
Bytes label(const char (&text)[size]) {
    return bytesOf({text, size});
}

/// 32 bytes that are overwritten when they go.
struct Secret {
    std::array<std::uint8_t, 32> bytes{};
    Secret() = default;
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret() { OPENSSL_cleanse(bytes.data(), bytes.size()); }
};

/// What a failed call of OpenSSL's leaves in this thread's queue is taken away again; what others left there stays.
class QuietErrors {
public:
    QuietErrors() { ERR_set_mark(); }
    ~QuietErrors() { ERR_pop_to_mark(); }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;
};

/// The one step that all derivations here consist of: none needs more than one block.
bool mac(Bytes key, std::initializer_list<Bytes> parts, Secret& result) {
    std::array<std::uint8_t, 2 * WebPushKeys::publicBytes + 32> text; // the longest is the label with two keys
    std::size_t size = 0;
    for (const Bytes part : parts) {
        std::memcpy(text.data() + size, part.data(), part.size());
        size += part.size();
    }
    const bool done = HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), text.data(), size,
                           result.bytes.data(), nullptr) != nullptr;
    OPENSSL_cleanse(text.data(), size);
    return done;
}

/// The x coordinate that both sides come to. False where `sender` is no point of the curve.
bool agree(const WebPushKeys& keys, Bytes sender, Secret& shared) {
    const Curve curve(EC_GROUP_new_by_curve_name(NID_X9_62_prime256v1));
    const CurvePoint point(EC_POINT_new(curve.get()));
    const CurvePoint product(EC_POINT_new(curve.get()));
    const BigNumber x(BN_new());
    const BigNumber factor(BN_bin2bn(keys.privateKey().data(), WebPushKeys::privateBytes, nullptr));
    BN_set_flags(factor.get(), BN_FLG_CONSTTIME);
    // Reading a point checks that it lies on the curve, which has no others of a smaller order.
    return sender.front() == POINT_CONVERSION_UNCOMPRESSED &&
           EC_POINT_oct2point(curve.get(), point.get(), sender.data(), sender.size(), nullptr) == 1 &&
           EC_POINT_mul(curve.get(), product.get(), nullptr, point.get(), factor.get(), nullptr) == 1 &&
           EC_POINT_get_affine_coordinates(curve.get(), product.get(), x.get(), nullptr, nullptr) == 1 &&
           BN_bn2binpad(x.get(), shared.bytes.data(), static_cast<int>(shared.bytes.size())) ==
               static_cast<int>(shared.bytes.size());
}

/// Takes the record's tag away and decrypts the rest. False where the tag does not prove it.
bool open(const Secret& key, const Secret& nonce, Bytes record, std::string& text) {
    const CipherContext context(EVP_CIPHER_CTX_new());
    const Bytes sealed = record.first(record.size() - tagBytes);
    const Bytes tag = record.last(tagBytes);
    std::array<std::uint8_t, tagBytes> tagCopy; // OpenSSL asks for one that it might write to
    std::memcpy(tagCopy.data(), tag.data(), tagBytes);
    text.resize(sealed.size());
    auto* out = reinterpret_cast<std::uint8_t*>(text.data());
    int written = 0;
    int rest = 0;
    return EVP_DecryptInit_ex2(context.get(), EVP_aes_128_gcm(), key.bytes.data(), nonce.bytes.data(), nullptr) == 1 &&
           EVP_DecryptUpdate(context.get(), out, &written, sealed.data(), static_cast<int>(sealed.size())) == 1 &&
           EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG, tagBytes, tagCopy.data()) == 1 &&
           EVP_DecryptFinal_ex(context.get(), out + written, &rest) == 1;
}

} // namespace

Result<std::string> decrypt(const WebPushKeys& keys, std::string_view message) {
    if (message.size() > maximumBytes) {
        return Error{"the message is too long: " + std::to_string(message.size()) + " bytes"};
    }
    if (message.size() < headBytes) {
        return Error{"the message is cut off in its head"};
    }
    const Bytes all = bytesOf(message);
    const Bytes salt = all.first(saltBytes);
    std::uint32_t recordSize = 0;
    for (const std::uint8_t byte : all.subspan(saltBytes, 4)) {
        recordSize = recordSize << 8U | byte;
    }
    const std::size_t keyBytes = all[saltBytes + 4];
    const Bytes record = all.subspan(headBytes);
    if (recordSize < minimumRecordSize) {
        return Error{"the record size is too small: " + std::to_string(recordSize)};
    }
    if (keyBytes != WebPushKeys::publicBytes) {
        return Error{"the sender's key has " + std::to_string(keyBytes) + " bytes, and not " +
                     std::to_string(WebPushKeys::publicBytes)};
    }
    if (record.size() <= tagBytes) {
        return Error{"the message is cut off in its record"};
    }
    if (record.size() > recordSize) {
        return Error{"the message has more than one record"};
    }

    prepareOpenSsl();
    const QuietErrors quiet;
    const Bytes sender = all.subspan(headBytes - WebPushKeys::publicBytes, WebPushKeys::publicBytes);
    static constexpr std::uint8_t firstBlock[] = {1};
    Secret shared;
    if (!agree(keys, sender, shared)) {
        return Error{"the sender's key is no point of the curve"};
    }
    Secret proven;
    Secret input;
    Secret salted;
    Secret key;
    Secret nonce;
    std::string text;
    const bool derived = mac(keys.auth(), {shared.bytes}, proven) &&
                         mac(proven.bytes, {label("WebPush: info"), keys.publicKey(), sender, firstBlock}, input) &&
                         mac(salt, {input.bytes}, salted) &&
                         mac(salted.bytes, {label("Content-Encoding: aes128gcm"), firstBlock}, key) &&
                         mac(salted.bytes, {label("Content-Encoding: nonce"), firstBlock}, nonce);
    if (!derived || !open(key, nonce, record, text)) {
        return Error{"the message was not encrypted for this registration, or has been changed"};
    }
    const std::size_t end = text.find_last_not_of('\0');
    if (end == std::string::npos || text[end] != lastRecord) {
        return Error{"the text of the message has no proper end"};
    }
    text.resize(end);
    return text;
}

} // namespace zentavo::desktop::web_push
