#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "zentavo/platform/Platform.h"

namespace zentavo {

/// What content extensions need for pictures and texts. The name is spelt as its users know it.
class ZENTAVO_EXPORT ZentavoUtiltiy {
public:
    using Picture = std::shared_ptr<const platform::Image>;

    /// Fetches all pictures at once, by the shared instance's network, and then calls `completion` on the main queue.
    /// The list is in the order in which they arrived, and what could not be had is not in it. http and https only,
    /// 10 MiB a picture. Text that is no URL is a fault, after which nothing is fetched and `completion` never called. Any
    /// thread.
    static void downloadImagesAndProcess(const std::vector<std::string>& imageURLs,
                                         std::function<void(std::vector<Picture>)> completion);

    /// The height of a label `width` wide that shows `text` in at most `line` lines (0: any number); 0 where there is
    /// no screen. Main queue only.
    static double heightForLabelView(const std::string& text, platform::Font font, double width, int line);

    /// `image`, or the same `width` pixels wide where it is wider, in its own proportions. Any thread; takes its time.
    static Picture resizeImageIfNeeded(const Picture& image, double width);
};

} // namespace zentavo
