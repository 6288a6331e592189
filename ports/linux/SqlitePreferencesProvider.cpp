#include "ports/linux/SqlitePreferencesProvider.h"

#include "ports/linux/SqlitePreferences.h"

namespace zentavo::linux_port {
namespace {

constexpr std::size_t maximumNameBytes = 200;

std::string fileNameOf(std::string_view name) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : name) {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
                             c == '-' || (c == '.' && !result.empty());
        if (isPlain) {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += {'%', digits[byte >> 4U], digits[byte & 0xFU]};
        }
    }
    return result;
}

} // namespace

SqlitePreferencesProvider::SqlitePreferencesProvider(std::filesystem::path folder, std::string standardName,
                                                     std::string ownIdentifier,
                                                     std::shared_ptr<platform::SystemLog> log,
                                                     std::function<void(std::function<void()>)> background)
    : folder_(std::move(folder)), standardName_(std::move(standardName)), ownIdentifier_(std::move(ownIdentifier)),
      log_(std::move(log)), background_(std::move(background)) {}

SqlitePreferencesProvider::~SqlitePreferencesProvider() = default;

std::shared_ptr<platform::Preferences> SqlitePreferencesProvider::standard() {
    return find(fileNameOf(standardName_).substr(0, maximumNameBytes), true);
}

std::shared_ptr<platform::Preferences> SqlitePreferencesProvider::suite(std::string_view name) {
    if (!platform::isSuiteName(name, ownIdentifier_)) {
        return nullptr;
    }
    const std::string fileName = fileNameOf(name);
    return fileName.size() <= maximumNameBytes ? find(fileName, false) : nullptr;
}

std::shared_ptr<SqlitePreferences> SqlitePreferencesProvider::find(const std::string& fileName, bool alsoWithoutPlace) {
    // Held while the files are opened: the second of two callers gets the first one's suite.
    MutexLock lock(mutex_);
    if (const auto found = suites_.find(fileName); found != suites_.end()) {
        return found->second;
    }
    auto preferences = std::make_shared<SqlitePreferences>(folder_, fileName, log_, background_);
    if (!preferences->open() && !alsoWithoutPlace) {
        return nullptr;
    }
    suites_.emplace(fileName, preferences);
    return preferences;
}

} // namespace zentavo::linux_port
