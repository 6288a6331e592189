#include "devserver/Distributor.h"

namespace zentavo::devserver {

Result<std::unique_ptr<Distributor>> Distributor::start(const Settings&, std::shared_ptr<EndpointStore>) {
    return Error{"this program was built without GLib's gio-2.0"};
}

} // namespace zentavo::devserver
