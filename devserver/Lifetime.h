#pragma once

#include <chrono>
#include <optional>

namespace zentavo::devserver {

/// Knows when the program is to end: at SIGINT or SIGTERM, after its time, or with its parent. To be made before the
/// program's other threads are, so that the signals come to it and to nobody else.
class Lifetime {
public:
    struct Bounds {
        std::optional<std::chrono::milliseconds> time;
        /// End with the parent process, or when standard input is a pipe or socket and the other side closes it.
        bool parent = false;
    };

    explicit Lifetime(Bounds bounds);
    ~Lifetime();
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

    void waitForEnd();

private:
    bool parentHasGone() const;

    const Bounds bounds_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    const int parentId_;
    int signals_ = -1;
};

} // namespace zentavo::devserver
