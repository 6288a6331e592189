#include "zentavo/inapp/WebContent.h"

namespace zentavo {

WebContent WebContent::decode(KeyedDecoder& decoder) {
    WebContent content;
    content.javascript = decoder.string("javascript");
    content.templateType = decoder.string("template");
    content.designMode = decoder.string("designMode");
    content.storyId = decoder.integer("storyId");
    content.variantId = decoder.integer("variantId");
    content.destinationId = decoder.integer("destinationId");
    content.zoneId = decoder.integer("zoneId");
    content.frequencyCapping = decoder.optionalNested("frequencyCapping", FrequencyCapping::decode);
    content.destinationFrequencyCapping =
        decoder.optionalNested("destinationFrequencyCapping", DestinationFrequencyCapping::decode);
    content.zoneFrequencyCapping = decoder.optionalNested("zoneFrequencyCapping", ZoneFrequencyCapping::decode);
    return content;
}

} // namespace zentavo
