// What OpenSSL is given of a private key is nowhere in the memory that is given back, by it or by us. A program of its
// own: OpenSSL takes other memory functions only before it has asked for any memory.

#include <algorithm>
#include <cstring>
#include <new>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <openssl/crypto.h>

#include "ports/linux/OpenSslKeyServices.h"
#include "tests/rsa/FreedMemory.h"
#include "tests/support/TestKeys.h"
#include "zentavo/rsa/PrivateKey.h"

namespace zentavo::rsa::tests {
namespace {

// All through this program's operators, which look into what is given back.
void* take(std::size_t size, const char*, int) { return size == 0 ? nullptr : ::operator new(size); }
void giveBack(void* block, const char*, int) { ::operator delete(block); }
void* resize(void* block, std::size_t size, const char* file, int line) {
    void* moved = take(size, file, line);
    if (block != nullptr && moved != nullptr) {
        std::memcpy(moved, block, std::min(size, malloc_usable_size(block)));
    }
    giveBack(block, file, line);
    return moved;
}

bool watchOpenSsl() {
    void* library = ::dlopen("libcrypto.so.3", RTLD_LAZY | RTLD_LOCAL);
    const auto set =
        library == nullptr
            ? nullptr
            : reinterpret_cast<decltype(&CRYPTO_set_mem_functions)>(::dlsym(library, "CRYPTO_set_mem_functions"));
    return set != nullptr && set(take, resize, giveBack) == 1;
}

TEST(OpenSslWipeTest, AKeyLeavesNothingBehind) {
    ASSERT_TRUE(watchOpenSsl());
    const linux_port::OpenSslKeyServices services{};
    // Opened once unwatched: what a library sets up when it is first used stays for ever.
    ASSERT_TRUE(PrivateKey::fromDER(zentavo::tests::testKey("1024.pkcs1.der"), services).ok());
    const Bytes der = zentavo::tests::testKey("2048.pkcs1.der");
    const Bytes message(100, 'm');
    // Behind the header, version, modulus and public exponent: a piece from the middle of the private exponent, and one
    // of the first prime, as they are written and the other way round.
    for (const std::size_t at :
         {std::size_t{4 + 3 + 4 + 257 + 5 + 4 + 100}, std::size_t{4 + 3 + 4 + 257 + 5 + 4 + 256 + 60}}) {
        Bytes secret(der.begin() + static_cast<std::ptrdiff_t>(at), der.begin() + static_cast<std::ptrdiff_t>(at + 20));
        for (int turn = 0; turn < 2; ++turn) {
            const FreedMemory memory(secret);
            {
                const auto key = PrivateKey::fromDER(der, services);
                ASSERT_TRUE(key.ok()) << key.error().message;
                EXPECT_TRUE(key->sign(message, Signature::pkcs1SHA256).ok());
            }
            Bytes longer(der.size() + 1); // found out at the very end
            std::ranges::copy(der, longer.begin());
            EXPECT_FALSE(services.privateKey(longer).ok());
            std::ranges::fill(longer, std::uint8_t{0}); // this one is ours
            EXPECT_GE(memory.blocks(), 20u) << "OpenSSL's memory is watched";
            EXPECT_EQ(memory.betrayals(), 0u) << at << " " << turn;
            std::ranges::reverse(secret);
        }
    }
}

} // namespace
} // namespace zentavo::rsa::tests
