// A stranger's program on a desktop, which looks for the names of its app on the message bus.
#include <ports/desktop/BusNames.h>
#include <ports/linux/PlistBundles.h>

int main() {
    const auto bundle = zentavo::linux_port::PlistBundles().main();
    return zentavo::desktop::BusNames::of(*bundle) ? 1 : 0; // a bare program has no identifier
}
