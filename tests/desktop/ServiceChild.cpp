// A notification-service extension as a process of its own, which the message bus starts.
//
//   desktop_push_service DATA_FOLDER BUNDLE

#include "ports/desktop/NotificationService.h"
#include "ports/linux/LinuxPlatform.h"
#include "zentavo/Zentavo.h"

int main(int argc, char** argv) {
    using namespace zentavo;
    if (argc != 3) {
        return 2;
    }
    const auto platform = linux_port::makeLinuxPlatform({.dataFolder = argv[1], .mainBundle = argv[2]});
    const auto sdk = std::make_shared<Zentavo>(platform);
    return desktop::runNotificationService(platform,
                                           [sdk] { return std::make_shared<ZentavoNotificationService>(sdk); });
}
