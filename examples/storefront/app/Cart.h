#pragma once

#include <functional>
#include <vector>

#include "Product.h"

namespace storefront {

/// What the customer wants to buy.
class Cart {
public:
    struct Line {
        const Product* product;
        int quantity;
    };

    void add(const Product& product);
    /// Takes one away; the last one takes the line with it.
    void remove(const Product& product);
    void clear();

    const std::vector<Line>& lines() const { return lines_; }
    int count() const;
    double total() const;

    /// Called after every change.
    std::function<void()> onChange;

private:
    void changed();
    std::vector<Line> lines_;
};

} // namespace storefront
