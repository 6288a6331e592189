// Runs a fuzz target over files, and over all files in folders, without a fuzzer: so that what was once found stays
// found, with any compiler.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/Check.h"

namespace {

void replay(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    check(stream.good(), "every file of a corpus can be read");
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    // The last name printed is the one that broke.
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    // From a block of its exact size, so that the sanitizers see a read beyond it.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

} // namespace

int main(int argc, char** argv) {
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            replay(argv[i]);
            ++count;
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            if (entry.is_regular_file()) {
                replay(entry.path());
                ++count;
            }
        }
    }
    std::printf("%d files\n", count);
    return count > 0 ? 0 : 1;
}
