// A notification-service extension as a process of its own, for ExtensionProcessTest.
//
//   push_service_child DATA_FOLDER ROUNDS APS
//
// Rewrites ROUNDS pushes with the payload APS on the real Linux port; prints the badge and the attachments' paths of
// each, and at the end the libraries that the process has loaded.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <set>
#include <string>

#include "ports/linux/LinuxPlatform.h"
#include "zentavo/Zentavo.h"
#include "zentavo/foundation/JSON.h"

int main(int argc, char** argv) {
    using namespace zentavo;
    const auto aps = argc == 4 ? json::readMap(argv[3]) : Result<Map>(Error{"three arguments, please"});
    if (!aps) {
        std::cerr << aps.error().message << "\n";
        return 2;
    }
    const auto platform = linux_port::makeLinuxPlatform({.dataFolder = argv[1], .mainBundle = {}});
    ZentavoNotificationService service(std::make_shared<Zentavo>(platform));
    for (int i = std::atoi(argv[2]); i > 0; --i) {
        platform::NotificationRequest request;
        request.content.userInfo = Map{{"aps", *aps}};
        service.didReceive(std::move(request), [](const platform::NotificationContent& content) {
            std::cout << "badge " << content.badge.value_or(-1);
            for (const auto& attachment : content.attachments) {
                std::cout << " " << attachment.path;
            }
            std::cout << std::endl;
        });
    }
    std::set<std::string> libraries;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (const auto slash = line.rfind('/'); slash != std::string::npos && line.find(".so") != std::string::npos) {
            libraries.insert(line.substr(slash + 1));
        }
    }
    for (const std::string& library : libraries) {
        std::cout << "library " << library << "\n";
    }
    return 0;
}
