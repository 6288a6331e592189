#include <zentavo/Zentavo.h>

using namespace zentavo;

int main(int argc, char** argv) {
    auto sdk = Zentavo::shared();
    sdk->setDebug(true); // diagnostics on standard output
    sdk->setEndpoints(Endpoints::all(argc > 1 ? argv[1] : "http://127.0.0.1:8787"));
    sdk->activate(Configuration{/*portalId*/ "33167", /*propsId*/ "555", /*appGroupId*/ "group.shop",
                                /*applicationId*/ "42"});

    CDPEvent event("view_product", {{{"sku", "A1"}, {"price", 9.5}}}); // name and items
    event.setEventProperties({{"list", "home"}});
    sdk->track(event);
    sdk->trackScreen("Home", "Home page", "main");
    return 0; // what was handed over gets up to a second to leave
}
