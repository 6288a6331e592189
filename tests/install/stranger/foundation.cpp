// A stranger who wants values and JSON, and nothing else.
#include <cstdio>

#include <zentavo/foundation/JSON.h>
#include <zentavo/foundation/Version.h>

int main() {
    const auto map = zentavo::json::readMap(R"({"sku":"A1","price":9.5})");
    if (!map) {
        return 1;
    }
    const auto text = zentavo::json::write(*map);
    if (!text || *text != R"({"sku":"A1","price":9.5})") {
        return 1;
    }
    std::printf("foundation %s: %s\n", ZENTAVO_VERSION, text->c_str());
    return 0;
}
