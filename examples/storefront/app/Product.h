#pragma once

#include <string>
#include <vector>

namespace storefront {

enum class Shape { shoe, bottle, backpack, jacket, cap, watch };

/// Something that the shop sells.
struct Product {
    std::string sku;
    std::string name;
    std::string tagline;
    std::string description;
    std::string category;
    double price; ///< in euros
    Shape shape;
    std::string colour; ///< "#rrggbb", of the thing itself
};

/// All there is.
const std::vector<Product>& products();

/// "49.90 €".
std::string priceText(double price);

} // namespace storefront
