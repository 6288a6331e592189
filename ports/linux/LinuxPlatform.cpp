#include "ports/linux/LinuxPlatform.h"

#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

#include <pwd.h>
#include <unistd.h>

#include "ports/linux/DetachedUserInterface.h"
#include "ports/linux/IcuCalendar.h"
#include "ports/linux/LinuxDevice.h"
#include "ports/linux/LinuxDispatchQueues.h"
#include "ports/linux/LinuxServices.h"
#include "ports/linux/OpenSslKeyServices.h"
#include "ports/linux/PlistBundles.h"
#include "ports/linux/PosixAttachmentFiles.h"
#include "ports/linux/SqlitePreferencesProvider.h"
#include "ports/linux/StdoutConsole.h"
#include "ports/linux/SyslogSystemLog.h"

namespace zentavo::linux_port {

namespace {

std::filesystem::path userDataFolder() {
    const char* data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && *data == '/') { // a relative one is to be ignored
        return std::filesystem::path(data) / "zentavo";
    }
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home == '\0') {
        const auto* user = getpwuid(getuid());
        home = user != nullptr ? user->pw_dir : "/";
    }
    return std::filesystem::path(home) / ".local/share/zentavo";
}

std::string executableName() {
    std::error_code error;
    auto name = std::filesystem::read_symlink("/proc/self/exe", error).filename().string();
    return name.empty() ? "zentavo" : name;
}

std::string vendorOf(const std::string& identifier) {
    const auto first = identifier.find('.');
    return first == std::string::npos ? identifier : identifier.substr(0, identifier.find('.', first + 1));
}

} // namespace

std::shared_ptr<platform::Platform> makeLinuxPlatform(LinuxOptions options) {
    const auto services = makeLinuxServices();
    const auto program = executableName();
    const auto log = std::make_shared<SyslogSystemLog>(program);
    const auto bundles = std::make_shared<PlistBundles>(std::move(options.mainBundle));
    const auto identifier = bundles->main()->identifier().value_or("");
    const auto folder = options.dataFolder.empty() ? userDataFolder() : std::move(options.dataFolder);

    auto result = std::make_shared<platform::Platform>(detachedUserInterface(services.worker, log));
    result->preferences = std::make_shared<SqlitePreferencesProvider>(
        folder / "preferences", identifier.empty() ? program : identifier, identifier, log,
        [worker = services.worker](std::function<void()> block) { worker->async(std::move(block)); });
    result->bundles = bundles;
    result->device = std::make_shared<LinuxDevice>(identifier.empty() ? program : vendorOf(identifier));
    result->urlSession = services.urlSession;
    result->queues = std::make_shared<LinuxDispatchQueues>(services.worker);
    result->clock = services.clock;
    result->random = services.random;
    result->calendar = std::make_shared<IcuCalendar>("", "", log);
    result->keyServices = std::make_shared<OpenSslKeyServices>();
    result->attachmentFiles = std::make_shared<PosixAttachmentFiles>();
    result->systemLog = log;
    result->console = std::make_shared<StdoutConsole>();
    return result;
}

} // namespace zentavo::linux_port
