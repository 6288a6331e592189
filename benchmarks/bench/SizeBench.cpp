#include <spawn.h>
#include <sys/wait.h>

#include "bench/Benches.h"
#include "support/Failure.h"

extern char** environ;

namespace bench {

namespace {

constexpr double mostKilobytes = 600;

/// Kilobytes (1000) of a copy of `library` without its symbols.
double strippedSize(const std::filesystem::path& library, const std::filesystem::path& folder) {
    const std::filesystem::path copy = folder / library.filename();
    std::filesystem::copy_file(library, copy);
    std::string command = "strip";
    std::string file = copy.string();
    char* argv[] = {command.data(), file.data(), nullptr};
    pid_t child = -1;
    checkSystem(posix_spawnp(&child, "strip", nullptr, nullptr, argv, environ) == 0, "strip");
    int status = 0;
    waitpid(child, &status, 0);
    check(status == 0, "strip failed");
    return static_cast<double>(std::filesystem::file_size(copy)) / 1000;
}

} // namespace

void benchSize(const Options&, Report& report) {
    const TemporaryFolder folder;
    const double zentavo = strippedSize(ZENTAVO_BENCH_LIBRARY, folder.path());
    const double linux_port = strippedSize(ZENTAVO_BENCH_LINUX_LIBRARY, folder.path());
    const double core = strippedSize(ZENTAVO_BENCH_CORE_LIBRARY, folder.path());
    const double foundation = strippedSize(ZENTAVO_BENCH_FOUNDATION_LIBRARY, folder.path());
    report.add("libzentavo", "kB", zentavo, noFloor, valueAtMost(mostKilobytes));
    report.add("libzentavo-linux", "kB", linux_port);
    report.add("libzentavo-core", "kB", core);
    report.add("libzentavo-foundation", "kB", foundation);
    report.add("all four", "kB", zentavo + linux_port + core + foundation);
    report.flush("size: stripped shared libraries");
}

} // namespace bench
