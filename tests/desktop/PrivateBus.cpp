#include "tests/desktop/PrivateBus.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
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
    // The place that the program inherits; a pipe's own end may be there already, and would then be closed.
    const std::string file = "--config-file=" + configuration.string();
    const int inherited = fcntl(told[1], F_DUPFD_CLOEXEC, 100);
    const std::string print = "--print-address=99";
    std::array<const char*, 6> words{"dbus-daemon", file.c_str(), print.c_str(), "--nofork", "--nopidfile", nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, inherited, 99);
    const int failure =
        posix_spawnp(&daemon_, "dbus-daemon", &actions, nullptr, const_cast<char**>(words.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(told[1]);
    close(inherited);
    char next = 0;
    while (failure == 0 && read(told[0], &next, 1) == 1 && next != '\n') {
        address_ += next;
    }
    close(told[0]);
    if (failure != 0 || address_.empty()) {
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
