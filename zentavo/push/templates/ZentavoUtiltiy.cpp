#include "zentavo/push/templates/ZentavoUtiltiy.h"

#include <algorithm>
#include <utility>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/push/templates/ImageLoader.h"

namespace zentavo {

namespace {

/// Pictures under way. The last one to end, whoever that is, hands the list over.
class Group {
public:
    Group(std::size_t count, std::shared_ptr<platform::MainQueue> queue,
          std::function<void(std::vector<ZentavoUtiltiy::Picture>)> completion)
        : queue_(std::move(queue)), completion_(std::move(completion)), left_(count) {}

    void leave(ZentavoUtiltiy::Picture picture) {
        {
            MutexLock lock(mutex_);
            if (picture) {
                pictures_.push_back(std::move(picture));
            }
            if (--left_ > 0) {
                return;
            }
        }
        notify();
    }
    void notify() {
        std::vector<ZentavoUtiltiy::Picture> all;
        {
            MutexLock lock(mutex_);
            all.swap(pictures_);
        }
        queue_->async([all = std::move(all), completion = std::move(completion_)] {
            entryPoint("completion", [&] {
                if (completion) {
                    completion(all);
                }
            });
        });
    }

private:
    const std::shared_ptr<platform::MainQueue> queue_;
    std::function<void(std::vector<ZentavoUtiltiy::Picture>)> completion_;
    Mutex mutex_;
    std::vector<ZentavoUtiltiy::Picture> pictures_ ZENTAVO_GUARDED_BY(mutex_);
    std::size_t left_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace

void ZentavoUtiltiy::downloadImagesAndProcess(const std::vector<std::string>& imageURLs,
                                              std::function<void(std::vector<Picture>)> completion) {
    entryPoint("downloadImages", [&] {
        std::vector<URL> urls; // all of them before anything is asked for: a fault leaves nothing half done
        for (const std::string& text : imageURLs) {
            if (const auto url = URL::parse(text)) {
                urls.push_back(*url);
            } else {
                fatalError("the address of a picture is no URL: \"" + text + "\"");
            }
        }
        const auto sdk = Zentavo::shared();
        const Zentavo::State& state = *sdk->state();
        const auto group = std::make_shared<Group>(imageURLs.size(), state.platform->userInterface()->mainQueue,
                                                   std::move(completion));
        if (urls.empty()) {
            return group->notify();
        }
        const auto queue = state.platform->queues->make("zentavo.push.images", platform::QueueKind::concurrent);
        for (const URL& url : urls) {
            ImageLoader::download(state.platform, state.log, url, queue,
                                  [group](Picture picture) { group->leave(std::move(picture)); });
        }
    });
}

double ZentavoUtiltiy::heightForLabelView(const std::string& text, platform::Font font, double width, int line) {
    return entryPoint(
        "heightForLabelView",
        [&] {
            const auto views = Zentavo::shared()->state()->platform->userInterface()->views;
            return views ? views->textSize(text, font, width, std::max(0, line)).height : 0.0;
        },
        0.0);
}

ZentavoUtiltiy::Picture ZentavoUtiltiy::resizeImageIfNeeded(const Picture& image, double width) {
    if (!image || !(width >= 1) || image->size().width <= width) {
        return image;
    }
    const platform::Size size = image->size();
    return image->resized({width, std::max(1.0, size.height * width / size.width)});
}

} // namespace zentavo
