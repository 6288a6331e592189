#pragma once

#include <memory>

#include "ports/memory/MemoryViews.h"

namespace zentavo::testing {

/// An image view that only remembers.
class ZENTAVO_EXPORT MemoryImageView final : public MemoryView, public platform::ImageView {
public:
    using MemoryView::MemoryView;

    void setImage(std::shared_ptr<const platform::Image> image) override {
        onMainQueue();
        image_ = std::move(image);
    }
    void setContentMode(platform::ContentMode mode) override { mode_ = mode; }

    // --- What a test sees --------------------------------------------------------------------------------------------

    const std::shared_ptr<const platform::Image>& image() const noexcept { return image_; }
    platform::ContentMode contentMode() const noexcept { return mode_; }

private:
    std::shared_ptr<const platform::Image> image_;
    platform::ContentMode mode_ = platform::ContentMode::aspectFit;
};

} // namespace zentavo::testing
