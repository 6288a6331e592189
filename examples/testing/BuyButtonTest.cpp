#include <cstdlib>
#include <iostream>

#include <ports/memory/MemoryPlatform.h>
#include <zentavo/Zentavo.h>
#include <zentavo/foundation/JSON.h>

using namespace zentavo;

// What the shop does when somebody taps "Buy".
void onBuyTapped(const std::string& sku, double price) {
    CDPEvent event("purchase", {{{"sku", sku}, {"price", price}}});
    Zentavo::shared()->track(event);
}

int main() {
    testing::MemoryPlatform system; // a still clock, queues turned by hand, a scripted network, a store in memory
    Zentavo::setShared(std::make_shared<Zentavo>(system.platform()));
    Zentavo::shared()->activate(Configuration{"1001", "555", "group.shop", "42"});
    system.session->clear(); // forget the install event

    onBuyTapped("A1", 9.5);

    const auto request = system.session->requests().at(0);
    const Map body = json::readMap(*request->body).value();
    const bool tracked = request->url.path() == "/event" && *body.find("en") == "purchase" &&
                         *body.find("items") == Value(List{Map{{"sku", "A1"}, {"price", 9.5}}});
    std::cout << (tracked ? "a tap on Buy tracks a purchase\n" : "the purchase was not tracked\n");
    return tracked ? EXIT_SUCCESS : EXIT_FAILURE;
}
