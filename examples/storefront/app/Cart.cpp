#include "Cart.h"

#include <algorithm>
#include <numeric>

namespace storefront {

void Cart::add(const Product& product) {
    const auto line = std::ranges::find(lines_, &product, &Line::product);
    if (line == lines_.end()) {
        lines_.push_back({&product, 1});
    } else {
        ++line->quantity;
    }
    changed();
}

void Cart::remove(const Product& product) {
    const auto line = std::ranges::find(lines_, &product, &Line::product);
    if (line == lines_.end()) {
        return;
    }
    if (--line->quantity == 0) {
        lines_.erase(line);
    }
    changed();
}

void Cart::clear() {
    lines_.clear();
    changed();
}

int Cart::count() const {
    return std::accumulate(lines_.begin(), lines_.end(), 0,
                           [](int sum, const Line& line) { return sum + line.quantity; });
}

double Cart::total() const {
    return std::accumulate(lines_.begin(), lines_.end(), 0.0,
                           [](double sum, const Line& line) { return sum + line.quantity * line.product->price; });
}

void Cart::changed() {
    if (onChange) {
        onChange();
    }
}

} // namespace storefront
