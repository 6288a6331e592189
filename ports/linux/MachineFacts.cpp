#include "ports/linux/MachineFacts.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>
#include <vector>

#include "ports/linux/TextFile.h"

namespace zentavo::linux_port {
namespace {

constexpr std::size_t maximumFileBytes = 65'536;

/// The rest of `text` up to the first of `ends`.
std::string_view until(std::string_view text, std::string_view ends) {
    return text.substr(0, text.find_first_of(ends));
}

std::string firstLine(const std::filesystem::path& file) {
    return std::string(until(readTextFile(file, maximumFileBytes).value_or(""), "\n"));
}

/// The interface of the default route; empty without one.
std::string defaultInterface(const std::filesystem::path& root) {
    const std::string table = readTextFile(root / "proc/net/route", maximumFileBytes).value_or("");
    // Interface, destination, …, by tabs; the first line is a heading.
    std::string_view rest = table;
    while (!rest.empty()) {
        const std::string_view line = until(rest, "\n");
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const std::string_view interface = until(line, "\t");
        if (line.substr(interface.size()).starts_with("\t00000000\t")) {
            return std::string(interface);
        }
    }
    return {};
}

bool isUp(const std::filesystem::path& interface) {
    const std::string state = firstLine(interface / "operstate");
    // Drivers that do not follow the state, as those of modems, leave it "unknown".
    return state == "up" || state == "unknown";
}

std::string kindOf(const std::filesystem::path& interface) {
    std::error_code error;
    if (std::filesystem::exists(interface / "wireless", error) ||
        std::filesystem::exists(interface / "phy80211", error)) {
        return "wifi";
    }
    const std::string name = interface.filename();
    if (name.starts_with("wwan") || name.starts_with("ppp") || name.starts_with("rmnet")) {
        return "cellular";
    }
    constexpr std::string_view ethernet = "1";
    return firstLine(interface / "type") == ethernet && !name.starts_with("tap") ? "wired" : "unknown";
}

} // namespace

std::string networkKind(const std::filesystem::path& root) {
    const auto folder = root / "sys/class/net";
    std::vector<std::filesystem::path> interfaces;
    if (const std::string name = defaultInterface(root); !name.empty()) {
        interfaces.push_back(folder / name);
    }
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename() != "lo" && isUp(entry->path())) {
            interfaces.push_back(entry->path());
        }
    }
    if (interfaces.empty()) {
        return error ? "unknown" : "none";
    }
    for (const auto& interface : interfaces) {
        if (auto kind = kindOf(interface); kind != "unknown") {
            return kind;
        }
    }
    return "unknown";
}

std::string machineInfo(const std::string& name, const std::filesystem::path& root) {
    std::string text = "\n";
    text += readTextFile(root / "etc/machine-info", maximumFileBytes).value_or("");
    const auto at = text.find("\n" + name + "=");
    if (at == std::string::npos) {
        return {};
    }
    std::string_view value = until(std::string_view(text).substr(at + name.size() + 2), "\n");
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front()) {
        value = value.substr(1, value.size() - 2);
    }
    return std::string(value);
}

std::string chassisKind(const std::filesystem::path& root) {
    std::string said = machineInfo("CHASSIS", root);
    if (said.empty()) {
        std::string tree = readTextFile(root / "proc/device-tree/chassis-type", maximumFileBytes).value_or("");
        said = until(tree, std::string_view("\0", 1));
    }
    if (said == "handset") {
        return "phone";
    }
    if (said == "convertible") {
        return "laptop";
    }
    if (!said.empty()) {
        return said;
    }
    // The numbers of the SMBIOS enclosure types.
    const std::string text = firstLine(root / "sys/class/dmi/id/chassis_type");
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    switch (number) {
    case 3:
    case 4:
    case 5:
    case 6:
    case 7:
    case 13:
    case 15:
    case 16:
    case 35:
    case 36:
        return "desktop";
    case 8:
    case 9:
    case 10:
    case 14:
    case 31:
        return "laptop";
    case 11:
        return "phone";
    case 30:
    case 32:
        return "tablet";
    case 17:
    case 23:
    case 28:
    case 29:
        return "server";
    case 33:
    case 34:
        return "embedded";
    default:
        return "";
    }
}

} // namespace zentavo::linux_port
