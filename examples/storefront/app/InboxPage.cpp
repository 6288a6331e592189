#include "InboxPage.h"

#include <algorithm>
#include <utility>

#include <glibmm/main.h>
#include <gtkmm/gestureswipe.h>
#include <gtkmm/label.h>
#include <gtkmm/spinner.h>
#include <gtkmm/togglebutton.h>

#include "MainThread.h"
#include "MessagePicture.h"
#include "Notice.h"

namespace storefront {

using zentavo::AppInbox;
using zentavo::Catalog;
using zentavo::InboxItem;
using zentavo::ModifyAction;

namespace {

constexpr std::int64_t unreadStatus = 1;
/// A request that has failed is told to nobody; after this time it counts as failed.
constexpr unsigned patienceMilliseconds = 10'000;
constexpr double swipeSpeed = 400; // points a second

/// "2026-11-03T09:00:00.000Z" as "3 November".
Glib::ustring dayText(const std::string& iso) {
    const auto time = Glib::DateTime::create_from_iso8601(iso);
    return time ? time.to_local().format("%e %B") : "";
}

Gtk::Label& label(const Glib::ustring& text, const Glib::ustring& style) {
    auto& made = *Gtk::make_managed<Gtk::Label>(text);
    made.set_xalign(0);
    made.add_css_class(style);
    return made;
}

} // namespace

template <class Block>
auto InboxPage::later(Block block) {
    return [alive = std::weak_ptr(alive_), block](auto answer) {
        onMainThread([alive, block, answer = std::move(answer)] {
            if (!alive.expired()) {
                block(answer);
            }
        });
    };
}

InboxPage::InboxPage(Services services) : Gtk::Box(Gtk::Orientation::VERTICAL), services_(std::move(services)) {
    add_css_class("inbox-page");
    bar_.add_css_class("inbox-bar");
    filters_.set_hexpand(true);
    filters_.add_css_class("filters");
    refresh_.set_icon_name("view-refresh-symbolic");
    refresh_.set_tooltip_text("Refresh");
    refresh_.add_css_class("flat");
    refresh_.signal_clicked().connect([this] { refresh(); });
    markAll_.add_css_class("flat");
    markAll_.signal_clicked().connect([this] { markAllAsRead(); });
    bar_.append(filters_);
    bar_.append(markAll_);
    bar_.append(refresh_);
    append(bar_);

    auto& waiting = *Gtk::make_managed<Gtk::Spinner>();
    waiting.set_size_request(32, 32);
    waiting.set_halign(Gtk::Align::CENTER);
    waiting.set_valign(Gtk::Align::CENTER);
    waiting.start();
    stack_.add(waiting, "waiting");
    list_.set_selection_mode(Gtk::SelectionMode::NONE);
    list_.add_css_class("messages");
    scroller_.set_child(list_);
    scroller_.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroller_.signal_edge_reached().connect([this](Gtk::PositionType edge) {
        if (edge == Gtk::PositionType::BOTTOM && !asking_ && !complete_) {
            askForPage(page_ + 1);
        }
    });
    scroller_.signal_edge_overshot().connect([this](Gtk::PositionType edge) {
        if (edge == Gtk::PositionType::TOP) {
            refresh();
        }
    });
    stack_.add(scroller_, "messages");
    stack_.add(*Gtk::make_managed<Notice>("mail-read-symbolic", "No messages", "News, offers and orders will be here."),
               "empty");
    stack_.add(*Gtk::make_managed<Notice>("network-error-symbolic", "That did not work",
                                          "The messages cannot be loaded at the moment.", "Try again",
                                          [this] { refresh(); }),
               "problem");
    stack_.set_vexpand(true);
    append(stack_);
}

InboxPage::~InboxPage() = default;

void InboxPage::refresh() {
    AppInbox& inbox = *services_.sdk->appInbox();
    inbox.fetchAllCatalog(later([this](const std::vector<Catalog>& catalogs) { showCatalogs(catalogs); }));
    askForUnread();
    stack_.set_visible_child("waiting");
    askForPage(1);
}

void InboxPage::askForUnread() {
    services_.sdk->appInbox()->countUnreadMessage(later([this](std::int64_t count) { setUnread(count); }));
}

void InboxPage::askForPage(std::int64_t page) {
    asking_ = true;
    const auto question = ++question_;
    const std::vector<std::string> catalogs = catalog_.empty() ? std::vector<std::string>{} : std::vector{catalog_};
    services_.sdk->appInbox()->forceFetchInboxItem(
        catalogs, page, later([this, page, question](const std::vector<InboxItem>& items) {
            if (question == question_) {
                showPage(page, items);
            }
        }));
    Glib::signal_timeout().connect_once(
        [this, question, alive = std::weak_ptr(alive_)] {
            if (!alive.expired() && question == question_ && asking_) {
                showProblem();
            }
        },
        patienceMilliseconds);
}

void InboxPage::showPage(std::int64_t page, std::vector<InboxItem> items) {
    asking_ = false;
    page_ = page;
    complete_ = std::cmp_less(items.size(), AppInbox::pageLimit());
    if (page == 1) {
        while (auto* row = list_.get_row_at_index(0)) {
            list_.remove(*row);
        }
    }
    for (const InboxItem& item : items) {
        addRow(item);
    }
    stack_.set_visible_child(list_.get_row_at_index(0) != nullptr ? "messages" : "empty");
}

void InboxPage::showProblem() {
    asking_ = false;
    if (page_ == 0 || stack_.get_visible_child_name() == "waiting") {
        stack_.set_visible_child("problem");
    }
}

void InboxPage::showCatalogs(const std::vector<Catalog>& catalogs) {
    while (auto* child = filters_.get_first_child()) {
        filters_.remove(*child);
    }
    Gtk::ToggleButton* first = nullptr;
    const auto add = [&](const Glib::ustring& name, const std::string& id) {
        auto& button = *Gtk::make_managed<Gtk::ToggleButton>(name);
        button.add_css_class("filter");
        if (first == nullptr) {
            first = &button;
        } else {
            button.set_group(*first);
        }
        button.set_active(id == catalog_);
        button.signal_toggled().connect([this, &button, id] {
            if (button.get_active() && id != catalog_) {
                catalog_ = id;
                stack_.set_visible_child("waiting");
                askForPage(1);
            }
        });
        filters_.append(button);
    };
    add("All", "");
    for (const Catalog& catalog : catalogs) {
        add(catalog.catalogName, catalog.catalogId);
    }
}

void InboxPage::addRow(const InboxItem& item) {
    auto& row = *Gtk::make_managed<Gtk::ListBoxRow>();
    row.add_css_class("message");
    const bool unread = item.status == unreadStatus;
    auto& content = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    content.add_css_class("row");

    auto& dot = *Gtk::make_managed<Gtk::Box>();
    dot.add_css_class("unread-dot");
    dot.set_valign(Gtk::Align::START);
    dot.set_opacity(unread ? 1 : 0);
    content.append(dot);

    auto& text = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    text.set_hexpand(true);
    auto& heading = label(item.heading, unread ? "unread-heading" : "read-heading");
    heading.set_ellipsize(Pango::EllipsizeMode::END);
    text.append(heading);
    auto& body = label(item.content, "message-text");
    body.set_wrap(true);
    body.set_lines(2);
    body.set_ellipsize(Pango::EllipsizeMode::END);
    text.append(body);
    text.append(label(dayText(item.dateCreated), "message-day"));
    content.append(text);

    if (item.imageUrl) {
        auto& picture = *Gtk::make_managed<MessagePicture>(*item.imageUrl, services_.network, services_.queue);
        content.append(picture);
    }
    auto& remove = *Gtk::make_managed<Gtk::Button>();
    remove.set_icon_name("user-trash-symbolic");
    remove.set_tooltip_text("Remove");
    remove.set_valign(Gtk::Align::CENTER);
    remove.add_css_class("flat");
    remove.signal_clicked().connect([this, id = item.itemId, unread, &row] { removeMessage(id, unread, row); });
    content.append(remove);

    const auto swipe = Gtk::GestureSwipe::create();
    swipe->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    swipe->signal_swipe().connect([this, id = item.itemId, unread, &row](double across, double) {
        if (across < -swipeSpeed) {
            removeMessage(id, unread, row);
        }
    });
    content.add_controller(swipe);

    row.set_child(content);
    list_.append(row);
    row.set_activatable(true);
    row.signal_activate().connect([this, item, &row, &dot, &heading] {
        dot.set_opacity(0);
        heading.remove_css_class("unread-heading");
        open(item);
    });
}

void InboxPage::open(const InboxItem& item) {
    if (item.status == unreadStatus && read_.insert(item.itemId).second) {
        services_.sdk->appInbox()->modifyMessageStatus({item.itemId}, ModifyAction::read);
        setUnread(unread_ - 1);
    }
    if (const auto& target = item.appUrl ? item.appUrl : item.lauchUrl) {
        services_.open(*target);
    }
}

void InboxPage::removeMessage(const std::string& id, bool unread, Gtk::ListBoxRow& row) {
    services_.sdk->appInbox()->modifyMessageStatus({id}, ModifyAction::remove);
    if (unread && !read_.contains(id)) {
        setUnread(unread_ - 1);
    }
    list_.remove(row);
    if (list_.get_row_at_index(0) == nullptr) {
        stack_.set_visible_child("empty");
    }
}

void InboxPage::markAllAsRead() {
    services_.sdk->appInbox()->markAllAsRead();
    setUnread(0);
    askForPage(1);
}

void InboxPage::setUnread(std::int64_t count) {
    unread_ = std::max<std::int64_t>(count, 0);
    markAll_.set_sensitive(unread_ > 0);
    services_.unreadChanged(unread_);
}

} // namespace storefront
