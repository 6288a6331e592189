// zentavo-push-lint: says what the SDK would make of a push.

#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>

#include "tools/push-lint/PushLint.h"

namespace {

constexpr const char* help = R"(zentavo-push-lint [--strict] [FILE]

Says in plain words what the SDK would make of a push: what would fail, which fields it does not read, which
template is drawn and what a click does. Reads JSON with a map "aps" from FILE, or from standard input.

  --strict   warnings count as failures

Exit status: 0 the push works, 1 it would fail, 2 it could not be read.
)";

enum Status { works = 0, fails = 1, unreadable = 2 };

/// More than any push has; the rest of a longer input is not read.
constexpr std::size_t maximumBytes = 16U << 20U;

std::optional<std::string> read(std::istream& in) {
    std::string text;
    char buffer[4096];
    while (in.read(buffer, sizeof buffer) || in.gcount() > 0) {
        text.append(buffer, static_cast<std::size_t>(in.gcount()));
        if (text.size() > maximumBytes) {
            return std::nullopt;
        }
    }
    return in.bad() ? std::nullopt : std::optional(std::move(text));
}

} // namespace

int main(int argc, char** argv) {
    bool strict = false;
    std::string file = "-";
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--help") {
            std::cout << help;
            return works;
        }
        if (argument == "--strict") {
            strict = true;
        } else if (argument.starts_with("-") && argument != "-") {
            std::cerr << "zentavo-push-lint: unknown option " << argument << "\n" << help;
            return unreadable;
        } else {
            file = argument;
        }
    }
    std::ifstream opened;
    if (file != "-") {
        opened.open(file, std::ios::binary);
    }
    const auto text = file == "-" ? read(std::cin) : opened ? read(opened) : std::nullopt;
    if (!text) {
        std::cerr << "zentavo-push-lint: cannot read " << file << ", or it is larger than any push\n";
        return unreadable;
    }
    const auto report = zentavo::tools::lintPush(*text);
    for (const std::string& failure : report.failures) {
        std::cout << "FAILS    " << failure << "\n";
    }
    for (const std::string& warning : report.warnings) {
        std::cout << "WARNING  " << warning << "\n";
    }
    for (const std::string& fact : report.facts) {
        std::cout << "         " << fact << "\n";
    }
    const bool bad = !report.failures.empty() || (strict && !report.warnings.empty());
    return bad ? fails : works;
}
