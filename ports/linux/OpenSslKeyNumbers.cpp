#include "ports/linux/OpenSslKeyNumbers.h"

#include <algorithm>
#include <bit>

#include <openssl/core_names.h>
#include <openssl/params.h>

#include "zentavo/foundation/DERReader.h"

namespace zentavo::linux_port {
namespace {

constexpr std::array publicNames = {OSSL_PKEY_PARAM_RSA_N, OSSL_PKEY_PARAM_RSA_E};
constexpr std::array privateNames = {OSSL_PKEY_PARAM_RSA_D,         OSSL_PKEY_PARAM_RSA_FACTOR1,
                                     OSSL_PKEY_PARAM_RSA_FACTOR2,   OSSL_PKEY_PARAM_RSA_EXPONENT1,
                                     OSSL_PKEY_PARAM_RSA_EXPONENT2, OSSL_PKEY_PARAM_RSA_COEFFICIENT1};

} // namespace

OpenSslKeyNumbers::OpenSslKeyNumbers(const OpenSslLibrary& library, Slice der, bool isPrivate)
    : library_(library), digits_(der.size()) {
    DERReader reader(der);
    reader.enter(DERTag::sequence);
    if (isPrivate) {
        const Slice version = reader.readUnsigned();
        if (version.size() != 1 || version[0] != 0) {
            reader.fail("this is no private key of two primes");
        }
    }
    for (const char* name : publicNames) {
        add(name, reader.readUnsigned());
    }
    if (isPrivate) {
        for (const char* name : privateNames) {
            add(name, reader.readUnsigned());
        }
    }
    reader.leave();
    read_ = reader.finish();
    entries_[count_] = library_.OSSL_PARAM_construct_end();
}

OpenSslKeyNumbers::~OpenSslKeyNumbers() { library_.OPENSSL_cleanse(digits_.data(), digits_.size()); }

void OpenSslKeyNumbers::add(const char* name, Slice digits) {
    std::uint8_t* const place = digits_.data() + used_;
    if constexpr (std::endian::native == std::endian::little) { // which is how OpenSSL wants its numbers
        std::reverse_copy(digits.begin(), digits.end(), place);
    } else {
        std::copy(digits.begin(), digits.end(), place);
    }
    entries_[count_++] = library_.OSSL_PARAM_construct_BN(name, place, digits.size());
    used_ += digits.size();
}

} // namespace zentavo::linux_port
