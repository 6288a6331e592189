#include "tools/push-lint/PushLint.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "tools/push-lint/UnknownFields.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/SingleLine.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/push/NotificationProperties.h"
#include "zentavo/push/PushTemplate.h"
#include "zentavo/push/ZentavoNotificationService.h"
#include "zentavo/push/templates/PushTemplateLayout.h"

namespace zentavo::tools {

namespace {

/// What push services carry at most.
constexpr std::size_t maximumPushBytes = 4096;
/// What is left of that where the push is encrypted for its receiver: salt (16), record size (4), the sender's key and
/// its length (65 + 1), end mark (1) and tag (16) travel with it.
constexpr std::size_t maximumEncryptedPushBytes = maximumPushBytes - 103;
/// What systems take of the structure; deeper or larger ones are refused however few bytes they have.
constexpr json::Limits limits{16U << 20U, 32, 2'000};

std::string quoted(std::string text) {
    makeSingleLine(text);
    return '"' + text + '"';
}

bool isURL(const std::string& text) { return URL::parse(text).has_value(); }

/// Why systems open nothing where they are asked to open `text`; null where they do.
const char* whyNotOpened(const std::string& text) {
    const auto url = URL::parse(text);
    if (!url) {
        return "is no URL";
    }
    if (url->scheme().empty()) {
        return "does not begin with a scheme, as https: is one";
    }
    return url->scheme() == "file" ? "is a file, which is not opened" : nullptr;
}

bool hasText(const Map& map, const char* key) {
    const Value* value = map.find(key);
    const std::string* text = value != nullptr ? value->asString() : nullptr;
    return text != nullptr && !text->empty();
}

/// Whether there is something to show: "alert" is the body, or a map with one of its texts.
bool isShown(const Map& aps) {
    const Value* alert = aps.find("alert");
    const Map* parts = alert != nullptr ? alert->asMap() : nullptr;
    return parts != nullptr ? hasText(*parts, "title") || hasText(*parts, "subtitle") || hasText(*parts, "body")
                            : hasText(aps, "alert");
}

/// Whether the sender means a push without text to be silent, also where the rest of it cannot be read.
bool isMeantToBeSilent(const Map& aps) {
    const Value* available = aps.find("content-available");
    const bool* silent = available != nullptr ? available->asBool() : nullptr;
    return silent != nullptr && *silent;
}

class Linter {
public:
    explicit Linter(PushReport& report) : report_(report) {}

    void judge(const NotificationProperties& p, bool isShown) {
        if (!isShown && p.contentAvailable == true) {
            say("Silent: nothing is shown, and no extension is asked.");
            return;
        }
        arrival(p);
        layout(p);
        click(p);
        buttons(p);
        hostIsTold(p);
    }

private:
    void warn(std::string text) { report_.warnings.push_back(std::move(text)); }
    void say(std::string text) { report_.facts.push_back(std::move(text)); }

    void arrival(const NotificationProperties& p) {
        if (p.mutableContent != 1) {
            warn("\"mutable-content\" is not 1: a system may show the push without starting the service extension, and "
                 "then without image, badge and category");
        }
        say(p.sound ? "Sound: " + quoted(*p.sound) + ", where the system knows it." : "Sound: the system's default.");
        badge(p);
        if (!p.urlImageString) {
            say("Image: none.");
        } else if (const auto url = URL::parse(*p.urlImageString); url && url->isHTTP()) {
            say("Image: " + url->text() + ", attached when it is there within 25 seconds and has 10 MiB at most.");
        } else {
            warn("\"urlImageString\" is no http or https URL: the push is shown without an image");
        }
        if (!p.category) {
            say("Category: the notification keeps the one that the system gives it.");
        } else if (p.category->empty()) {
            say(std::string("Category: empty, so it becomes ") + ZentavoNotificationService::contentCategory + ".");
        } else {
            say("Category: " + quoted(*p.category) + " stays.");
        }
    }

    void badge(const NotificationProperties& p) {
        if (!p.badge) {
            say("Badge: stays as it is.");
            return;
        }
        const std::string value = std::to_string(p.badge->value);
        if (p.badge->type == "increase") {
            say("Badge: goes up by " + value + ".");
        } else if (p.badge->type == "set_to") {
            say("Badge: becomes " + value + ", or one more than it is where that is less.");
        } else if (p.badge->type == "do_not_set") {
            say("Badge: is cleared, and the count begins anew.");
        } else {
            warn("\"badge.type\" " + quoted(p.badge->type) +
                 " is not one of increase, set_to, do_not_set: the icon shows no number, and the count goes on");
        }
    }

    void layout(const NotificationProperties& p) {
        const std::string name = p.template_.value_or("");
        if (!name.empty() && p.category && !p.category->empty() &&
            *p.category != ZentavoNotificationService::contentCategory) {
            warn("the category " + quoted(*p.category) + " is not that of the content extension (" +
                 ZentavoNotificationService::contentCategory + "), which then does not draw the template");
        }
        if (name == PushTemplate::rating) {
            say("Template: rating.");
            if (!p.ratingSettings) {
                warn("template \"rating\" without \"ratingSettings\": there is nothing to rate with");
            } else if (p.ratingSettings->scale < 1) {
                warn("\"ratingSettings.scale\" is " + std::to_string(p.ratingSettings->scale) + ": no icon is shown");
            } else if (p.ratingSettings->scale > static_cast<std::int64_t>(layout::mostIcons)) {
                warn("\"ratingSettings.scale\" is " + std::to_string(p.ratingSettings->scale) + ": no more than " +
                     std::to_string(layout::mostIcons) + " icons are shown, and no higher rating can be chosen");
            }
        } else if (name == PushTemplate::carousel) {
            carousel(p);
        } else if (name == PushTemplate::smallImage) {
            say("Template: small image.");
            if (!p.smallImageSettings) {
                warn("template \"small_image\" without \"smallImageSettings\": the side of the image is not said");
            }
        } else if (name == PushTemplate::textOverlay) {
            say("Template: text over an image.");
        } else {
            say("Template: stylised basic.");
            if (!name.empty() && name != PushTemplate::stylizedBasic && name != PushTemplate::basic) {
                warn("template " + quoted(name) + " is not known: it is drawn as the basic one");
            }
        }
    }

    void carousel(const NotificationProperties& p) {
        const std::size_t slides = p.imageCarouselSettings ? p.imageCarouselSettings->slides.size() : 0;
        say("Template: carousel with " + std::to_string(slides) + (slides == 1 ? " slide." : " slides."));
        if (slides == 0) {
            warn("template \"simple_image_carousel\" without slides");
        } else if (slides > layout::mostSlides) {
            warn("of " + std::to_string(slides) + " slides only the first " + std::to_string(layout::mostSlides) +
                 " are shown");
        }
        for (std::size_t i = 0; i < slides; ++i) {
            const Slide& slide = p.imageCarouselSettings->slides[i];
            const std::string path = "imageCarouselSettings.slides[" + std::to_string(i) + "].";
            if (const auto url = URL::parse(slide.imageUrl); !url || !url->isHTTP()) {
                warn(quoted(path + "imageUrl") + " is no http or https URL: the slide stays empty");
            }
            if (const char* reason = whyNotOpened(slide.url)) {
                warn(quoted(path + "url") + " " + reason + ": a tap on the slide opens nothing");
            }
        }
    }

    void click(const NotificationProperties& p) {
        if (!p.trackingClickUrl) {
            say("A click is not tracked.");
        } else if (const auto url = URL::parse(*p.trackingClickUrl); url && url->isHTTP()) {
            say("A click is tracked at " + url->text() + ".");
        } else {
            warn("\"trackingClickUrl\" is no http or https URL: a click is not tracked");
        }
        const std::string name = p.template_.value_or("");
        if (name == PushTemplate::rating) {
            say("A click sends the event submit_rating with the rating that was chosen, or 0.");
            if (!p.leadSourceId) {
                warn("no \"leadSourceId\": submit_rating carries \"123\" in its place");
            }
        }
        std::string target = "nothing";
        if (!p.url) {
            warn("no \"url\": a click opens nothing, unless the user has chosen something in the template");
        } else if (const char* reason = whyNotOpened(*p.url)) {
            warn("\"url\" " + std::string(reason) +
                 ": a click opens nothing, unless the user has chosen something in the template");
        } else {
            target = URL::parse(*p.url)->text();
        }
        const bool chooses = name == PushTemplate::carousel || name == PushTemplate::rating ||
                             name == PushTemplate::stylizedBasic || name == PushTemplate::basic ||
                             name == PushTemplate::smallImage;
        const char* choice = name == PushTemplate::carousel ? "the slide" : "the element";
        say("A click opens " + (chooses ? std::string(choice) + " that was tapped in the template, else " : "") +
            target + ".");
    }

    void buttons(const NotificationProperties& p) {
        if (!p.actionButtons) {
            return;
        }
        const auto& first = p.actionButtons->button1;
        const auto& second = p.actionButtons->button2;
        if (first && second && first->id == second->id && !first->id.empty()) {
            warn("both buttons have the id " + quoted(first->id) +
                 ": the system cannot tell the second from the first");
        }
        if (first) {
            button("1", *first);
        }
        if (second) {
            button("2", *second);
        }
    }

    void button(const std::string& number, const ActionButtons::Button& b) {
        const std::string path = "actionButtons.button" + number + ".";
        const std::string name = "Button " + number + " " + quoted(b.label);
        if (b.id.empty() || b.label.empty()) {
            warn(quoted(path + (b.id.empty() ? "id" : "label")) +
                 " is empty: the notification is shown without this button");
        } else if (b.url.empty()) {
            say(name + " does what a click does.");
        } else if (const char* reason = whyNotOpened(b.url)) {
            warn(quoted(path + "url") + " " + reason + ": the button opens nothing");
        } else {
            say(name + " opens " + URL::parse(b.url)->text() + ".");
        }
    }

    void hostIsTold(const NotificationProperties& p) {
        std::string missing;
        if (!p.urlImageString) {
            missing = "it has no \"urlImageString\"";
        } else if (!p.url || !isURL(*p.url)) {
            missing = "it has no \"url\" that is one";
        } else if (!p.additionalData) {
            missing = "it has no \"additionalData\"";
        }
        say(missing.empty() ? "The app is told (onNotificationPressed) with the additional data."
                            : "The app is not told (onNotificationPressed): " + missing + ".");
    }

    PushReport& report_;
};

} // namespace

PushReport lintPush(std::string_view text) {
    PushReport report;
    const auto userInfo = json::readMap(text, limits);
    if (!userInfo) {
        report.failures.push_back("no JSON object: " + userInfo.error().message);
        return report;
    }
    const std::string size = "the push has " + std::to_string(text.size()) + " bytes; ";
    if (text.size() > maximumPushBytes) {
        report.failures.push_back(size + "push services refuse more than " + std::to_string(maximumPushBytes));
    } else if (text.size() > maximumEncryptedPushBytes) {
        report.warnings.push_back(size + "encrypted for its receiver, it can have no more than " +
                                  std::to_string(maximumEncryptedPushBytes));
    }
    const Value* entry = userInfo->find("aps");
    const Map* aps = entry != nullptr ? entry->asMap() : nullptr;
    if (aps == nullptr) {
        report.failures.emplace_back("no map \"aps\": nothing is shown, and no extension is asked");
        if (userInfo->contains("pushId")) {
            report.failures.emplace_back("this looks like what belongs inside \"aps\"");
        }
        return report;
    }
    for (const std::string& path : unknownFields(*aps)) {
        report.warnings.push_back(quoted(path) + " is not a field that the SDK reads");
    }
    const bool shown = isShown(*aps);
    if (!shown && !isMeantToBeSilent(*aps)) {
        report.failures.emplace_back(
            "\"alert\" holds no text: nothing is shown, and no extension is asked (a push that "
            "is meant to be silent says \"content-available\": true)");
    }
    const auto payload = NotificationProperties::read(*aps);
    if (!payload) {
        std::string reason = payload.error().message;
        makeSingleLine(reason);
        report.failures.push_back(reason);
        report.failures.emplace_back(
            "reading stops there: a click opens and tracks nothing, and there is no rich template");
        return report;
    }
    Linter(report).judge(*payload, shown);
    if (!report.failures.empty()) {
        report.facts.clear(); // what would happen does not
    }
    return report;
}

} // namespace zentavo::tools
