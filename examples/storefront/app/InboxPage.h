#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/listbox.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/stack.h>
#include <gtkmm/togglebutton.h>
#include <zentavo/Zentavo.h>

#include "MessageRow.h"

namespace storefront {

/// The messages that the shop has for this customer: catalogs as filters, pages that come as one scrolls, and what one
/// does with a message. Everything on the main thread.
class InboxPage : public Gtk::Box {
public:
    struct Services {
        std::shared_ptr<zentavo::Zentavo> sdk;
        MessageRow::Pictures pictures;
        std::function<void(const zentavo::URL&)> open;
        std::function<void(std::int64_t)> unreadChanged;
    };
    explicit InboxPage(Services services);
    ~InboxPage() override;

    /// Asks for catalogs, the number of unread messages and the first page anew.
    void refresh();
    void askForUnread();
    /// Shows the messages of one catalog; of all of them where `catalog` is empty.
    void filter(const std::string& catalog);
    void open(MessageRow& row);
    void remove(MessageRow& row);
    void markAllAsRead();

    /// What is to be seen: "waiting", "messages", "empty" or "problem".
    std::string state() const { return stack_.get_visible_child_name(); }
    /// The messages that are to be seen, the newest first.
    std::vector<MessageRow*> rows();
    /// Whether it says that a change was not kept and what it was about is as before.
    bool saysUndone() const { return undone_.get_visible(); }
    /// Whether the service has been seen to have made, or not made, each of the user's changes.
    bool isSure() const { return unsure_ == 0; }

private:
    /// What the user has made of a message, shown before the service has done so.
    struct Change {
        std::string itemId;
        bool removed; ///< else read
    };
    void choose(const std::string& catalog);
    enum class Fill { anew, further };
    void askForPage(std::int64_t page, Fill fill);
    void showPage(std::int64_t page, Fill fill, std::vector<zentavo::InboxItem> items);
    void showWhatIsThere();
    void showCatalogs(const std::vector<zentavo::Catalog>& catalogs);
    /// What the user has just made of the number of unread messages, until the service says what it is.
    void changeUnread(std::int64_t count);
    void setUnread(std::int64_t count);
    /// The page of the service's that has this row now.
    std::int64_t pageOf(const MessageRow& row);
    /// Asks for `page` once the service has had time for `changes`, and takes them back where it has not made them.
    void makeSure(std::int64_t page, std::vector<Change> changes);
    void takeBack(const std::vector<Change>& changes);
    bool canScroll() const;
    void showProblem();

    /// `block` for a completion: it runs on the main thread, unless the page is gone by then.
    template <class Block>
    auto later(Block block);
    /// Runs `block` after that time, unless the page is gone by then.
    template <class Block>
    void soon(unsigned milliseconds, Block block);

    const Services services_;
    /// Gone with the page; what comes later sees that.
    const std::shared_ptr<int> alive_ = std::make_shared<int>(0);

    Gtk::Box bar_{Gtk::Orientation::HORIZONTAL};
    Gtk::Box filters_{Gtk::Orientation::HORIZONTAL};
    Gtk::Button markAll_{"Mark all as read"};
    Gtk::Button refresh_;
    Gtk::Stack stack_;
    Gtk::ScrolledWindow scroller_;
    Gtk::ListBox list_;
    Gtk::Label undone_{"That did not work, so it is as it was."};

    std::string catalog_; ///< empty: all
    std::map<std::string, Gtk::ToggleButton*> filterButtons_;
    std::set<std::string> known_; ///< the messages that have a row
    std::int64_t page_ = 0;
    std::int64_t unread_ = 0;
    std::uint64_t change_ = 0; ///< the user's latest
    int unsure_ = 0;           ///< changes of which it is not known yet whether the service has made them
    bool asking_ = false;
    bool complete_ = false;      ///< there is no further page
    std::uint64_t undoing_ = 0;  ///< the latest time that a change was taken back
    std::uint64_t question_ = 0; ///< of the newest request; answers to earlier ones are dropped
};

} // namespace storefront
