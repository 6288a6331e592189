// A stranger who wants this system's queue, clock and chance, and nothing of the SDK.
#include <array>
#include <cstdio>
#include <future>

#include <ports/linux/LinuxServices.h>
#include <ports/linux/OpenSslKeyServices.h>

int main() {
    const auto system = zentavo::linux_port::makeLinuxServices();
    std::array<std::uint8_t, 16> bytes{};
    system.random->fill(bytes);
    const auto begun = system.clock->steady();
    std::promise<bool> came;
    system.worker->after(std::chrono::milliseconds(1), [&] {
        came.set_value(system.clock->steady() > begun && bytes != std::array<std::uint8_t, 16>{});
    });
    const bool right = came.get_future().get() && !zentavo::linux_port::OpenSslKeyServices().publicKey(bytes).ok();
    std::printf("linux: %s\n", right ? "the worker's turn came" : "no time or no chance");
    return right ? 0 : 1;
}
