#pragma once

#include "zentavo/push/templates/PushTemplateBaseController.h"
#include "zentavo/push/templates/PushTemplateLayout.h"

namespace zentavo {

/// A small picture beside the texts.
class SmallImageController final : public PushTemplateBaseController {
public:
    explicit SmallImageController(Setup setup) : PushTemplateBaseController(std::move(setup)) {}

protected:
    void build() override;
    layout::PushFrames arrange(const layout::PushParts& parts) const override;
    bool textsBesidePicture() const override { return true; }

private:
    bool pictureOnLeft() const;
};

} // namespace zentavo
