#pragma once

#include "zentavo/platform/AttachmentFiles.h"

namespace zentavo::linux_port {

/// Attachments as files below $TMPDIR, or below /tmp.
class PosixAttachmentFiles final : public platform::AttachmentFiles {
public:
    Result<std::string> write(std::string_view folder, std::string_view name, std::string_view bytes) override;
    Result<platform::NotificationAttachment> attach(std::string identifier, const std::string& path) override;
    void remove(const std::string& path) override;
};

} // namespace zentavo::linux_port
