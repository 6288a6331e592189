#include "InboxPage.h"

#include <algorithm>
#include <utility>

#include <glibmm/main.h>
#include <gtkmm/adjustment.h>
#include <gtkmm/image.h>
#include <gtkmm/spinner.h>

#include "MainThread.h"
#include "MessageRow.h"
#include "Notice.h"

namespace storefront {

using zentavo::AppInbox;
using zentavo::Catalog;
using zentavo::InboxItem;
using zentavo::ModifyAction;

namespace {

/// A request that has failed is told to nobody; after this time it counts as failed.
constexpr unsigned patienceMilliseconds = 10'000;
/// Rows that were added have their sizes by then.
constexpr unsigned layoutMilliseconds = 100;
/// The service has done what it was asked for by then, as a rule.
constexpr unsigned settledMilliseconds = 500;
/// How long a notice stays.
constexpr unsigned noticeMilliseconds = 6'000;

Gtk::Widget& sign(const Glib::ustring& icon) {
    auto& image = *Gtk::make_managed<Gtk::Image>();
    image.set_from_icon_name(icon);
    image.set_pixel_size(48);
    return image;
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
    list_.signal_row_activated().connect([this](Gtk::ListBoxRow* row) { open(*static_cast<MessageRow*>(row)); });
    scroller_.set_child(list_);
    scroller_.set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    scroller_.signal_edge_reached().connect([this](Gtk::PositionType edge) {
        if (edge == Gtk::PositionType::BOTTOM && !asking_ && !complete_) {
            askForPage(page_ + 1, Fill::further);
        }
    });
    scroller_.signal_edge_overshot().connect([this](Gtk::PositionType edge) {
        if (edge == Gtk::PositionType::TOP) {
            refresh();
        }
    });
    stack_.add(scroller_, "messages");
    stack_.add(
        *Gtk::make_managed<Notice>(sign("mail-read-symbolic"), "No messages", "News, offers and orders will be here."),
        "empty");
    stack_.add(*Gtk::make_managed<Notice>(sign("network-error-symbolic"), "That did not work",
                                          "The messages cannot be loaded at the moment.", "Try again",
                                          [this] { refresh(); }),
               "problem");
    stack_.set_vexpand(true);
    append(stack_);
    undone_.add_css_class("undone");
    undone_.set_visible(false);
    append(undone_);
}

InboxPage::~InboxPage() = default;

template <class Block>
void InboxPage::soon(unsigned milliseconds, Block block) {
    Glib::signal_timeout().connect_once(
        [alive = std::weak_ptr(alive_), block] {
            if (!alive.expired()) {
                block();
            }
        },
        milliseconds);
}

void InboxPage::refresh() {
    AppInbox& inbox = *services_.sdk->appInbox();
    inbox.fetchAllCatalog(later([this](const std::vector<Catalog>& catalogs) { showCatalogs(catalogs); }));
    askForUnread();
    stack_.set_visible_child("waiting");
    askForPage(1, Fill::anew);
}

void InboxPage::askForUnread() {
    // A number from before the user's latest change is of no use: after a change it is asked for again.
    services_.sdk->appInbox()->countUnreadMessage(later([this, change = change_](std::int64_t count) {
        if (change == change_) {
            setUnread(count);
        }
    }));
}

void InboxPage::askForPage(std::int64_t page, Fill fill) {
    asking_ = true;
    const auto question = ++question_;
    const std::vector<std::string> catalogs = catalog_.empty() ? std::vector<std::string>{} : std::vector{catalog_};
    services_.sdk->appInbox()->forceFetchInboxItem(
        catalogs, page, later([this, page, fill, question](const std::vector<InboxItem>& items) {
            if (question == question_) {
                showPage(page, fill, items);
            }
        }));
    soon(patienceMilliseconds, [this, question] {
        if (question == question_ && asking_) {
            showProblem();
        }
    });
}

void InboxPage::showPage(std::int64_t page, Fill fill, std::vector<InboxItem> items) {
    asking_ = false;
    page_ = page;
    complete_ = std::cmp_less(items.size(), AppInbox::pageLimit());
    if (fill == Fill::anew) {
        known_.clear();
        while (auto* row = list_.get_row_at_index(0)) {
            list_.remove(*row);
        }
    }
    for (InboxItem& item : items) {
        if (known_.insert(item.itemId).second) {
            list_.append(*Gtk::make_managed<MessageRow>(std::move(item), services_.pictures,
                                                        [this](MessageRow& row) { remove(row); }));
        }
    }
    showWhatIsThere();
    // A page that does not fill the window cannot be scrolled, so nothing would ever ask for the next.
    soon(layoutMilliseconds, [this, question = question_] {
        if (question == question_ && !complete_ && !canScroll()) {
            askForPage(page_ + 1, Fill::further);
        }
    });
}

void InboxPage::showWhatIsThere() {
    if (!rows().empty()) {
        stack_.set_visible_child("messages");
    } else {
        stack_.set_visible_child(complete_ ? "empty" : "waiting");
    }
}

bool InboxPage::canScroll() const {
    const auto adjustment = scroller_.get_vadjustment();
    return adjustment->get_upper() > adjustment->get_page_size();
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
    filterButtons_.clear();
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
                choose(id);
            }
        });
        filters_.append(button);
        filterButtons_[id] = &button;
    };
    add("All", "");
    for (const Catalog& catalog : catalogs) {
        add(catalog.catalogName, catalog.catalogId);
    }
}

void InboxPage::filter(const std::string& catalog) {
    if (const auto button = filterButtons_.find(catalog); button != filterButtons_.end()) {
        button->second->set_active(true);
    }
}

void InboxPage::choose(const std::string& catalog) {
    catalog_ = catalog;
    stack_.set_visible_child("waiting");
    askForPage(1, Fill::anew);
}

std::vector<MessageRow*> InboxPage::rows() {
    std::vector<MessageRow*> rows;
    for (int i = 0; auto* row = static_cast<MessageRow*>(list_.get_row_at_index(i)); ++i) {
        if (row->get_visible()) {
            rows.push_back(row);
        }
    }
    return rows;
}

void InboxPage::open(MessageRow& row) {
    const InboxItem& item = row.item();
    if (row.unread()) {
        makeSure(pageOf(row), {{item.itemId, false}});
        row.showRead();
        services_.sdk->appInbox()->modifyMessageStatus({item.itemId}, ModifyAction::read);
        changeUnread(unread_ - 1);
    }
    if (const auto& target = item.appUrl ? item.appUrl : item.lauchUrl) {
        services_.open(*target);
    }
}

void InboxPage::remove(MessageRow& row) {
    const std::int64_t page = pageOf(row);
    if (!row.hide()) {
        return;
    }
    makeSure(page, {{row.item().itemId, true}});
    services_.sdk->appInbox()->modifyMessageStatus({row.item().itemId}, ModifyAction::remove);
    if (row.unread()) {
        changeUnread(unread_ - 1);
    }
    showWhatIsThere();
    // What came behind it moves up: once the service has done so, the last page has a message that is not here yet.
    soon(settledMilliseconds, [this] {
        if (!complete_) {
            askForPage(page_, Fill::further);
        }
    });
}

void InboxPage::markAllAsRead() {
    services_.sdk->appInbox()->markAllAsRead();
    std::vector<Change> changes;
    std::int64_t page = 1;
    for (MessageRow* row : rows()) {
        if (row->unread()) {
            page = changes.empty() ? pageOf(*row) : page;
            changes.push_back({row->item().itemId, false});
            row->showRead();
        }
    }
    if (!changes.empty()) {
        makeSure(page, std::move(changes));
    }
    changeUnread(0);
}

std::int64_t InboxPage::pageOf(const MessageRow& row) {
    const auto seen = rows();
    const auto before = std::find(seen.begin(), seen.end(), &row) - seen.begin();
    return before / AppInbox::pageLimit() + 1;
}

void InboxPage::makeSure(std::int64_t page, std::vector<Change> changes) {
    ++unsure_;
    const std::vector<std::string> catalogs = catalog_.empty() ? std::vector<std::string>{} : std::vector{catalog_};
    soon(settledMilliseconds, [this, page, catalogs, changes = std::move(changes)] {
        // Once: by the answer, or by its absence.
        const auto known = [this, changes, said = std::make_shared<bool>(false)](bool isUndone) {
            if (std::exchange(*said, true)) {
                return;
            }
            --unsure_;
            if (isUndone) {
                takeBack(changes);
            }
        };
        services_.sdk->appInbox()->forceFetchInboxItem(
            catalogs, page, later([changes, known](const std::vector<InboxItem>& items) {
                const bool isUndone = std::ranges::any_of(changes, [&](const Change& change) {
                    const auto item = std::ranges::find(items, change.itemId, &InboxItem::itemId);
                    return item != items.end() && (change.removed || item->status == MessageRow::unreadStatus);
                });
                known(isUndone);
            }));
        soon(patienceMilliseconds, [known] { known(true); });
    });
}

void InboxPage::takeBack(const std::vector<Change>& changes) {
    for (int i = 0; auto* row = static_cast<MessageRow*>(list_.get_row_at_index(i)); ++i) {
        const auto change = std::ranges::find(changes, row->item().itemId, &Change::itemId);
        if (change == changes.end()) {
            continue;
        }
        if (change->removed) {
            row->bringBack();
        } else {
            row->showUnread();
        }
    }
    if (state() == "empty") {
        showWhatIsThere();
    }
    const auto seen = rows();
    changeUnread(std::max<std::int64_t>(unread_, std::ranges::count_if(seen, &MessageRow::unread)));
    undone_.set_visible(true);
    soon(noticeMilliseconds, [this, undoing = ++undoing_] {
        if (undoing == undoing_) {
            undone_.set_visible(false);
        }
    });
}

void InboxPage::changeUnread(std::int64_t count) {
    setUnread(count);
    // A change says nothing of its success, so the service is asked what it made of it.
    soon(settledMilliseconds, [this, change = ++change_] {
        if (change == change_) {
            askForUnread();
        }
    });
}

void InboxPage::setUnread(std::int64_t count) {
    unread_ = std::max<std::int64_t>(count, 0);
    markAll_.set_sensitive(unread_ > 0);
    services_.unreadChanged(unread_);
}

} // namespace storefront
