#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

namespace zentavo::e2e {

/// A program that a test runs. It never outlives this object.
class Process {
public:
    /// Starts `arguments[0]`; its standard output and error can be read here. `environment` is added to the test's own.
    explicit Process(std::vector<std::string> arguments, std::vector<std::string> environment = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The next line of output, without its end; "" when there is none within `limit`.
    std::string readLine(std::chrono::milliseconds limit);
    /// Waits for the end. The exit status, minus the number of the signal that ended it, or `stillRunning`.
    int wait(std::chrono::milliseconds limit = std::chrono::seconds(20));
    void kill(int signal) const;
    /// All output so far.
    const std::string& output() const noexcept { return output_; }

    static constexpr int stillRunning = 1000;

private:
    bool readMore(std::chrono::milliseconds limit);

    pid_t pid_ = -1;
    int pipe_ = -1;
    int status_ = stillRunning;
    std::string output_;
    std::size_t lineStart_ = 0;
};

} // namespace zentavo::e2e
