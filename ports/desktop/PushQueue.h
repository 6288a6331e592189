#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "ports/desktop/PushMessage.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/platform/NotificationServiceExtension.h"
#include "zentavo/platform/Platform.h"

namespace zentavo::desktop {

/// Pushes between their arrival and the notification centre. One after the other, in order of arrival, is rewritten by
/// an extension, where it asks for that, and added. An extension that takes longer than `patience` (it fetches a picture)
/// does not hold up the next push: that is rewritten beside it, and may be shown first. What was overtaken leaves the
/// number on the app's icon to the later push.
///
/// What cannot be rewritten in time, or at all, is shown as it came. A push is not shown only where the notification
/// centre refuses it, with a line in the log, or this object goes first.
class ZENTAVO_EXPORT PushQueue {
public:
    using ExtensionFactory = std::function<std::shared_ptr<platform::NotificationServiceExtension>()>;

    /// Of more that wait, the oldest are shown as they came.
    static constexpr std::size_t maximumWaiting = 100;
    /// How many are rewritten at once, each on a thread of its own.
    static constexpr std::size_t maximumAtOnce = 4;
    static constexpr std::chrono::seconds patience{2};
    /// When an extension is told that its time is over, and when it is left to itself.
    static constexpr std::chrono::seconds expiry{25};
    static constexpr std::chrono::seconds givingUp{30};
    /// The same in `finish`, which tells them at once.
    static constexpr std::chrono::seconds farewell{1};

    /// `makeExtension` is called on the queue, for each push that may be rewritten. Serial `queue` is where all of this
    /// happens: members are to be called there.
    PushQueue(std::shared_ptr<platform::Platform> platform, std::shared_ptr<platform::DispatchQueue> queue,
              ExtensionFactory makeExtension);
    /// What has not been shown never will be. Any thread.
    ~PushQueue();
    PushQueue(const PushQueue&) = delete;
    PushQueue& operator=(const PushQueue&) = delete;

    /// `identifier` is the notification's, also as the extension sees it; empty: one is drawn. `settled` is called when
    /// the notification centre has taken the push, or refused it: on whatever thread it says so.
    void add(PushMessage message, std::string identifier = {}, std::function<void()> settled = {});
    /// Whether a push is under way.
    bool busy() const;
    /// Shows what waits as it came, and tells extensions that their time is over. `done` is called on the queue when
    /// nothing is under way any more.
    void finish(std::function<void()> done);

private:
    class State;
    const std::shared_ptr<State> state_;
};

} // namespace zentavo::desktop
