#pragma once

#include <map>
#include <memory>
#include <string>

#include "devserver/Database.h"
#include "devserver/Service.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::devserver {

/// Knows the devices that push messages can reach, and takes launch reports. The platform runs it once, without a
/// sandbox twin, so it does not ask which portal came where.
class PushRegistrationService final : public Service {
public:
    /// Of more devices the ones with the lowest push uid are forgotten.
    static constexpr std::size_t maximumDevices = 10'000;

    /// Devices are known while the server runs.
    PushRegistrationService() = default;
    /// And beyond, in the file: an app whose token is the same does not tell it again soon.
    static Result<std::shared_ptr<PushRegistrationService>> open(const std::string& path);

    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

    /// One map for each identified device: its push uid, portal, token and device id; where it can be reached, or why it
    /// cannot; and whether it wants its pushes encrypted.
    List devices() const;

private:
    Answer identify(const Map& body, Findings& findings);
    void keep(const std::string& uid, Map device) ZENTAVO_REQUIRES(mutex_);

    mutable Mutex mutex_;
    /// Null for none.
    std::unique_ptr<Database> database_ ZENTAVO_GUARDED_BY(mutex_);
    /// By push uid.
    std::map<std::string, Map> devices_ ZENTAVO_GUARDED_BY(mutex_);
};

/// The push uid of a device token: the same for the same token, also after a restart of the server.
std::string pushUid(std::string_view token);

} // namespace zentavo::devserver
