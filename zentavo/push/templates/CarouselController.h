#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/push/templates/PushTemplateBaseController.h"
#include "zentavo/push/templates/PushTemplateLayout.h"

namespace zentavo {

/// Pictures that follow each other by themselves, or by the user's hand; each leads somewhere of its own.
class CarouselController final : public PushTemplateBaseController {
public:
    static constexpr std::chrono::seconds interval{3};

    explicit CarouselController(Setup setup)
        : PushTemplateBaseController(std::move(setup)),
          jsonContent(data.imageCarouselSettings.value_or(ImageCarouselSettings())) {}
    ~CarouselController() override;

    std::shared_ptr<platform::View> contentView;       ///< around the slides; the edge of what is seen of them
    std::shared_ptr<ZentavoImageView> currentItemView; ///< null without slides
    /// The next page turn; 0 while none is to come.
    platform::TimerId timer = 0;
    std::vector<std::shared_ptr<ZentavoImageView>> itemViews; ///< one for each slide
    std::size_t currentItemIndex = 0;
    const ImageCarouselSettings jsonContent; ///< what the payload says of the slides; none where it says nothing
    double imageViewBottomContraint = 0;     ///< sic; from the pictures to the end of everything
    double titleHeight = 0;
    double subtitleHeight = 0;
    double bodyHeight = 0;
    double viewWidth = 0;
    std::shared_ptr<platform::View> pageControl; ///< a dot for each slide

protected:
    void build() override;
    layout::PushFrames arrange(const layout::PushParts& parts) const override;
    void place(const layout::PushFrames& frames) override;
    void paint(const TemplatePalette& palette) override;
    void appeared() override;
    void disappeared() override;
    /// In the place of slides where there are none, as of a payload that cannot be read.
    bool hasBigImage() const override { return jsonContent.slides.empty(); }
    platform::Size pictureSize() const override;
    ChosenURL chosenURL() const override;

private:
    void wait();
    void stop();
    /// Turns to another slide, which comes in from the side of `direction`: 1 is where the text goes on.
    void turn(int direction);
    void tapped(std::size_t slide);
    void update();
    /// Asks for the pictures that may be seen soon, where that has not happened: 20 at once are too much for a
    /// notification that most users look at for a page or two.
    void fetch();
    void arrived();
    /// The slide that is `pages` turns away.
    std::size_t slideAfter(std::ptrdiff_t pages) const;

    std::vector<std::shared_ptr<platform::View>> slides_; ///< what is tapped, around each picture
    std::vector<std::shared_ptr<platform::View>> dots_;
    platform::Size shape_; ///< of the pictures, as it was laid out last
    platform::Colour dot_;
    platform::Colour currentDot_;
};

} // namespace zentavo
