#include "zentavo/push/templates/RatingIcons.h"

namespace zentavo {

std::string ratingIconURL(std::string_view mediaHost, std::string_view icon) {
    struct Known {
        std::string_view name;
        std::string_view file;
    };
    static constexpr Known known[] = {
        {"Star.Selected", "star_selected.png"},
        {"Star.Unselected", "star_unselected.png"},
        {"StarBorder.Selected", "star_border_selected.png"},
        {"StarBorder.Unselected", "star_border_unselected.png"},
        {"Favorite.Selected", "favorite_selected.png"},
        {"Favorite.Unselected", "favorite_unselected.png"},
        {"FavoriteBorder.Selected", "favorite_border_selected.png"},
        {"FavoriteBorder.Unselected", "favorite_border_unselected.png"},
    };
    for (const Known& each : known) {
        if (each.name == icon) {
            return std::string(mediaHost) + "/icons/rating_icon/" + std::string(each.file);
        }
    }
    return std::string(icon);
}

} // namespace zentavo
