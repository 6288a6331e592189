#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Result.h"
#include "zentavo/inapp/IntOrString.h"

namespace zentavo {

/// Distances from the edges of the screen. `right` alone must be text: pages in the field rely on an answer with a
/// numeric one being refused.
struct PositionSettings {
    std::optional<IntOrString> top;
    std::optional<IntOrString> left;
    std::optional<std::string> right;
    std::optional<IntOrString> bottom;
    std::optional<std::string> positionSuffix; ///< "px" or "%" of the screen

    static PositionSettings decode(KeyedDecoder& decoder);
};

/// Size of a hand-written page.
struct CodeModeSettings {
    std::optional<std::int64_t> width;
    std::optional<std::int64_t> height;
    std::optional<std::string> widthSuffix; ///< "px" or "%" of the display area
    std::optional<std::string> heightSuffix;
    std::optional<std::string> displayArea;

    static CodeModeSettings decode(KeyedDecoder& decoder);
};

/// The layout that the service knows for a campaign.
struct TemplateInfoResponse {
    struct Options {
        std::optional<PositionSettings> positionSettings;
        std::optional<std::string> floatingBarPosition; ///< "top" or "bottom"

        static Options decode(KeyedDecoder& decoder);
    };
    struct TemplateData {
        std::optional<Options> options;
        std::optional<CodeModeSettings> codeModeSettings;

        static TemplateData decode(KeyedDecoder& decoder);
    };

    std::optional<TemplateData> data;

    static Result<TemplateInfoResponse> decode(std::string_view json);
};

} // namespace zentavo
