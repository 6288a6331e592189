#include "bench/Program.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Failure.h"
#include "support/SteadyTime.h"

extern char** environ;

namespace bench {

namespace {

/// The environment of this process with the user's folders below `data`.
std::vector<std::string> environmentIn(const std::filesystem::path& data) {
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        environment.emplace_back(*entry);
    }
    for (const char* name : {"HOME=", "XDG_DATA_HOME=", "XDG_STATE_HOME=", "XDG_CONFIG_HOME="}) {
        std::erase_if(environment, [&](const std::string& entry) { return entry.starts_with(name); });
        environment.push_back(name + data.string());
    }
    return environment;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> buffer;
    for (ssize_t bytes = 0; (bytes = read(descriptor, buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(bytes));
    }
    return text;
}

void parse(const std::string& text, Results& results) {
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin);
        const std::string line = text.substr(begin, end - begin);
        if (const std::size_t blank = line.find(' '); blank != std::string::npos) {
            results.set(line.substr(0, blank), std::strtod(line.c_str() + blank + 1, nullptr));
        }
        begin = end == std::string::npos ? text.size() : end + 1;
    }
}

} // namespace

double Results::at(const std::string& name) const {
    const auto found = values_.find(name);
    check(found != values_.end(), "a measured program did not tell " + name);
    return found->second;
}

Results Program::run(const std::vector<std::string>& arguments, const std::filesystem::path& data) const {
    std::vector<std::string> command{path_.string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment = environmentIn(data);
    const std::vector<char*> argv = pointers(command);
    const std::vector<char*> envp = pointers(environment);

    std::array<int, 2> pipe{};
    checkSystem(pipe2(pipe.data(), O_CLOEXEC) == 0, "a pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);

    Results results;
    pid_t child = -1;
    const std::int64_t begin = steadyNanoseconds();
    checkSystem(posix_spawn(&child, path_.c_str(), &actions, nullptr, argv.data(), envp.data()) == 0, path_.c_str());
    posix_spawn_file_actions_destroy(&actions);
    close(pipe[1]);
    const std::string told = readAll(pipe[0]);
    close(pipe[0]);
    int status = 0;
    waitpid(child, &status, 0);
    results.set("exec_at", static_cast<double>(begin));
    results.set("ended_at", static_cast<double>(steadyNanoseconds()));
    const std::string name = path_.filename().string() + " " + (arguments.empty() ? "" : arguments.front());
    check(!WIFSIGNALED(status), name + " was ended by signal " + std::to_string(WTERMSIG(status)));
    check(status == 0, name + " failed");
    parse(told, results);
    return results;
}

std::filesystem::path Program::folder() { return std::filesystem::read_symlink("/proc/self/exe").parent_path(); }

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (Program::folder() / "store-XXXXXX").string();
    checkSystem(mkdtemp(pattern.data()) != nullptr, "a folder for stores");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace bench
