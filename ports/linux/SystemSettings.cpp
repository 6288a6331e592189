#include "ports/linux/SystemSettings.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "ports/linux/TextFile.h"

namespace zentavo::linux_port {
namespace {

constexpr std::size_t maximumFileBytes = 65'536;

bool isLetters(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalpha(c) != 0 && c < 0x80; });
}

bool isDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= '0' && c <= '9'; });
}

/// The rest of `text` up to the first of `ends`.
std::string_view until(std::string_view text, std::string_view ends) {
    return text.substr(0, text.find_first_of(ends));
}

/// "pt_BR.UTF-8@euro" as BCP 47.
std::string languageTag(std::string_view name) {
    std::string_view modifier;
    if (const auto at = name.find('@'); at != std::string_view::npos) {
        modifier = name.substr(at + 1);
    }
    name = until(name, ".@");
    if (name == "C" || name == "POSIX") {
        return "en-US-POSIX";
    }
    const std::string_view language = until(name, "_");
    const std::string_view region = name.substr(std::min(language.size() + 1, name.size()));
    const bool isRegion = (region.size() == 2 && isLetters(region)) || (region.size() == 3 && isDigits(region));
    if (language.size() < 2 || language.size() > 3 || !isLetters(language) || !(region.empty() || isRegion)) {
        return "und";
    }
    std::string tag(language);
    std::transform(tag.begin(), tag.end(), tag.begin(), [](unsigned char c) { return std::tolower(c); });
    if (modifier == "latin") {
        tag += "-Latn";
    } else if (modifier == "cyrillic") {
        tag += "-Cyrl";
    }
    if (!region.empty()) {
        tag += '-';
        std::transform(region.begin(), region.end(), std::back_inserter(tag),
                       [](unsigned char c) { return std::toupper(c); });
    }
    return tag;
}

/// Whether `name` may be a zone of the database, and is one where the database is installed.
bool isZoneName(std::string_view name, const std::filesystem::path& root) {
    const bool isPlain = std::all_of(name.begin(), name.end(), [](unsigned char c) {
        return c < 0x80 && (std::isalnum(c) != 0 || std::string_view("_+-/").find(char(c)) != std::string_view::npos);
    });
    if (name.empty() || !isPlain || name.front() == '/' || name.back() == '/') {
        return false;
    }
    std::error_code error;
    const auto database = root / "usr/share/zoneinfo";
    return !std::filesystem::exists(database, error) || std::filesystem::is_regular_file(database / name, error);
}

/// "/usr/share/zoneinfo/posix/Europe/Berlin" as "Europe/Berlin"; other text as it is.
std::string_view zoneOfPath(std::string_view path) {
    constexpr std::string_view folder = "zoneinfo/";
    if (const auto at = path.find(folder); at != std::string_view::npos) {
        path.remove_prefix(at + folder.size());
    }
    for (const std::string_view variant : {"posix/", "right/"}) {
        if (path.starts_with(variant)) {
            path.remove_prefix(variant.size());
        }
    }
    return path;
}

std::string firstLine(const std::filesystem::path& file) {
    return std::string(until(readTextFile(file, maximumFileBytes).value_or(""), "\n"));
}

} // namespace

std::string localeOf(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        const char* name = std::getenv(variable);
        if (name != nullptr && *name != '\0') {
            return languageTag(name);
        }
    }
    return languageTag("C");
}

std::string timeZoneName(const std::filesystem::path& root) {
    if (const char* variable = std::getenv("TZ")) {
        std::string_view name = variable;
        if (name.starts_with(':')) {
            name.remove_prefix(1);
        }
        name = zoneOfPath(name);
        return isZoneName(name, root) ? std::string(name) : "UTC";
    }
    std::error_code error;
    const std::string link = std::filesystem::read_symlink(root / "etc/localtime", error);
    const std::string_view linked = zoneOfPath(link);
    if (linked.size() != link.size() && isZoneName(linked, root)) {
        return std::string(linked);
    }
    const std::string named = firstLine(root / "etc/timezone");
    return isZoneName(named, root) ? named : "UTC";
}

} // namespace zentavo::linux_port
