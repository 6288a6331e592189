#include "tests/desktop/PrivateBus.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zentavo::tests {

namespace fs = std::filesystem;

PrivateBus::PrivateBus(const std::vector<Startable>& programs) {
    std::string pattern = (fs::temp_directory_path() / "zentavo-bus-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no folder for a message bus: " + pattern);
    }
    folder_ = pattern;
    fs::create_directory(folder_ / "services");
    for (const Startable& program : programs) {
        std::ofstream(folder_ / "services" / (program.name + ".service"))
            << "[D-BUS Service]\nName=" << program.name << "\nExec=" << program.command << '\n';
    }
    const fs::path configuration = folder_ / "bus.conf";
    std::ofstream(configuration) << "<busconfig><type>session</type><listen>unix:path=" << (folder_ / "bus").string()
                                 << "</listen><auth>EXTERNAL</auth><servicedir>" << (folder_ / "services").string()
                                 << R"(</servicedir><policy context="default"><allow send_destination="*"/>)"
                                 << R"(<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>)";

    std::array<int, 2> told{};
    if (pipe2(told.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for a message bus");
    }
    const std::string file = "--config-file=" + configuration.string();
    const std::string print = "--print-address=" + std::to_string(STDOUT_FILENO);
    const std::array<const char*, 6> words{"dbus-daemon", file.c_str(),  print.c_str(),
                                           "--nofork",    "--nopidfile", nullptr};
    const pid_t test = getpid();
    daemon_ = fork();
    if (daemon_ == 0) {
        // A test that is killed takes its bus along.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == test) {
            dup2(told[1], STDOUT_FILENO);
            execvp(words[0], const_cast<char**>(words.data()));
        }
        _exit(1);
    }
    close(told[1]);
    char next = 0;
    while (read(told[0], &next, 1) == 1 && next != '\n') {
        address_ += next;
    }
    close(told[0]);
    if (address_.empty()) {
        waitpid(daemon_, nullptr, 0);
        throw std::runtime_error("dbus-daemon does not start: is the package dbus installed?");
    }
}

PrivateBus::~PrivateBus() {
    if (daemon_ > 0) {
        kill(daemon_, SIGTERM);
        waitpid(daemon_, nullptr, 0);
    }
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

} // namespace zentavo::tests
