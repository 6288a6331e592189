#include "devserver/PictureService.h"

#include <algorithm>

#include "devserver/DeliveryService.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

constexpr std::string_view folder = "/pictures/";
constexpr std::string_view mediaHost = "https://media.shop.example";
constexpr const char* pictureKey = "image_url";

} // namespace

std::vector<Route> PictureService::routes() const { return {{"GET", folder, Route::Covers::below}}; }

Answer PictureService::answer(const IncomingRequest& request, std::string_view, Twin, const Map&, Findings&) {
    const std::string_view name = ServicePath::of(request.path).path.substr(folder.size());
    const auto pictures = builtInPictures();
    const auto picture = std::ranges::find(pictures, name, &EmbeddedFile::name);
    if (picture == pictures.end()) {
        return {404, {{"message", "there is no picture " + inQuotes(name)}}};
    }
    return {200, {}, std::string(picture->text), "image/svg+xml"};
}

Value PictureService::served(Value message, const IncomingRequest& request) {
    Map* map = message.asMap();
    const Value* picture = map != nullptr ? map->find(pictureKey) : nullptr;
    const std::string* url = picture != nullptr ? picture->asString() : nullptr;
    if (url != nullptr && url->starts_with(std::string(mediaHost) + std::string(folder))) {
        map->set(pictureKey, serverURL(request) + url->substr(mediaHost.size()));
    }
    return message;
}

} // namespace zentavo::devserver
