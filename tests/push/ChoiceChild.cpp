// A content extension as a process of its own, for ExtensionProcessTest: notes what the user tapped, and ends.
//
//   push_choice_child DATA_FOLDER BUNDLE PUSH_ID URL

#include "ports/linux/LinuxPlatform.h"
#include "zentavo/Zentavo.h"
#include "zentavo/push/PushChoices.h"

int main(int argc, char** argv) {
    using namespace zentavo;
    if (argc != 5) {
        return 2;
    }
    const auto platform = linux_port::makeLinuxPlatform({.dataFolder = argv[1], .mainBundle = argv[2]});
    Zentavo::setShared(std::make_shared<Zentavo>(platform));
    PushChoices(*platform->preferences, argv[3]).setClickedURL(argv[4]);
    return 0;
}
