// A stranger's app on the real port. Nobody listens at the discard port: what is sent is lost, and the app does not care.
#include <cstdio>

#include <zentavo/Zentavo.h>

int main() {
    const auto sdk = zentavo::Zentavo::shared();
    sdk->setEndpoints(zentavo::Endpoints::all("http://127.0.0.1:9"));
    sdk->activate(zentavo::Configuration{"33167", "555", "group.shop", "42"});
    sdk->setUid("visitor-1");
    sdk->trackScreen("Home", "Home page", "main");
    std::printf("zentavo %s: visitor %s\n", zentavo::Zentavo::SDK_VERSION.data(), sdk->getUid().c_str());
    return sdk->getUid() == "visitor-1" ? 0 : 1;
}
