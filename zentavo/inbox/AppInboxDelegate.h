#pragma once

#include "zentavo/inbox/InboxItem.h"

namespace zentavo {

/// Who wants to hear of new messages. For a delivery in real time, which this version does not have: nothing calls it yet.
class ZENTAVO_EXPORT AppInboxDelegate {
public:
    virtual ~AppInboxDelegate() = default;
    virtual void onNewMessage(const InboxItem& item) = 0;
};

} // namespace zentavo
