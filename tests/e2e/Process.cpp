#include "tests/e2e/Process.h"

#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zentavo::e2e {

using Clock = std::chrono::steady_clock;

Process::Process(std::vector<std::string> arguments, std::vector<std::string> environment) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    std::vector<char*> envp;
    for (char** each = environ; *each != nullptr; ++each) {
        envp.push_back(*each);
    }
    for (std::string& entry : environment) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    close(ends[1]);
    pipe_ = ends[0];
}

Process::~Process() {
    if (status_ == stillRunning) {
        kill(SIGKILL);
        wait();
    }
    close(pipe_);
}

bool Process::readMore(std::chrono::milliseconds limit) {
    pollfd poller{pipe_, POLLIN, 0};
    if (poll(&poller, 1, static_cast<int>(std::max<long>(0, limit.count()))) <= 0) {
        return false;
    }
    char buffer[4096];
    const ssize_t count = read(pipe_, buffer, sizeof buffer);
    if (count <= 0) {
        return false;
    }
    output_.append(buffer, static_cast<std::size_t>(count));
    return true;
}

std::string Process::readLine(std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    for (;;) {
        const std::size_t newline = output_.find('\n', lineStart_);
        if (newline != std::string::npos) {
            std::string line = output_.substr(lineStart_, newline - lineStart_);
            lineStart_ = newline + 1;
            return line;
        }
        if (!readMore(std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()))) {
            return "";
        }
    }
}

int Process::wait(std::chrono::milliseconds limit) {
    // Output is drained until the program closes it, which it does by ending.
    const auto end = Clock::now() + limit;
    while (readMore(std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()))) {
    }
    while (status_ == stillRunning && Clock::now() < end) {
        int status = 0;
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            status_ = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
        } else {
            usleep(1000);
        }
    }
    return status_;
}

void Process::kill(int signal) const { ::kill(pid_, signal); }

} // namespace zentavo::e2e
