#pragma once

#include <cstdint>

namespace bench {

/// How many blocks the calling thread has asked the heap for since it began (malloc, calloc, realloc, aligned ones, and
/// all that stands on them). A program counts when it is linked with Allocations.cpp, shared libraries included.
std::uint64_t allocationsOfThisThread() noexcept;

} // namespace bench
