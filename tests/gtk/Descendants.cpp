#include "tests/gtk/Descendants.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <map>

#include <unistd.h>
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
// Of the sanitizers' allocators; the reference compiler has it without its header.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace zentavo::tests {

std::vector<pid_t> descendants(const std::string& name) {
    struct Entry {
        std::string name;
        pid_t parent = 0;
        char state = 'Z';
    };
    std::map<pid_t, Entry> all;
    std::error_code error;
    for (const auto& folder : std::filesystem::directory_iterator("/proc", error)) {
        const std::string id = folder.path().filename();
        std::ifstream file(folder.path() / "stat");
        std::string line;
        if (id.find_first_not_of("0123456789") != std::string::npos || !std::getline(file, line)) {
            continue;
        }
        const auto begin = line.find('(');
        const auto end = line.rfind(')');
        Entry& entry = all[std::stoi(id)];
        entry.name = line.substr(begin + 1, end - begin - 1);
        entry.state = line.at(end + 2);
        entry.parent = std::stoi(line.substr(end + 4));
    }
    std::vector<pid_t> found;
    for (const auto& [id, entry] : all) {
        pid_t above = entry.parent;
        while (above > 1 && above != getpid() && all.contains(above)) {
            above = all[above].parent;
        }
        if (above == getpid() && entry.name == name && entry.state != 'Z') {
            found.push_back(id);
        }
    }
    return found;
}

std::size_t ownMemory() {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes(); // what was freed stays resident, to catch its later use
#else
    std::ifstream file("/proc/self/statm");
    std::size_t whole = 0;
    std::size_t resident = 0;
    std::size_t shared = 0;
    file >> whole >> resident >> shared;
    return (resident - shared) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
#endif
}

} // namespace zentavo::tests
