// A process of its own for SqlitePreferencesTest: writes to a suite as its arguments say.
//
//   preferences_worker hammer FOLDER NAME ROUNDS   keys of its own, a counter and a pair that others write too; exits
//                                                  with 3 when the store was out of reach for a while
//   preferences_worker count FOLDER                1, 2, 3 …, each number printed once it is stored, until killed

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include <unistd.h>

#include "ports/linux/SqlitePreferencesProvider.h"

namespace {

using namespace zentavo;

class ErrorLog final : public platform::SystemLog {
public:
    void write(platform::LogLevel, std::string_view message) override {
        hasLines = true;
        std::cerr << message << "\n";
    }

    bool hasLines = false;
};

int hammer(platform::Preferences& suite, const std::string& name, int rounds) {
    for (int i = 1; i <= rounds; ++i) {
        const std::string key = name + std::to_string(i % 20);
        suite.set(key, i);
        suite.update("counter", [](const std::optional<Value>& old) {
            return Value(old ? old->exactInt64().value_or(0) + 1 : 1);
        });
        suite.set("pair", List{std::string(static_cast<std::size_t>(i % 3000), 'x'), i % 3000});
        const auto pair = suite.object("pair");
        const List* both = pair ? pair->asList() : nullptr;
        if (suite.number(key) != i || both == nullptr ||
            static_cast<std::int64_t>((*both)[0].asString()->size()) != (*both)[1].exactInt64()) {
            return 2;
        }
    }
    suite.synchronise();
    return 0;
}

int count(platform::Preferences& suite) {
    for (int i = static_cast<int>(suite.number("n")) + 1;; ++i) {
        suite.set("n", i);
        if (::write(STDOUT_FILENO, &i, sizeof i) != sizeof i) {
            return 1;
        }
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 3) {
        return 64;
    }
    const auto log = std::make_shared<ErrorLog>();
    linux_port::SqlitePreferencesProvider provider(arguments[2], "standard", "", log, nullptr);
    const auto suite = provider.suite("shared");
    if (!suite) {
        return 1;
    }
    return arguments[1] == std::string("count") ? count(*suite) : hammer(*suite, arguments[3], std::atoi(arguments[4]));
}
