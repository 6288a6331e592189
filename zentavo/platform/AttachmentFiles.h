#pragma once

#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/platform/Notification.h"

namespace zentavo::platform {

/// Files for notifications to show. Any thread; each member waits for the disk.
class ZENTAVO_EXPORT AttachmentFiles {
public:
    virtual ~AttachmentFiles() = default;

    /// Writes a new file `name` in the folder `folder` below the system's temporary folder, which is made where it is
    /// not there, and says where the file is. Both are plain names, no paths. Nobody but this user can read the file.
    /// A file that is there already is not touched, which is a failure; after one nothing half-written is left.
    virtual Result<std::string> write(std::string_view folder, std::string_view name, std::string_view bytes) = 0;

    /// The file at `path` as an attachment; fails where there is no file, or one without content. The notification
    /// that it is shown with owns the file: who has shown that removes it.
    virtual Result<NotificationAttachment> attach(std::string identifier, const std::string& path) = 0;

    /// Removes a file that `write` made, and its folder when that is empty then. Nothing where it is gone.
    virtual void remove(const std::string& path) = 0;
};

} // namespace zentavo::platform
