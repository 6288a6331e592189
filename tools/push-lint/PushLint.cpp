#include "tools/push-lint/PushLint.h"

#include <algorithm>
#include <set>

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

std::string quoted(std::string text) {
    makeSingleLine(text);
    return '"' + text + '"';
}

bool isURL(const std::string& text) { return URL::parse(text).has_value(); }

class Linter {
public:
    explicit Linter(PushReport& report) : report_(report) {}

    void judge(const NotificationProperties& p) {
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
            if (!isURL(slide.imageUrl)) {
                warn(quoted(path + "imageUrl") + " is no URL: the slide stays empty");
            }
            if (!isURL(slide.url)) {
                warn(quoted(path + "url") + " is no URL: a tap on the slide opens nothing");
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
        } else if (const auto url = URL::parse(*p.url)) {
            target = url->text();
        } else {
            warn("\"url\" is no URL: a click opens nothing, unless the user has chosen something in the template");
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
        const auto& [first, second] = std::tie(p.actionButtons->button1, p.actionButtons->button2);
        if (first && second && first->id == second->id) {
            warn("both buttons have the id " + quoted(first->id) +
                 ": the system cannot tell the second from the first");
        }
        int number = 1;
        for (const auto* button : {&first, &second}) {
            if (*button) {
                const ActionButtons::Button& b = **button;
                if (isURL(b.url)) {
                    say("Button " + std::to_string(number) + " " + quoted(b.label) + " opens " +
                        URL::parse(b.url)->text() + ".");
                } else if (b.url.empty()) {
                    say("Button " + std::to_string(number) + " " + quoted(b.label) + " does what a click does.");
                } else {
                    warn("\"actionButtons.button" + std::to_string(number) + ".url\" is no URL: it opens nothing");
                }
            }
            ++number;
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
    const auto userInfo = json::readMap(text);
    if (!userInfo) {
        report.failures.push_back("no JSON object: " + userInfo.error().message);
        return report;
    }
    if (text.size() > maximumPushBytes) {
        report.warnings.push_back("the push has " + std::to_string(text.size()) +
                                  " bytes; push services refuse more than " + std::to_string(maximumPushBytes));
    }
    const Value* entry = userInfo->find("aps");
    const Map* aps = entry != nullptr ? entry->asMap() : nullptr;
    if (aps == nullptr) {
        report.failures.emplace_back("no map \"aps\": the notification is shown as it came, and a click does nothing");
        if (userInfo->contains("pushId")) {
            report.failures.emplace_back("this looks like what belongs inside \"aps\"");
        }
        return report;
    }
    for (const std::string& path : unknownFields(*aps)) {
        report.warnings.push_back(quoted(path) + " is not a field that the SDK reads");
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
    Linter(report).judge(*payload);
    return report;
}

} // namespace zentavo::tools
