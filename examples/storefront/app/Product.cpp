#include "Product.h"

#include <cstdio>

namespace storefront {

const std::vector<Product>& products() {
    static const std::vector<Product> all{
        {"SHOE-RUN-01", "Swift One", "Light for the long distance",
         "A running shoe of 210 grams with a sole that gives back what it takes. For road and park, in every weather.",
         "shoes/running", 129.90, Shape::shoe, "#e4572e"},
        {"PACK-DAY-02", "Day Pack 18", "Everything with you, nothing in the way",
         "Eighteen litres, a sleeve for a laptop, and straps that stay where they are put. Keeps rain out for an hour.",
         "bags", 79.00, Shape::backpack, "#2e86ab"},
        {"BOTTLE-03", "Still", "Cold for a day, hot for a morning",
         "Steel in two walls with nothing in between. Half a litre, and a lid that closes with one hand.", "kitchen",
         24.50, Shape::bottle, "#4c9f70"},
        {"JACKET-04", "Fjord", "For wind that has an opinion",
         "Three layers, sealed seams, a hood that turns with the head. Folds into its own pocket.", "clothing", 189.00,
         Shape::jacket, "#f2a541"},
        {"CAP-05", "Shade", "A cap and no slogan",
         "Cotton, dyed once, with a strap of leather. One size for nearly everybody.", "clothing", 19.90, Shape::cap,
         "#7d5ba6"},
        {"WATCH-06", "Minute", "Two hands, no messages",
         "Swiss movement, sapphire glass, forty metres under water. The strap changes without a tool.", "watches",
         219.00, Shape::watch, "#33415c"},
    };
    return all;
}

std::string priceText(double price) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f €", price);
    return text;
}

} // namespace storefront
