#pragma once

#include <memory>

#include <zentavo/Zentavo.h>

#include "Cart.h"

namespace storefront {

/// What happens in the shop, told to the SDK in the words of the shop's analysts.
class ShopEvents {
public:
    explicit ShopEvents(std::shared_ptr<zentavo::Zentavo> sdk) : sdk_(std::move(sdk)) {}

    void screen(const std::string& name, const std::string& title, const std::string& type) const;
    void viewed(const Product& product) const;
    void addedToCart(const Product& product) const;
    void removedFromCart(const Product& product) const;
    void purchased(const Cart& cart) const;
    /// An event that carries nothing but its name.
    void happened(const std::string& name) const;

private:
    const std::shared_ptr<zentavo::Zentavo> sdk_;
};

} // namespace storefront
