#include "popup/ProcessTree.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include <unistd.h>

namespace bench {

namespace {

/// The first number behind `key` in a file of /proc; 0 where there is none.
std::int64_t number(const std::filesystem::path& file, const std::string& key) {
    std::ifstream in(file);
    for (std::string word; in >> word;) {
        std::int64_t value = 0;
        if (word == key && in >> value) {
            return value;
        }
    }
    return 0;
}

} // namespace

std::int64_t treeKilobytes() {
    std::map<std::int64_t, std::int64_t> parents;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (std::ranges::all_of(name, [](unsigned char c) { return std::isdigit(c) != 0; })) {
            parents[std::stoll(name)] = number(entry.path() / "status", "PPid:");
        }
    }
    std::int64_t sum = 0;
    for (const auto& [process, parent] : parents) {
        std::int64_t ancestor = process;
        while (ancestor > 1 && ancestor != getpid()) {
            const auto next = parents.find(ancestor);
            ancestor = next != parents.end() ? next->second : 0;
        }
        if (ancestor == getpid()) {
            sum += number("/proc/" + std::to_string(process) + "/smaps_rollup", "Pss:");
        }
    }
    return sum;
}

} // namespace bench
