#pragma once

#include <map>
#include <optional>
#include <string>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/AttachmentFiles.h"

namespace zentavo::testing {

/// Files that are only remembered, below "/memory/tmp". Any thread.
class ZENTAVO_EXPORT MemoryAttachmentFiles final : public platform::AttachmentFiles {
public:
    Result<std::string> write(std::string_view folder, std::string_view name, std::string_view bytes) override;
    Result<platform::NotificationAttachment> attach(std::string identifier, const std::string& path) override;
    void remove(const std::string& path) override;

    /// From now on no file can be written, or none attached, for this reason; none ends it.
    void failWrites(std::optional<std::string> reason);
    void failAttachments(std::optional<std::string> reason);

    /// What is there now: paths and what is in the files.
    std::map<std::string, std::string> files() const;

private:
    mutable Mutex mutex_;
    std::map<std::string, std::string> files_ ZENTAVO_GUARDED_BY(mutex_);
    std::optional<std::string> writeFailure_ ZENTAVO_GUARDED_BY(mutex_);
    std::optional<std::string> attachFailure_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
