#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/Problems.h"
#include "devserver/PushEndpoints.h"
#include "devserver/PushFiles.h"
#include "devserver/PushLog.h"
#include "devserver/PushRegistrationService.h"

namespace zentavo::devserver {

/// Pushes to the devices that apps have identified, as the platform would: each at the endpoint that its token names,
/// encrypted where the token has keys. Only to endpoints of this server, which are answered without a detour. For any
/// thread.
class PushSender {
public:
    /// Devices that one push may go to.
    static constexpr std::size_t maximumDevices = 500;

    PushSender(const PushRegistrationService& devices, PushEndpoints& endpoints, std::shared_ptr<PushLog> log,
               PushFiles files)
        : devices_(devices), endpoints_(endpoints), log_(std::move(log)), files_(std::move(files)) {}

    /// `order` is {"file": …}, {"payload": {…}} or {"text": …}, with "token" or "uid" for a single device. Waits until every
    /// device has taken its push or has not; the answer says so, as the log does. `server` is where the sender reached this
    /// server. Nothing is sent where there are problems.
    Map send(const Map& order, const std::string& server, Problems& problems);

    const PushFiles& files() const noexcept { return files_; }

private:
    struct Push {
        std::uint64_t number;
        std::string id;
        std::string body;
    };

    List wanted(const Map& order, Problems& problems) const;
    std::vector<PushLog::Device> deliver(const Push& push, const List& devices);

    const PushRegistrationService& devices_;
    PushEndpoints& endpoints_;
    const std::shared_ptr<PushLog> log_;
    const PushFiles files_;
};

} // namespace zentavo::devserver
