// A stranger who tests his integration against the memory platform, with no port linked: the program answers for the
// default platform itself, as a porter's would.
#include <cstdio>
#include <memory>

#include <ports/memory/MemoryPlatform.h>
#include <zentavo/Zentavo.h>

namespace {
zentavo::testing::MemoryPlatform& machine() {
    static zentavo::testing::MemoryPlatform memory;
    return memory;
}
} // namespace

std::shared_ptr<zentavo::platform::Platform> zentavo::platform::makeDefault() { return machine().platform(); }

int main() {
    const auto sdk = zentavo::Zentavo::shared();
    sdk->activate(zentavo::Configuration{"33167", "555", "group.shop", "42"});
    sdk->trackScreen("Home", "Home page", "main");
    machine().queues->runUntilIdle();
    const auto sent = machine().session->count();
    std::printf("testing %s: %zu requests\n", zentavo::Zentavo::SDK_VERSION.data(), sent);
    return sent >= 2 ? 0 : 1; // the install event and the screen view
}
