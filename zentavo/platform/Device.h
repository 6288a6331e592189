#pragma once

#include <optional>
#include <string>

#include "zentavo/foundation/Export.h"

namespace zentavo::platform {

struct ScreenSize {
    double width = 0;  ///< in points
    double height = 0; ///< in points
};

/// Facts about the machine and its user's settings. Cheap enough for the host's start: no network, no waiting. Any
/// thread. Text that the system cannot tell is empty.
class ZENTAVO_EXPORT Device {
public:
    virtual ~Device() = default;

    /// The identifier of this device for this vendor's programs, as upper-case UUID text: the same in all processes of
    /// the user's session, different for other vendors, not to be traced back to the machine. None when there is none.
    virtual std::optional<std::string> identifierForVendor() const = 0;

    virtual std::string model() const = 0;         ///< machine code name: "x86_64", "iPhone15,2"
    virtual std::string type() const = 0;          ///< "desktop", "phone"
    virtual std::string name() const = 0;          ///< what the user calls it
    virtual std::string systemName() const = 0;    ///< "Linux"
    virtual std::string systemVersion() const = 0; ///< "6.1.0-18-amd64"
    virtual std::string locale() const = 0;        ///< BCP 47: "pt-BR"
    virtual std::string timeZone() const = 0;      ///< IANA identifier: "Europe/Berlin"
    virtual std::string network() const = 0;       ///< "wifi", "wired", "unknown"
    /// The main screen; 0 by 0 without one.
    virtual ScreenSize screen() const = 0;
};

} // namespace zentavo::platform
