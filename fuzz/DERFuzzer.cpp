// The input once as DER and once as PEM text. A key that is found lies inside the input and is a key by itself; text that
// decodes comes back from what it decoded to. The keys of the corpus are made-up numbers in the right places.

#include <functional>
#include <string>

#include "fuzz/Check.h"
#include "zentavo/foundation/Base64.h"
#include "zentavo/rsa/KeyStructure.h"
#include "zentavo/rsa/PEM.h"

namespace rsa = zentavo::rsa;

namespace {

using Slice = std::span<const std::uint8_t>;
using Read = zentavo::Result<Slice> (*)(Slice);

bool isKey(Read read, Slice der) {
    const auto key = read(der);
    if (!key) {
        check(key.error().message.find("at byte ") != std::string::npos, "a failure has a place");
        return false;
    }
    const std::less_equal<const std::uint8_t*> notBehind;
    check(notBehind(der.data(), key->data()) && notBehind(key->data() + key->size(), der.data() + der.size()),
          "a key lies inside its bytes");
    check(key->size() >= 128, "a key is no shorter than its modulus");
    const auto again = read(*key);
    check(again && again->data() == key->data() && again->size() == key->size(), "a key without a header is that key");
    return true;
}

void checkDER(Slice der) {
    const bool isPrivate = isKey(rsa::privateKeyIn, der);
    const bool isPublic = isKey(rsa::publicKeyIn, der);
    check(!isPrivate || !isPublic, "a key is private or public");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    checkDER({data, size});
    const std::string_view text = textOf(data, size);
    const auto pem = rsa::PEM::read(text);
    if (!pem) {
        return 0;
    }
    check(size <= rsa::PEM::longest, "text is bounded");
    checkDER(pem->der.span());
    const std::string label = pem->kind == rsa::PEM::Kind::privateKey ? "PRIVATE KEY" : "PUBLIC KEY";
    const std::string written =
        "-----BEGIN " + label + "-----" + zentavo::base64::encode(pem->der.span()) + "-----END " + label + "-----";
    const auto again = rsa::PEM::read(written);
    check(written.size() > rsa::PEM::longest || (again && again->kind == pem->kind), "what was decoded can be written");
    return 0;
}
