#pragma once

#include <cstdint>
#include <functional>

#include <gtkmm/box.h>
#include <gtkmm/label.h>
#include <gtkmm/listboxrow.h>
#include <zentavo/inbox/InboxItem.h>
#include <zentavo/inbox/ModifyAction.h>
#include <zentavo/platform/DispatchQueue.h>
#include <zentavo/platform/URLSession.h>

namespace storefront {

/// One message of the inbox as a row of its list.
class MessageRow : public Gtk::ListBoxRow {
public:
    static constexpr auto unreadStatus = static_cast<std::int64_t>(zentavo::ModifyAction::unread);

    struct Pictures {
        std::shared_ptr<zentavo::platform::URLSession> network;
        std::shared_ptr<zentavo::platform::DispatchQueue> queue; ///< where answers come
    };
    /// `remove` is called by the button, or by a swipe to the left.
    MessageRow(zentavo::InboxItem item, const Pictures& pictures, std::function<void(MessageRow&)> remove);

    const zentavo::InboxItem& item() const { return item_; }
    bool unread() const { return unread_; }
    void showRead();
    void showUnread();
    /// Gone for the user; the row itself stays in its list until that is filled anew. False when it was gone already.
    bool hide();
    /// Undoes `hide`.
    void bringBack();

private:
    const zentavo::InboxItem item_;
    bool unread_;
    bool hidden_ = false;
    Gtk::Box dot_;
    Gtk::Label heading_;
};

} // namespace storefront
