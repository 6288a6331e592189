// A process of its own for SqlitePreferencesTest: writes to a suite as its arguments say.
//
//   preferences_worker hammer FOLDER NAME ROUNDS   keys of its own, a counter and a pair that others write too
//   preferences_worker count FOLDER                1, 2, 3 …, each number printed once it is stored, until killed
//   preferences_worker watch FOLDER                as a user without rights: prints "key" before and after changing it,
//                                                  then "foreign" once somebody has stored it, and goes on trying to
//                                                  store its changes until killed

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include <unistd.h>

#include "ports/linux/SqlitePreferencesProvider.h"

namespace {

using namespace zentavo;

class ErrorLog final : public platform::SystemLog {
public:
    void write(platform::LogLevel, std::string_view message) override { std::cerr << message << "\n"; }
};

int hammer(platform::Preferences& suite, platform::Preferences& witness, const std::string& name, int rounds) {
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
    // What a busy store has kept waiting goes into it in one piece, this last value included.
    suite.set(name + " done", 1);
    for (int i = 0; i < 10'000 && !witness.object(name + " done"); ++i) {
        suite.synchronise();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return witness.object(name + " done") ? 0 : 3;
}

int count(platform::Preferences& suite) {
    for (int i = static_cast<int>(suite.number("n")) + 1;; ++i) {
        suite.set("n", i);
        if (::write(STDOUT_FILENO, &i, sizeof i) != sizeof i) {
            return 1;
        }
    }
}

bool print(double number) {
    const int whole = static_cast<int>(number);
    return ::write(STDOUT_FILENO, &whole, sizeof whole) == sizeof whole;
}

int watch(platform::Preferences& suite) {
    print(suite.number("key"));
    suite.update("key", [](const std::optional<Value>& old) { return Value(old->exactInt64().value() + 1); });
    print(suite.number("key"));
    const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); };
    while (!suite.object("foreign")) {
        pause();
    }
    print(suite.number("foreign"));
    for (;;) {
        suite.synchronise();
        pause();
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 3) {
        return 64;
    }
    const std::string task = arguments[1];
    constexpr uid_t nobody = 65534;
    if (task == "watch" && ::getuid() == 0 && ::setuid(nobody) != 0) {
        return 77;
    }
    const auto log = std::make_shared<ErrorLog>();
    linux_port::SqlitePreferencesProvider provider(arguments[2], "standard", "", log, nullptr);
    const auto suite = provider.suite("shared");
    if (!suite) {
        return 1;
    }
    if (task == "watch") {
        return watch(*suite);
    }
    if (task == "count") {
        return count(*suite);
    }
    linux_port::SqlitePreferencesProvider other(arguments[2], "standard", "", log, nullptr);
    return hammer(*suite, *other.suite("shared"), arguments[3], std::atoi(arguments[4]));
}
