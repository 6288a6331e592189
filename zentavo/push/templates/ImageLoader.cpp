#include "zentavo/push/templates/ImageLoader.h"

#include <algorithm>
#include <utility>

#include "zentavo/foundation/Fault.h"
#include "zentavo/push/templates/ZentavoUtiltiy.h"

namespace zentavo {

namespace {

/// Pixels: what the largest notification shows on a dense screen.
constexpr platform::Size largest{1200, 1600};

ImageLoader::Picture reduced(const ImageLoader::Picture& picture) {
    if (!picture) {
        return nullptr;
    }
    const platform::Size size = picture->size();
    return ZentavoUtiltiy::resizeImageIfNeeded(
        picture, std::min(largest.width, std::max(1.0, size.width * largest.height / size.height)));
}

} // namespace

ImageLoader::ImageLoader(std::shared_ptr<platform::Platform> system, std::shared_ptr<DebugLog> log)
    : system_(std::move(system)), log_(std::move(log)),
      queue_(system_->queues->make("zentavo.push.images", platform::QueueKind::concurrent)) {}

void ImageLoader::download(const std::shared_ptr<platform::Platform>& system, const std::shared_ptr<DebugLog>& log,
                           const URL& url, const std::shared_ptr<platform::DispatchQueue>& on, Completion completion) {
    const auto images = system->userInterface()->images;
    auto request = std::make_shared<platform::URLRequest>(url);
    request->maximumAnswerBytes = maximumBytes;
    request->idleTimeout = std::chrono::seconds(20);
    request->totalTimeout = std::chrono::minutes(1);
    system->urlSession->start(std::move(request), on,
                              [images, log, completion = std::move(completion)](const platform::URLResult& result) {
                                  entryPoint("completion", [&] {
                                      Picture picture;
                                      if (result.error) {
                                          log->write("Error downloading image: " + result.error->message);
                                      } else {
                                          picture = images && result.data ? images->decode(*result.data) : nullptr;
                                          if (!picture) {
                                              log->write("Invalid data or unable to create image from data.");
                                          }
                                      }
                                      completion(std::move(picture));
                                  });
                              });
}

void ImageLoader::load(const std::string& url, Completion completion) {
    const auto mainQueue = system_->userInterface()->mainQueue;
    const auto target = URL::parse(url);
    const Picture known = cache_.find(url);
    if (known || !target || !target->isHTTP()) {
        mainQueue->async(
            [known, completion = std::move(completion)] { entryPoint("completion", [&] { completion(known); }); });
        return;
    }
    auto& waiting = waiting_[url];
    waiting.push_back(std::move(completion));
    if (waiting.size() > 1) {
        return;
    }
    download(system_, log_, *target, queue_, [weak = weak_from_this(), url, mainQueue](const Picture& picture) {
        mainQueue->async([weak, url, picture = reduced(picture)] {
            if (const auto self = weak.lock()) {
                self->finish(url, picture);
            }
        });
    });
}

void ImageLoader::finish(const std::string& url, const Picture& picture) {
    if (picture) {
        cache_.put(url, picture);
    }
    const auto waiting = std::move(waiting_[url]);
    waiting_.erase(url);
    for (const Completion& each : waiting) {
        entryPoint("completion", [&] { each(picture); });
    }
}

} // namespace zentavo
