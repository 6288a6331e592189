#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "zentavo/core/DebugLog.h"
#include "zentavo/platform/Platform.h"
#include "zentavo/push/templates/ImageCache.h"

namespace zentavo {

/// Fetches pictures for the views of a push and keeps some of them. One for an instance of the SDK, held by
/// `std::shared_ptr`. Main queue only; net and decoding are elsewhere.
class ImageLoader : public std::enable_shared_from_this<ImageLoader> {
public:
    using Picture = std::shared_ptr<const platform::Image>;
    using Completion = std::function<void(Picture)>;

    /// A longer file is no picture for a notification.
    static constexpr std::size_t maximumBytes = 10U << 20U;

    ImageLoader(std::shared_ptr<platform::Platform> system, std::shared_ptr<DebugLog> log);

    /// Calls `completion` once on the main queue, never inside the call, with the picture at `url`, reduced to what
    /// fits a notification; null when there is none. Only http and https. Who asks for what is on its way already
    /// waits for the same answer.
    void load(const std::string& url, Completion completion);
    /// What `load` would give at once; null when it would have to ask.
    Picture cached(const std::string& url) { return cache_.find(url); }

    const ImageCache& cache() const noexcept { return cache_; }

    /// Fetches and decodes. `completion` is called once on the queue `on`: with the picture in its own size, or null
    /// and a line in the log. Any thread.
    static void download(const std::shared_ptr<platform::Platform>& system, const std::shared_ptr<DebugLog>& log,
                         const URL& url, const std::shared_ptr<platform::DispatchQueue>& on, Completion completion);

private:
    void finish(const std::string& url, const Picture& picture);

    const std::shared_ptr<platform::Platform> system_;
    const std::shared_ptr<DebugLog> log_;
    const std::shared_ptr<platform::DispatchQueue> queue_;
    ImageCache cache_;
    std::map<std::string, std::vector<Completion>> waiting_;
};

} // namespace zentavo
