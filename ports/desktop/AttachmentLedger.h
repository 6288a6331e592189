#pragma once

#include <cstddef>
#include <memory>
#include <set>
#include <string>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/AttachmentFiles.h"
#include "zentavo/platform/Preferences.h"
#include "zentavo/platform/Random.h"

namespace zentavo::desktop {

/// Attachments' files, written down for as long as they are there: what a process leaves that is killed, a later one finds
/// and removes. The temporary folder is not searched, where others of this user have files that look the same. Any
/// thread; members wait for the disk.
class ZENTAVO_EXPORT AttachmentLedger final : public platform::AttachmentFiles {
public:
    /// Of more files, the oldest are no longer written down.
    static constexpr std::size_t maximumCount = 256;

    AttachmentLedger(std::shared_ptr<platform::AttachmentFiles> files, std::shared_ptr<platform::Preferences> suite,
                     platform::Random& random)
        : files_(std::move(files)), suite_(std::move(suite)), process_(random.uuidText()) {}

    Result<std::string> write(std::string_view folder, std::string_view name, std::string_view bytes) override;
    Result<platform::NotificationAttachment> attach(std::string identifier, const std::string& path) override;
    void remove(const std::string& path) override;

    /// Removes what earlier processes have left, but for `kept`: paths. None of them may be at work any more.
    void sweep(const std::set<std::string>& kept);

private:
    void strikeOut(const std::set<std::string>& paths);

    const std::shared_ptr<platform::AttachmentFiles> files_;
    const std::shared_ptr<platform::Preferences> suite_;
    const std::string process_; ///< no other process is called so
};

} // namespace zentavo::desktop
