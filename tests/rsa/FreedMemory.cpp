#include "tests/rsa/FreedMemory.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <malloc.h>

namespace {

std::span<const std::uint8_t> wanted;
std::size_t blockCount = 0;
std::size_t betrayalCount = 0;

void giveBack(void* block) noexcept {
    if (block != nullptr && !wanted.empty()) {
        ++blockCount;
        if (memmem(block, malloc_usable_size(block), wanted.data(), wanted.size()) != nullptr) {
            ++betrayalCount;
        }
    }
    std::free(block);
}

} // namespace

// The program's own, so that each block can be looked into.
void* operator new(std::size_t size) {
    void* block =
        std::calloc(1, size == 0 ? 1 : size); // zeroed: what an earlier owner left would be no betrayal of ours
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
void operator delete(void* block) noexcept { giveBack(block); }
void operator delete(void* block, std::size_t) noexcept { giveBack(block); }

namespace zentavo::rsa::tests {

FreedMemory::FreedMemory(std::span<const std::uint8_t> secret) {
    blockCount = 0;
    betrayalCount = 0;
    wanted = secret;
}

FreedMemory::~FreedMemory() { wanted = {}; }

std::size_t FreedMemory::blocks() const { return blockCount; }

std::size_t FreedMemory::betrayals() const { return betrayalCount; }

} // namespace zentavo::rsa::tests
