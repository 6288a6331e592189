#include "ports/linux/BinaryPlistCheck.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zentavo::linux_port {
namespace {

constexpr int maximumDepth = 64;
constexpr std::uint64_t maximumNodes = 20'000;
constexpr std::size_t trailerBytes = 32;

class Check {
public:
    explicit Check(std::string_view text) : text_(text) {}

    bool run() {
        const std::size_t trailer = text_.size() - trailerBytes;
        const auto offsetSize = number(trailer + 6, 1);
        const auto referenceSize = number(trailer + 7, 1);
        const auto count = number(trailer + 8, 8);
        const auto root = number(trailer + 16, 8);
        const auto table = number(trailer + 24, 8);
        if (!isSize(*offsetSize) || !isSize(*referenceSize) || *count > text_.size() || *root >= *count ||
            *table > trailer || *count * *offsetSize > trailer - *table) {
            return false;
        }
        offsetSize_ = *offsetSize;
        referenceSize_ = *referenceSize;
        table_ = *table;
        isOpen_.assign(*count, false);
        return visit(*root, 0);
    }

private:
    static bool isSize(std::uint64_t size) { return size >= 1 && size <= 8; }

    /// The big-endian number of `size` bytes at `position`; none where that is outside.
    std::optional<std::uint64_t> number(std::uint64_t position, std::uint64_t size) const {
        if (position > text_.size() || size > text_.size() - position) {
            return std::nullopt;
        }
        std::uint64_t result = 0;
        for (std::uint64_t i = 0; i < size; ++i) {
            result = result << 8U | static_cast<unsigned char>(text_[position + i]);
        }
        return result;
    }

    /// Walks the tree under `object` as a reader would, copies included. False when it is not to be followed.
    bool visit(std::uint64_t object, int depth) {
        if (object >= isOpen_.size() || isOpen_[object] || depth > maximumDepth || ++visits_ > maximumNodes) {
            return false;
        }
        const auto position = number(table_ + object * offsetSize_, offsetSize_);
        const auto marker = position ? number(*position, 1) : std::nullopt;
        if (!marker) {
            return false;
        }
        const std::uint64_t kind = *marker >> 4U;
        const bool isMap = kind == 0xD;
        if (!isMap && kind != 0xA && kind != 0xC) {
            return true;
        }
        std::uint64_t first = *position + 1;
        const auto items = itemCount(*marker & 0xFU, first);
        if (!items || *items > maximumNodes) {
            return false;
        }
        isOpen_[object] = true;
        for (std::uint64_t i = 0; i < *items * (isMap ? 2 : 1); ++i) {
            const auto reference = number(first + i * referenceSize_, referenceSize_);
            if (!reference || !visit(*reference, depth + 1)) {
                return false;
            }
        }
        isOpen_[object] = false;
        return true;
    }

    /// The length in a marker; 15 says that an integer object follows. Moves `position` behind it.
    std::optional<std::uint64_t> itemCount(std::uint64_t low, std::uint64_t& position) const {
        if (low != 0xF) {
            return low;
        }
        const auto marker = number(position, 1);
        if (!marker || (*marker & 0xF0U) != 0x10 || (*marker & 0xFU) > 3) {
            return std::nullopt;
        }
        const std::uint64_t size = std::uint64_t(1) << (*marker & 0xFU);
        const auto result = number(position + 1, size);
        position += 1 + size;
        return result;
    }

    const std::string_view text_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t table_ = 0;
    std::uint64_t visits_ = 0;
    /// The objects on the way from the root to the one that is looked at.
    std::vector<bool> isOpen_;
};

} // namespace

bool isHarmlessBinaryPlist(std::string_view text) {
    constexpr std::size_t magicBytes = 8;
    return text.size() >= magicBytes + trailerBytes && Check(text).run();
}

} // namespace zentavo::linux_port
