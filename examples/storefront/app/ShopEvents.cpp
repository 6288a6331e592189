#include "ShopEvents.h"

namespace storefront {

using zentavo::CDPEvent;
using zentavo::Map;

namespace {

Map item(const Product& product, int quantity) {
    return {{"sku", product.sku}, {"name", product.name}, {"price", product.price}, {"quantity", quantity}};
}

} // namespace

void ShopEvents::screen(const std::string& name, const std::string& title, const std::string& type) const {
    sdk_->trackScreen(name, title, type);
}

void ShopEvents::viewed(const Product& product) const {
    CDPEvent event(*sdk_, "view_product", {item(product, 1)});
    event.setEventProperties({{"category", product.category}});
    sdk_->track(event);
}

void ShopEvents::addedToCart(const Product& product) const {
    sdk_->track(CDPEvent(*sdk_, "add_to_cart", {item(product, 1)}));
}

void ShopEvents::removedFromCart(const Product& product) const {
    sdk_->track(CDPEvent(*sdk_, "remove_from_cart", {item(product, 1)}));
}

void ShopEvents::purchased(const Cart& cart) const {
    std::vector<Map> items;
    for (const Cart::Line& line : cart.lines()) {
        items.push_back(item(*line.product, line.quantity));
    }
    CDPEvent event(*sdk_, "purchase", std::move(items));
    event.setEventProperties({{"total", cart.total()}, {"currency", "EUR"}});
    sdk_->track(event);
}

void ShopEvents::happened(const std::string& name) const { sdk_->track(CDPEvent(*sdk_, name)); }

} // namespace storefront
