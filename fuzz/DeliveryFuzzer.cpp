// The answers of the delivery service: campaigns, layouts, contents; and what a layout makes of whatever was accepted.

#include <cmath>

#include "fuzz/Check.h"
#include "zentavo/inapp/DeliveryResponse.h"
#include "zentavo/inapp/TemplateLayout.h"
#include "zentavo/inapp/ViewInfoResponse.h"

using namespace zentavo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    if (const auto response = DeliveryResponse::decode(text)) {
        for (const auto& [name, content] : response->webContents) {
            if (content.frequencyCapping) {
                const Map encoded = content.frequencyCapping->encode();
                KeyedDecoder again(encoded);
                check(FrequencyCapping::decode(again) == *content.frequencyCapping, "a cap reads back what it wrote");
            }
        }
    }
    if (const auto info = TemplateInfoResponse::decode(text); info && info->data) {
        for (const char* type : {"popup", "floating_bar", "full_screen"}) {
            const auto frame = layout::codeModeFrame(type, *info->data, {{390, 844}, {47, 0, 34, 0}});
            check(frame.width >= 0 && frame.width <= layout::furthest && frame.height >= 0 &&
                      frame.height <= layout::furthest,
                  "a frame's sides are bounded");
            check(std::abs(frame.x) <= 4 * layout::furthest && std::abs(frame.y) <= 4 * layout::furthest,
                  "a frame is not far away");
        }
    }
    static_cast<void>(ViewInfoResponse::decode(text).ok());
    return 0;
}
