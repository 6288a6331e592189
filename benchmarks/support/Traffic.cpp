#include "support/Traffic.h"

#include <new>

#include <sys/mman.h>
#include <unistd.h>

#include "support/Failure.h"
#include "support/SteadyTime.h"

namespace bench {

bool waitForRequests(const Traffic& traffic, std::uint64_t count, std::chrono::milliseconds limit,
                     std::chrono::microseconds step) {
    const std::int64_t end = steadyNanoseconds() + std::chrono::nanoseconds(limit).count();
    while (traffic.requests.load(std::memory_order_acquire) < count) {
        if (steadyNanoseconds() > end) {
            return false;
        }
        sleepFor(step);
    }
    return true;
}

SharedTraffic::SharedTraffic() : descriptor_(memfd_create("zentavo-bench-traffic", 0)) {
    checkSystem(descriptor_ >= 0 && ftruncate(descriptor_, sizeof(Traffic)) == 0,
                "memory for the collector's counters");
    map();
    new (traffic_) Traffic;
}

SharedTraffic::SharedTraffic(int descriptor) : descriptor_(descriptor) { map(); }

SharedTraffic::~SharedTraffic() {
    munmap(traffic_, sizeof(Traffic));
    close(descriptor_);
}

void SharedTraffic::map() {
    void* memory = mmap(nullptr, sizeof(Traffic), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0);
    checkSystem(memory != MAP_FAILED, "mapping the collector's counters");
    traffic_ = static_cast<Traffic*>(memory);
}

} // namespace bench
