#include "zentavo/rsa/KeyStructure.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>

#include "zentavo/foundation/DERReader.h"

namespace zentavo::rsa {
namespace {

using Slice = std::span<const std::uint8_t>;

constexpr std::size_t fewestBits = 1024;
constexpr std::size_t mostBits = 16384;
/// Standards allow no larger public exponent than 256 bits; a larger one only makes us slow.
constexpr std::size_t mostExponentBytes = 32;
/// 1.2.840.113549.1.1.1, rsaEncryption.
constexpr std::array<std::uint8_t, 9> rsaEncryption = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01};

bool isOdd(Slice number) { return !number.empty() && number.back() % 2 == 1; }

std::size_t bitsOf(Slice number) {
    return number.empty() ? 0 : (number.size() - 1) * 8 + static_cast<std::size_t>(std::bit_width(number.front()));
}

/// -1 for a number that is no small one.
int smallNumber(DERReader& reader) {
    const Slice digits = reader.readUnsigned();
    return digits.size() == 1 ? digits[0] : -1;
}

/// Modulus and public exponent; returns the length of the modulus in bytes.
std::size_t walkPublicNumbers(DERReader& reader) {
    const Slice modulus = reader.readUnsigned();
    if (bitsOf(modulus) < fewestBits || bitsOf(modulus) > mostBits) {
        reader.fail("the key has fewer than 1024 or more than 16384 bits");
    }
    if (!isOdd(modulus)) {
        reader.fail("the modulus is even");
    }
    const Slice exponent = reader.readUnsigned();
    if (!isOdd(exponent) || bitsOf(exponent) < 2 || exponent.size() > mostExponentBytes) {
        reader.fail("the public exponent is even, 1, or too large");
    }
    return modulus.size();
}

void walkPrivateNumbers(DERReader& reader) {
    const std::size_t modulusSize = walkPublicNumbers(reader);
    for (int i = 0; i < 6; ++i) { // private exponent, two primes, two exponents, coefficient
        const Slice number = reader.readUnsigned();
        if (number.size() > modulusSize || bitsOf(number) == 0) {
            reader.fail("a private number is zero or larger than the modulus");
        }
    }
}

void walkAlgorithm(DERReader& reader) {
    reader.enter(DERTag::sequence);
    if (!std::ranges::equal(reader.read(DERTag::objectIdentifier), rsaEncryption)) {
        reader.fail("the key is not for RSA");
    }
    if (!reader.read(DERTag::null).empty()) {
        reader.fail("a null is not empty");
    }
    reader.leave();
}

/// A version that is not 0 stands for more than two primes.
void walkTwoPrimes(DERReader& reader, int version) {
    if (version != 0) {
        reader.fail("keys of this version are not supported");
    }
    walkPrivateNumbers(reader);
}

Slice walkPrivateKeyInfo(DERReader& reader, int version) {
    if (version != 0 && version != 1) {
        reader.fail("keys of this version are not supported");
    }
    walkAlgorithm(reader);
    const Slice key = reader.enter(DERTag::octetString);
    reader.enter(DERTag::sequence);
    walkTwoPrimes(reader, smallNumber(reader));
    reader.leave();
    reader.leave();
    if (reader.nextIs(DERTag::numbered0Constructed)) { // attributes
        reader.read(DERTag::numbered0Constructed);
    }
    if (version == 1 && reader.nextIs(DERTag::numbered1)) { // the public key once more
        reader.read(DERTag::numbered1);
    }
    return key;
}

Slice walkSubjectPublicKeyInfo(DERReader& reader) {
    walkAlgorithm(reader);
    const Slice key = reader.enterBitString();
    reader.enter(DERTag::sequence);
    walkPublicNumbers(reader);
    reader.leave();
    reader.leave();
    return key;
}

Result<Slice> keyOr(Result<void> walked, Slice key, const char* what) {
    if (!walked) {
        return Error{std::string("this is no ") + what + ": " + walked.error().message};
    }
    return key;
}

} // namespace

Result<Slice> privateKeyIn(Slice der) {
    DERReader reader(der);
    reader.enter(DERTag::sequence);
    const int version = smallNumber(reader);
    Slice key = der;
    if (reader.nextIs(DERTag::sequence)) {
        key = walkPrivateKeyInfo(reader, version);
    } else {
        walkTwoPrimes(reader, version);
    }
    reader.leave();
    return keyOr(reader.finish(), key, "RSA private key");
}

Result<Slice> publicKeyIn(Slice der) {
    DERReader reader(der);
    reader.enter(DERTag::sequence);
    Slice key = der;
    if (reader.nextIs(DERTag::sequence)) {
        key = walkSubjectPublicKeyInfo(reader);
    } else {
        walkPublicNumbers(reader);
    }
    reader.leave();
    return keyOr(reader.finish(), key, "RSA public key");
}

} // namespace zentavo::rsa
