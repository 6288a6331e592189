#pragma once

#include <memory>

#include "zentavo/platform/Image.h"
#include "zentavo/platform/Views.h"

namespace zentavo::platform {

/// Both keep the picture's proportions: all of it, or as much as fills the view.
enum class ContentMode { aspectFit, aspectFill };

/// A view that shows a picture, in its middle. Main queue only.
class ZENTAVO_EXPORT ImageView : public virtual View {
public:
    /// Null shows none. The picture is one that this port made.
    virtual void setImage(std::shared_ptr<const Image> image) = 0;
    virtual void setContentMode(ContentMode mode) = 0;
};

} // namespace zentavo::platform
