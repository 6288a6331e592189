#include "tests/desktop/OtherProgram.h"

#include <sstream>

#include <gio/gio.h>
#include <gtest/gtest.h>

namespace zentavo::tests {

std::vector<std::string> runOtherProgram(const std::string& address, const TextMethod& method,
                                         const std::vector<std::string>& steps) {
    std::vector<const char*> words{ZENTAVO_OTHER_PROGRAM, address.c_str(),          method.name.c_str(),
                                   method.path.c_str(),   method.interface.c_str(), method.method.c_str()};
    for (const std::string& step : steps) {
        words.push_back(step.c_str());
    }
    words.push_back(nullptr);
    char* printed = nullptr;
    int status = -1;
    EXPECT_TRUE(g_spawn_sync(nullptr, const_cast<char**>(words.data()), nullptr, G_SPAWN_DEFAULT, nullptr, nullptr,
                             &printed, nullptr, &status, nullptr));
    EXPECT_EQ(status, 0);
    std::istringstream stream(printed != nullptr ? printed : "");
    g_free(printed);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace zentavo::tests
