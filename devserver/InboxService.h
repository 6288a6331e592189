#pragma once

#include <memory>
#include <string>

#include "devserver/InboxMessages.h"
#include "devserver/InboxStore.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// The app inbox: pages, catalogs, counts, single messages and status changes. The platform runs it once, without a
/// sandbox twin, so it does not ask which portal came where.
class InboxService final : public Service {
public:
    explicit InboxService(std::unique_ptr<InboxStore> store) : store_(std::move(store)) {}

    std::vector<Route> routes() const override;
    Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                  Findings& findings) override;

    /// {"catalogs": […], "messages": […]}: all there is, with what users did with it.
    Map everything() const;
    /// Adds a message that somebody wrote by hand; empty when there are problems.
    std::string add(const Map& message, Problems& problems);

private:
    Answer page(const Map& body, Findings& findings) const;
    Answer catalogs(const IncomingRequest& request, const Map& body, Findings& findings) const;
    Answer count(const Map& body, Findings& findings) const;
    Answer message(const std::string& id, const Map& body, Findings& findings) const;
    Answer modify(const Map& body, Findings& findings) const;
    Answer markAllAsRead(const Map& body, Findings& findings) const;

    const std::unique_ptr<InboxStore> store_;
};

} // namespace zentavo::devserver
