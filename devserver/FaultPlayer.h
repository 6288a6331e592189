#pragma once

#include <httplib.h>

#include "devserver/Connection.h"
#include "devserver/ScriptedFault.h"
#include "devserver/Slots.h"

namespace zentavo::devserver {

/// Answers requests, as they should be or as a fault says. For any thread; must outlive the answers.
class FaultPlayer {
public:
    /// So many answers may be slow or hang at a time.
    static constexpr int maximumSlow = 256;

    /// What the client will see as the status; none when it gets no answer.
    static std::optional<int> statusOf(const ScriptedFault* fault, const Answer& answer);

    /// `fault` may be null. Returns when the answer may be written; what goes out drop by drop is written after that, on
    /// the same thread.
    void play(const ScriptedFault* fault, Answer answer, Connection& connection, httplib::Response& response);

private:
    void dripOrFill(const ScriptedFault& fault, std::string body, const std::string& type, std::shared_ptr<void> slot,
                    Connection& connection, httplib::Response& response);

    Slots slow_{maximumSlow};
};

} // namespace zentavo::devserver
