#pragma once

#include <cstddef>

namespace zentavo::websocket {

/// Decides how long the other end of a connection is waited for. It has no clock: who holds the timer tells what has
/// happened and asks whenever a time is over. One thread.
///
/// Bytes that the network takes are a sign of life only where it had been full: its own buffers take some from us also
/// when nobody is there any more.
class Patience {
public:
    enum class Verdict { alive, ask, gone };

    /// Something has come. True when that ends a time of doubt.
    bool heard() noexcept;
    /// The network has taken so many bytes.
    void wrote(std::size_t size) noexcept { wrote_ += size; }

    /// At the end of an interval, or after `ask` of the time to answer. `full`: the network does not take all that is to
    /// be sent; where it is, a ping would only stand in line, and its place is taken by what moves. `deaf`: we do not
    /// read.
    Verdict judge(bool full, bool deaf) noexcept;

    /// The goodbye begins, which may stand behind much that was sent before.
    void beginGoodbye() noexcept { wrote_ = 0; }
    /// At the end of a time in which the goodbye has not left: whether there may be another. So much must have moved
    /// that the whole is bounded by what can wait to be sent.
    bool mayTakeLonger() noexcept;

private:
    static constexpr std::size_t leastProgress = 65536;

    std::size_t wrote_ = 0;
    bool heard_ = false;
    bool asked_ = false;
    bool wasFull_ = false;
};

} // namespace zentavo::websocket
