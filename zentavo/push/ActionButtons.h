#pragma once

#include <optional>
#include <string>

#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// The buttons below a push, two at most. A plain value.
struct ZENTAVO_EXPORT ActionButtons {
    struct ZENTAVO_EXPORT Button {
        std::string id; ///< the identifier of the button's action
        std::string label;
        std::string iconPath;
        bool systemIcon = false; ///< whether `iconPath` names an icon of the system
        std::string clickAction; ///< the sender's word for what the button does
        std::string url;         ///< what the button opens

        static Button decode(KeyedDecoder& decoder);
        Map encode() const;

        friend bool operator==(const Button&, const Button&) = default;
    };

    std::optional<Button> button1;
    std::optional<Button> button2;

    static ActionButtons decode(KeyedDecoder& decoder);
    /// Without the buttons that are absent.
    Map encode() const;

    friend bool operator==(const ActionButtons&, const ActionButtons&) = default;
};

} // namespace zentavo
