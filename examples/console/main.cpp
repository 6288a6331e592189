// The SDK as a program of verbs, run in their order:
//
//     zentavo-console --suite /tmp/shop --server http://127.0.0.1:8787 activate track:signup screen:Home wait

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <zentavo/Zentavo.h>
#include <zentavo/foundation/Hex.h>
#include <zentavo/foundation/JSON.h>

#include "InboxVerbs.h"
#include "ObservedPlatform.h"
#include "examples/support/TracePost.h"

using namespace zentavo;

namespace {

constexpr const char* usage =
    "usage: zentavo-console --suite DIR [--server URL] [--portal ID] [--props ID] [--group NAME] [--app ID]\n"
    "                       [--time-scale N] [--debug] VERB…\n"
    "  activate                   start the SDK\n"
    "  track:NAME[,KEY=VALUE…]    track an event with properties\n"
    "  screen:NAME[,TITLE[,TYPE]] track a screen view\n"
    "  identify:ID[,KEY=VALUE…]   name the customer\n"
    "  uid:ID                     name the visitor\n"
    "  reset                      forget customer and visitor\n"
    "  launch                     report a launch to the push service\n"
    "  token:HEX                  register a push token\n"
    "  show                       print who the SDK thinks this is\n"
    "  inbox:WHAT[,…]             ask or change the app inbox; each prints what comes, so wait before the next\n"
    "      open,DESTINATION[,AUDIENCE]   which inbox (77, customer; made at the first other call)\n"
    "      list[,PAGE[,CATALOG…]]        a page of messages\n"
    "      catalogs | count | mark-all   all catalogs; the number of unread messages; mark all as read\n"
    "      get,ID                        one message\n"
    "      read,ID… unread,ID… remove,ID…  change messages\n"
    "  trace[:post]               from now on, print what becomes of each in-app delivery, and tell the dev server\n"
    "  media:EVENT[,STORY]        print the content that the host would show for an event\n"
    "  link:URL                   open the app by a deep link\n"
    "  memory                     print how much memory this process has resident\n"
    "  wait[:SECONDS]             wait until everything sent is answered, retries included (10 s at most)\n"
    "DIR holds the preference store; running again with the same DIR is the next start of the same app.\n";

struct Options {
    std::string suite;
    std::string server = "http://127.0.0.1:8787";
    std::string portal = "33167";
    std::string props = "555";
    std::string group = "group.shop";
    std::string app = "42";
    double timeScale = 1;
    bool debug = false;
    std::vector<std::string> verbs;
};

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (true) {
        const std::size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

/// The "KEY=VALUE" parts after the first as a map; what reads as a number is one.
Map properties(const std::vector<std::string>& parts) {
    Map map;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::string& part = parts[i];
        const std::size_t equals = part.find('=');
        const std::string text = equals == std::string::npos ? "" : part.substr(equals + 1);
        double number = 0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isNumber = error == std::errc() && stop == text.data() + text.size();
        map.set(part.substr(0, equals), isNumber ? Value(number) : Value(text));
    }
    return map;
}

bool parse(int argc, char** argv, Options& options) {
    const std::map<std::string_view, std::string*> texts{{"--suite", &options.suite},   {"--server", &options.server},
                                                         {"--portal", &options.portal}, {"--props", &options.props},
                                                         {"--group", &options.group},   {"--app", &options.app}};
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const auto text = texts.find(argument);
        if (argument == "--debug") {
            options.debug = true;
        } else if (!argument.starts_with("--")) {
            options.verbs.emplace_back(argument);
        } else if (i + 1 == argc) {
            return false;
        } else if (text != texts.end()) {
            *text->second = argv[++i];
        } else if (argument == "--time-scale") {
            options.timeScale = std::atof(argv[++i]);
        } else {
            return false;
        }
    }
    return !options.suite.empty() && !options.verbs.empty() && options.timeScale > 0;
}

void printMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) {
            std::printf("    resident %ld kB\n", std::atol(line.c_str() + 6));
        }
    }
}

void show(const Zentavo& sdk) {
    std::printf("    uid %s, customer \"%s\", portal %s, props %s, push uid %s\n", sdk.getUid().c_str(),
                sdk.getCustomerId().c_str(), sdk.getPortalId().value_or("").c_str(), sdk.getPropsId().c_str(),
                sdk.getPushUid().value_or("none").c_str());
}

void printMedia(const Map& content) {
    const auto text = json::write(content);
    std::printf("    media %s\n", text ? text->c_str() : text.error().message.c_str());
    std::fflush(stdout);
}

/// False for a verb that is none.
bool run(const std::string& verb, Zentavo& sdk, const std::shared_ptr<platform::Platform>& platform,
         const Options& options, console::Activity& activity) {
    const std::size_t colon = verb.find(':');
    const std::string name = verb.substr(0, colon);
    const std::string argument = colon == std::string::npos ? "" : verb.substr(colon + 1);
    const std::vector<std::string> parts = split(argument, ',');
    bool understood = true;

    const std::map<std::string_view, std::function<void()>> verbs{
        {"activate",
         [&] {
             sdk.activate(Configuration{options.portal, options.props, options.group, options.app});
         }},
        {"track",
         [&] {
             CDPEvent event(parts[0]);
             event.setEventProperties(properties(parts));
             sdk.track(event);
         }},
        {"screen",
         [&] { sdk.trackScreen(parts[0], parts.size() > 1 ? parts[1] : parts[0], parts.size() > 2 ? parts[2] : ""); }},
        {"identify", [&] { sdk.setCustomerProperties(parts[0], properties(parts)); }},
        {"uid", [&] { sdk.setUid(argument); }},
        {"reset",
         [&] {
             sdk.resetCustomer();
             sdk.resetUid();
         }},
        {"launch", [&] { sdk.trackAppLaunch(); }},
        {"token", [&] { sdk.registerForNotification(hex::decode(argument).value_or(std::vector<std::uint8_t>())); }},
        {"inbox", [&] { understood = console::runInboxVerb(parts, sdk); }},
        {"trace",
         [&] {
             understood = argument.empty() || argument == "post";
             auto post = argument.empty() ? std::nullopt : std::optional(examples::TracePost(platform, options.server));
             sdk.setDeliveryTraceCallback([post = std::move(post)](const DeliveryTrace& trace) {
                 std::printf("    %s\n", trace.text().c_str());
                 std::fflush(stdout);
                 if (post) {
                     (*post)(trace);
                 }
             });
         }},
        {"media",
         [&] {
             const CDPEvent event(parts[0]);
             parts.size() > 1 ? sdk.getMediaJson(event, parts[1], printMedia) : sdk.getMediaJson(event, printMedia);
         }},
        {"link",
         [&] {
             if (const auto url = URL::parse(argument)) {
                 sdk.handleDeeplinkURL(*url);
             }
         }},
        {"show", [&] { show(sdk); }},
        {"memory", printMemory},
        {"wait",
         [&] {
             const double seconds = argument.empty() ? 10 : std::atof(argument.c_str());
             if (!activity.waitUntilIdle(std::chrono::milliseconds(static_cast<long>(seconds * 1000)))) {
                 std::printf("    still waiting for answers\n");
             }
         }},
    };
    const auto found = verbs.find(name);
    if (found == verbs.end()) {
        return false;
    }
    std::printf("  %s\n", verb.c_str());
    std::fflush(stdout);
    found->second();
    return understood;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fputs(usage, stderr);
        return 2;
    }
    const auto activity = std::make_shared<console::Activity>();
    const auto platform = console::makeObservedPlatform(options.suite, options.timeScale, activity);
    const auto sdk = std::make_shared<Zentavo>(platform);
    Zentavo::setShared(sdk);
    sdk->setDebug(options.debug);
    sdk->setEndpoints(Endpoints::all(options.server));
    for (const std::string& verb : options.verbs) {
        if (!run(verb, *sdk, platform, options, *activity)) {
            std::fprintf(stderr, "zentavo-console: there is no verb \"%s\"\n%s", verb.c_str(), usage);
            return 2;
        }
    }
    return 0;
}
