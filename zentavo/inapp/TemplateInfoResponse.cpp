#include "zentavo/inapp/TemplateInfoResponse.h"

#include "zentavo/foundation/JSON.h"

namespace zentavo {

PositionSettings PositionSettings::decode(KeyedDecoder& decoder) {
    PositionSettings settings;
    settings.top = IntOrString::decodeOptional(decoder, "top");
    settings.left = IntOrString::decodeOptional(decoder, "left");
    settings.right = decoder.optionalString("right");
    settings.bottom = IntOrString::decodeOptional(decoder, "bottom");
    settings.positionSuffix = decoder.optionalString("positionSuffix");
    return settings;
}

CodeModeSettings CodeModeSettings::decode(KeyedDecoder& decoder) {
    CodeModeSettings settings;
    settings.width = decoder.optionalInteger("width");
    settings.height = decoder.optionalInteger("height");
    settings.widthSuffix = decoder.optionalString("widthSuffix");
    settings.heightSuffix = decoder.optionalString("heightSuffix");
    settings.displayArea = decoder.optionalString("displayArea");
    return settings;
}

TemplateInfoResponse::Options TemplateInfoResponse::Options::decode(KeyedDecoder& decoder) {
    Options options;
    options.positionSettings = decoder.optionalNested("positionSettings", PositionSettings::decode);
    options.floatingBarPosition = decoder.optionalString("floatingBarPosition");
    return options;
}

TemplateInfoResponse::TemplateData TemplateInfoResponse::TemplateData::decode(KeyedDecoder& decoder) {
    TemplateData data;
    data.options = decoder.optionalNested("options", Options::decode);
    data.codeModeSettings = decoder.optionalNested("codeModeSettings", CodeModeSettings::decode);
    return data;
}

Result<TemplateInfoResponse> TemplateInfoResponse::decode(std::string_view text) {
    const auto map = json::readMap(text);
    if (!map) {
        return map.error();
    }
    TemplateInfoResponse response;
    KeyedDecoder decoder(*map);
    response.data = decoder.optionalNested("data", TemplateData::decode);
    if (auto failure = decoder.failure()) {
        return *std::move(failure);
    }
    return response;
}

} // namespace zentavo
