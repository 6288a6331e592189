#include "support/Allocations.h"

#include <cerrno>
#include <cstddef>

namespace {
thread_local std::uint64_t count = 0;
}

namespace bench {
std::uint64_t allocationsOfThisThread() noexcept { return count; }
} // namespace bench

// The program's own definitions come before the C library's for everything that is loaded; the C library keeps its
// heap reachable under these second names.
extern "C" {
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t number, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);
void __libc_free(void* block);

void* malloc(std::size_t bytes) {
    ++count;
    return __libc_malloc(bytes);
}
void* calloc(std::size_t number, std::size_t bytes) {
    ++count;
    return __libc_calloc(number, bytes);
}
void* realloc(void* block, std::size_t bytes) {
    ++count;
    return __libc_realloc(block, bytes);
}
void* memalign(std::size_t alignment, std::size_t bytes) {
    ++count;
    return __libc_memalign(alignment, bytes);
}
void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
    ++count;
    return __libc_memalign(alignment, bytes);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) {
    ++count;
    *block = __libc_memalign(alignment, bytes);
    return *block != nullptr ? 0 : ENOMEM;
}
void free(void* block) { __libc_free(block); }
}
