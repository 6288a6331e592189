#pragma once

#include <mutex>
#include <string>

#include "zentavo/platform/SystemLog.h"

namespace zentavo::linux_port {

/// syslog, copied to standard error, where it is lost if nobody reads it any more. A message is one line: control
/// characters become spaces, and what is beyond 4 KiB is cut. syslog knows one name per process; the last of
/// several logs to write its first message names it.
class ZENTAVO_EXPORT SyslogSystemLog final : public platform::SystemLog {
public:
    /// `ident` stands before each line. Nothing is opened before the first message.
    explicit SyslogSystemLog(std::string ident) : ident_(std::move(ident)) {}

    void write(platform::LogLevel level, std::string_view message) override;

private:
    void open();

    const std::string ident_;
    std::once_flag opened_;
};

} // namespace zentavo::linux_port
