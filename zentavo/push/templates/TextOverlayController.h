#pragma once

#include <memory>
#include <vector>

#include "zentavo/push/templates/PushTemplateBaseController.h"
#include "zentavo/push/templates/PushTemplateLayout.h"

namespace zentavo {

/// A large picture with the texts on it.
class TextOverlayController final : public PushTemplateBaseController {
public:
    explicit TextOverlayController(Setup setup) : PushTemplateBaseController(std::move(setup)) {}

protected:
    void build() override;
    layout::PushFrames arrange(const layout::PushParts& parts) const override;
    void place(const layout::PushFrames& frames) override;
    void paint(const TemplatePalette& palette) override;

private:
    /// Below the texts, darker from strip to strip: they can be read on any picture.
    std::vector<std::shared_ptr<platform::View>> scrim_;
};

} // namespace zentavo
