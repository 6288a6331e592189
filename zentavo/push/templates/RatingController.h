#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "zentavo/push/templates/PushTemplateBaseController.h"
#include "zentavo/push/templates/PushTemplateLayout.h"

namespace zentavo {

/// A row of icons below the texts; the chosen rating is the tapped icon's tag.
class RatingController final : public PushTemplateBaseController {
public:
    explicit RatingController(Setup setup);

    /// The icon that the user tapped last, counted from 1; 0 before.
    std::int64_t rating() const noexcept { return rating_; }

protected:
    void build() override;
    layout::PushFrames arrange(const layout::PushParts& parts) const override;
    void place(const layout::PushFrames& frames) override;
    void paint(const TemplatePalette& palette) override;
    double extraHeight() const override;

private:
    /// One level: the sender's two pictures, and a drawn star where they are missing.
    struct Icon {
        std::shared_ptr<platform::View> view;
        std::shared_ptr<ZentavoImageView> selected;
        std::shared_ptr<ZentavoImageView> unselected;
        std::shared_ptr<platform::Label> star;
    };

    /// The icon `tag` was tapped: it is stored, and then shown.
    void rate(std::int64_t tag);
    void show(std::int64_t rating);
    void update();

    std::vector<Icon> icons_;
    std::unique_ptr<UIPaddingLabel> caption_;
    platform::Colour starColour_;
    platform::Colour chosenColour_;
    std::int64_t rating_ = 0;
};

} // namespace zentavo
