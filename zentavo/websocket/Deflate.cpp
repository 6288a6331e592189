#include "zentavo/websocket/Deflate.h"

#include <algorithm>
#include <array>
#include <climits>

#include <zlib.h>

namespace zentavo::websocket {
namespace {

constexpr std::string_view flushTail("\x00\x00\xFF\xFF", 4);
constexpr std::size_t shortPart = 1024;
// Room that one large message took is given back with the next one.
constexpr std::size_t keptSize = std::size_t{4} << 20U;

// zlib only reads through this pointer.
Bytef* input(std::string_view bytes) { return reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data())); }

} // namespace

struct Deflater::State {
    z_stream stream{};
    bool made = false;
    ~State() {
        if (made) {
            deflateEnd(&stream);
        }
    }
};

Deflater::Deflater(int windowBits, bool takeover, int level)
    // zlib refuses raw deflate with 8 bits. With 9 it never reaches back more than 250 bytes (the window without the
    // longest match and its look-ahead), which a reader with 8 bits can follow.
    : windowBits_(std::max(windowBits, 9)), takeover_(takeover), level_(level) {}

Deflater::~Deflater() = default;

std::string_view Deflater::compress(std::string_view message) {
    if (!state_) {
        state_ = std::make_unique<State>();
        state_->made = deflateInit2(&state_->stream, level_, Z_DEFLATED, -windowBits_, 8, Z_DEFAULT_STRATEGY) == Z_OK;
    }
    if (!state_->made || message.empty()) {
        return {};
    }
    z_stream& stream = state_->stream;
    // What a flush adds to the bound of a whole stream is a few bytes for each of its blocks.
    const std::size_t bound = deflateBound(&stream, message.size()) + 32;
    if (out_.size() < bound) {
        out_.resize(bound);
    } else if (out_.size() > keptSize && bound <= keptSize) {
        out_ = std::string(bound, '\0');
    }
    std::size_t written = 0;
    std::string_view rest = message;
    do {
        const auto taken = static_cast<uInt>(std::min<std::size_t>(rest.size(), UINT_MAX / 2));
        stream.next_in = input(rest);
        stream.avail_in = taken;
        rest.remove_prefix(taken);
        do {
            if (out_.size() - written < 64) {
                out_.resize(out_.size() * 2);
            }
            const auto room = static_cast<uInt>(std::min<std::size_t>(out_.size() - written, UINT_MAX / 2));
            stream.next_out = reinterpret_cast<Bytef*>(out_.data() + written);
            stream.avail_out = room;
            deflate(&stream, rest.empty() ? Z_SYNC_FLUSH : Z_NO_FLUSH);
            written += room - stream.avail_out;
        } while (stream.avail_out == 0);
    } while (!rest.empty());
    if (!takeover_) {
        deflateReset(&stream);
    }
    return std::string_view(out_).substr(0, written - flushTail.size());
}

struct Inflater::State {
    z_stream stream{};
    bool made = false;
    ~State() {
        if (made) {
            inflateEnd(&stream);
        }
    }
};

Inflater::Inflater(int windowBits, bool takeover) : windowBits_(windowBits), takeover_(takeover) {}
Inflater::~Inflater() = default;

std::size_t Inflater::makeRoom(std::string& out, std::size_t written, std::size_t wanted, std::size_t limit) {
    // One byte more than allowed, to tell a message of exactly the limit from a longer one.
    const std::size_t left = limit - std::min(limit, written);
    const std::size_t room = left < wanted ? left + 1 : wanted;
    out.resize(written + room);
    prepared_ += room;
    return room;
}

Inflater::Outcome Inflater::run(std::string_view part, std::string& out, std::size_t limit) {
    z_stream& stream = state_->stream;
    stream.next_in = input(part);
    stream.avail_in = static_cast<uInt>(part.size());
    // Room is made in proportion to what came, and again only when it is used up: however many blocks a peer makes of
    // its bytes, the work is in proportion to what they and their expansion measure.
    const std::size_t wanted = std::clamp<std::size_t>(part.size() * 4, 1024, 262144);
    std::size_t written = out.size();
    stream.avail_out = 0;
    const auto end = [&](Outcome outcome) {
        out.resize(written);
        return outcome;
    };
    for (;;) {
        if (stream.avail_out == 0) {
            stream.avail_out = static_cast<uInt>(makeRoom(out, written, wanted, limit));
            stream.next_out = reinterpret_cast<Bytef*>(out.data() + written);
        }
        const int code = inflate(&stream, Z_SYNC_FLUSH);
        written = out.size() - stream.avail_out;
        if (written > limit) {
            return end(Outcome::tooLarge);
        }
        if (code == Z_STREAM_END) {
            // A peer may mark a block as its last and go on with another. The window stays where it is: copied out and
            // in again it would cost 64 KiB for a block of two bytes.
            if (inflateResetKeep(&stream) != Z_OK) {
                return end(Outcome::corrupt);
            }
            if (stream.avail_in == 0) {
                return end(Outcome::ok);
            }
        } else if (code == Z_BUF_ERROR || (code == Z_OK && stream.avail_out != 0 && stream.avail_in == 0)) {
            return end(Outcome::ok);
        } else if (code != Z_OK) {
            return end(Outcome::corrupt);
        }
    }
}

Inflater::Outcome Inflater::expand(std::string_view part, bool last, std::string& out, std::size_t limit) {
    if (!state_) {
        state_ = std::make_unique<State>();
        state_->made = inflateInit2(&state_->stream, -windowBits_) == Z_OK;
    }
    if (!state_->made) {
        return Outcome::corrupt;
    }
    // A short message and what belongs behind it are one turn of zlib's: a second one would cost as much as the first.
    std::array<char, shortPart + flushTail.size()> whole;
    const bool together = last && part.size() <= shortPart;
    if (together) {
        std::copy(flushTail.begin(), flushTail.end(), std::copy(part.begin(), part.end(), whole.begin()));
        part = {whole.data(), part.size() + flushTail.size()};
    }
    while (!part.empty()) {
        const std::string_view some = part.substr(0, UINT_MAX / 8);
        part.remove_prefix(some.size());
        const Outcome outcome = run(some, out, limit);
        if (outcome != Outcome::ok) {
            return outcome;
        }
    }
    if (!last) {
        return Outcome::ok;
    }
    const Outcome outcome = together ? Outcome::ok : run(flushTail, out, limit);
    if (outcome == Outcome::ok && !takeover_ && inflateReset(&state_->stream) != Z_OK) {
        return Outcome::corrupt;
    }
    return outcome;
}

} // namespace zentavo::websocket
