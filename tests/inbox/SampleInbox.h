#pragma once

#include <string>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

/// A message as the service sends it, every optional field absent.
inline Map plainItem(const std::string& id = "m1") {
    return Map{{"item_id", id},
               {"item_type", "message"},
               {"destination_id", 77},
               {"last_updated", "2026-11-05T09:03:07Z"},
               {"heading", "Winter sale"},
               {"date_created", "2026-11-04T08:00:00Z"},
               {"catalog_ids", List{"c1", "c2"}},
               {"lookup_type", "customer"},
               {"template_id", "t1"},
               {"content", "Everything at half price."},
               {"status", 1}};
}

/// The same with every optional field.
inline Map fullItem(const std::string& id = "m2") {
    Map item = plainItem(id);
    for (const char* key : {"launch_url", "app_url", "image_url", "button_app_url_1", "button_app_url_2",
                            "button_launch_url_1", "button_launch_url_2", "tracking_url"}) {
        item.set(key, std::string("https://shop.example/") + key + "?a=b");
    }
    item.set("button_label_1", "Go");
    item.set("button_label_2", "Later");
    return item;
}

inline Map answerWith(Value data) { return Map{{"data", std::move(data)}, {"code", 200}, {"message", "ok"}}; }
inline Map pageOf(List items) { return answerWith(Map{{"entries", std::move(items)}}); }
inline std::string textOf(const Map& map) { return json::write(map).value(); }

} // namespace zentavo
