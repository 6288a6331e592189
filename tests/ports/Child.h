#pragma once

#include <csignal>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace zentavo::tests {

/// Another program, whose standard output is read through a pipe. Killed when the object goes.
class Child {
public:
    explicit Child(std::vector<std::string> arguments) {
        int ends[2] = {-1, -1};
        if (::pipe(ends) != 0) {
            return;
        }
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        id_ = ::fork();
        if (id_ == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            ::close(ends[0]);
            ::close(ends[1]);
            ::execv(pointers[0], pointers.data());
            ::_exit(127);
        }
        ::close(ends[1]);
        output_ = ends[0];
    }
    ~Child() {
        kill();
        ::close(output_);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// False at the end of the output.
    bool read(int& number) { return ::read(output_, &number, sizeof number) == sizeof number; }

    void kill() {
        if (id_ > 0) {
            ::kill(id_, SIGKILL);
            wait();
        }
    }
    /// The exit code; -1 when a signal ended it.
    int wait() {
        int status = 0;
        if (id_ <= 0 || ::waitpid(id_, &status, 0) != id_) {
            return -1;
        }
        id_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t id_ = -1;
    int output_ = -1;
};

} // namespace zentavo::tests
