// What pages post: read, and laid out where it is a size.

#include "fuzz/Check.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/inapp/TemplateLayout.h"

using namespace zentavo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto body = json::readMap(textOf(data, size));
    if (!body) {
        return 0;
    }
    if (const auto message = readTemplateMessage(*body)) {
        if (const auto* asked = std::get_if<SizeMessage>(&*message)) {
            const auto frame = layout::templateFrame("floating_bar", *asked, {0, 0, 390, 1}, {{390, 844}, {}});
            check(frame.height >= 0 && frame.height <= layout::furthest, "a bar's height is bounded");
        }
        if (const auto* click = std::get_if<ClickMessage>(&*message); click != nullptr && click->trackingURL) {
            check(click->trackingURL->query().value_or("").find("resp_type=pixel") == std::string_view::npos,
                  "no click asks for a pixel");
        }
    }
    static_cast<void>(readCodeModeMessage(*body));
    return 0;
}
