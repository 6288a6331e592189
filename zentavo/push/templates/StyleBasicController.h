#pragma once

#include "zentavo/push/templates/PushTemplateBaseController.h"
#include "zentavo/push/templates/PushTemplateLayout.h"

namespace zentavo {

/// A large picture, texts below it, buttons; on the background that the sender asks for.
class StyleBasicController final : public PushTemplateBaseController {
public:
    explicit StyleBasicController(Setup setup) : PushTemplateBaseController(std::move(setup)) {}

protected:
    void build() override;
    layout::PushFrames arrange(const layout::PushParts& parts) const override;
};

} // namespace zentavo
