#include "devserver/Options.h"

#include <charconv>
#include <cmath>

namespace zentavo::devserver {

namespace {

constexpr double longestLifetime = 30.0 * 24 * 3600; // seconds

template <class Number>
bool read(const std::string& text, Number& number) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end;
}

bool* switchOf(Options& options, std::string_view name) {
    if (name == "--quiet" || name == "-q") {
        return &options.quiet;
    }
    if (name == "--expose") {
        return &options.expose;
    }
    if (name == "--parent") {
        return &options.parent;
    }
    if (name == "--catch-all") {
        return &options.catchAll;
    }
    if (name == "--distributor") {
        return &options.distributor;
    }
    if (name == "--help" || name == "-h") {
        return &options.help;
    }
    return name == "--version" ? &options.version : nullptr;
}

std::string* textOf(Options& options, std::string_view name) {
    if (name == "--host") {
        return &options.host;
    }
    if (name == "--session-id") {
        return &options.sessionId;
    }
    if (name == "--inbox") {
        return &options.inboxFolder;
    }
    if (name == "--campaigns") {
        return &options.campaignFolder;
    }
    if (name == "--pushes") {
        return &options.pushFolder;
    }
    if (name == "--push-store") {
        return &options.pushStore;
    }
    if (name == "--distributor-name") {
        return &options.distributorName;
    }
    return name == "--inbox-store" ? &options.inboxStore : nullptr;
}

Result<void> setValue(Options& options, const std::string& name, const std::string& value) {
    if (std::string* const text = textOf(options, name); text != nullptr && !value.empty()) {
        *text = value;
        return {};
    }
    if (name == "--port" && read(value, options.port)) {
        return {};
    }
    double seconds = 0;
    if (name == "--lifetime" && read(value, seconds) && seconds > 0 && seconds <= longestLifetime) {
        options.lifetime = std::chrono::milliseconds(std::llround(std::ceil(seconds * 1'000)));
        return {};
    }
    return Error{name + " cannot be \"" + value + '"'};
}

} // namespace

Result<Options> Options::parse(std::span<const char* const> arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string argument = arguments[i];
        if (bool* const flag = switchOf(options, argument)) {
            *flag = true;
            continue;
        }
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (textOf(options, name) == nullptr && name != "--port" && name != "--lifetime") {
            return Error{"\"" + argument + "\" is no option"};
        }
        if (equals == std::string::npos && i + 1 == arguments.size()) {
            return Error{name + " needs a value"};
        }
        const std::string value = equals != std::string::npos ? argument.substr(equals + 1) : arguments[++i];
        if (auto set = setValue(options, name, value); !set) {
            return set.error();
        }
    }
    return options;
}

std::string_view Options::helpText() noexcept {
    return R"(zentavo-devserver: a local stand-in for the platform's services, with a live page and scripted faults

  --port N          listen on this port (8787); 0 picks a free one
  --host ADDRESS    listen on this address (127.0.0.1)
  --expose          allow an address that other machines can reach; there is no password
  --quiet, -q       print no line for each request
  --session-id TEXT put "session_id": TEXT into the answers to events
  --inbox DIR       fill the inbox from the *.json files of this folder instead of the built-in ones
  --inbox-store FILE keep the inbox in this file; it is filled only while it is empty
  --campaigns DIR   take in-app campaigns from this folder instead of the built-in ones
  --catch-all       offer the campaigns for "*" for any event; the page can switch that too
  --pushes DIR      take pushes that lie ready from this folder instead of the built-in ones
  --distributor     play a push distributor (UnifiedPush) on the session's D-Bus bus
  --distributor-name NAME  the distributor's name on the bus
  --push-store FILE keep devices and the distributor's registrations in this file
  --parent          stop when the parent process ends or the pipe on standard input closes
  --lifetime S      stop after so many seconds
  --version         print the version
  --help, -h        print this

The first line on standard output is "zentavo-devserver listening on http://ADDRESS:PORT".
Open that address in a browser; give it to an app as Endpoints::all("http://ADDRESS:PORT").
)";
}

} // namespace zentavo::devserver
