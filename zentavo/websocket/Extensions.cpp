#include "zentavo/websocket/Extensions.h"

#include <algorithm>

#include "zentavo/websocket/HeaderGrammar.h"

namespace zentavo::websocket {
namespace {

constexpr std::string_view extensionName = "permessage-deflate";

/// The four parameters of the extension, as an offer or an answer states them.
struct Parameters {
    bool serverNoTakeover = false;
    bool clientNoTakeover = false;
    std::optional<int> serverBits;
    bool clientBitsNamed = false;
    std::optional<int> clientBits;
};

std::optional<int> windowBits(const std::string& text) {
    if (text.size() == 1 && (text == "8" || text == "9")) {
        return text[0] - '0';
    }
    if (text.size() == 2 && text[0] == '1' && text[1] >= '0' && text[1] <= '5') {
        return 10 + text[1] - '0';
    }
    return std::nullopt;
}

/// None for a parameter that is unknown, given twice, or has a value where none belongs and the other way round.
std::optional<Parameters> read(const grammar::Extension& extension) {
    Parameters read;
    for (const auto& [name, value] : extension.parameters) {
        bool fresh = true;
        if (name == "server_no_context_takeover" || name == "client_no_context_takeover") {
            bool& flag = name.front() == 's' ? read.serverNoTakeover : read.clientNoTakeover;
            fresh = !flag && !value;
            flag = true;
        } else if (name == "server_max_window_bits") {
            fresh = !read.serverBits && value;
            read.serverBits = value ? windowBits(*value) : std::nullopt;
            fresh = fresh && read.serverBits;
        } else if (name == "client_max_window_bits") {
            fresh = !read.clientBitsNamed;
            read.clientBitsNamed = true;
            read.clientBits = value ? windowBits(*value) : std::nullopt;
            fresh = fresh && (!value || read.clientBits);
        } else {
            fresh = false;
        }
        if (!fresh) {
            return std::nullopt;
        }
    }
    return read;
}

std::string flag(bool present, std::string_view name) { return present ? "; " + std::string(name) : std::string(); }
std::string bits(int number, std::string_view name) {
    return number < 15 ? "; " + std::string(name) + "=" + std::to_string(number) : std::string();
}

DeflateAnswer meet(const Parameters& offer, const DeflateOptions& options) {
    DeflateAnswer answer{options, std::string(extensionName)};
    DeflateAgreement& agreed = answer.agreement;
    agreed.server.takeover = options.server.takeover && !offer.serverNoTakeover;
    agreed.client.takeover = options.client.takeover && !offer.clientNoTakeover;
    agreed.server.windowBits = std::min(options.server.windowBits, offer.serverBits.value_or(15));
    // A client that does not name its window cannot be told to make it smaller.
    agreed.client.windowBits =
        offer.clientBitsNamed ? std::min(options.client.windowBits, offer.clientBits.value_or(15)) : 15;
    answer.header += flag(!agreed.server.takeover, "server_no_context_takeover") +
                     flag(!agreed.client.takeover, "client_no_context_takeover") +
                     (offer.serverBits ? "; server_max_window_bits=" + std::to_string(agreed.server.windowBits)
                                       : bits(agreed.server.windowBits, "server_max_window_bits")) +
                     bits(agreed.client.windowBits, "client_max_window_bits");
    return answer;
}

} // namespace

Result<void> checkDeflate(const std::optional<DeflateOptions>& options) {
    if (!options) {
        return {};
    }
    for (const DeflateSide& side : {options->client, options->server}) {
        if (side.windowBits < 8 || side.windowBits > 15) {
            return Error{"a compression window has 8 to 15 bits"};
        }
    }
    if (options->level < 1 || options->level > 9) {
        return Error{"a compression level is 1 to 9"};
    }
    return {};
}

std::string deflateOffer(const DeflateOptions& options) {
    return std::string(extensionName) + flag(!options.server.takeover, "server_no_context_takeover") +
           flag(!options.client.takeover, "client_no_context_takeover") +
           bits(options.server.windowBits, "server_max_window_bits") + "; client_max_window_bits" +
           (options.client.windowBits < 15 ? "=" + std::to_string(options.client.windowBits) : std::string());
}

Result<std::optional<DeflateAgreement>> acceptDeflateAnswer(std::string_view answer,
                                                            const std::optional<DeflateOptions>& offered) {
    const auto extensions = grammar::parseExtensions(answer);
    if (!extensions) {
        return Error{"the server's extension header is malformed"};
    }
    if (extensions->empty()) {
        return std::optional<DeflateAgreement>();
    }
    const auto& extension = extensions->front();
    if (!offered || extensions->size() != 1 || extension.name != extensionName) {
        return Error{"the server chose an extension that was not offered"};
    }
    const auto given = read(extension);
    if (!given || (given->clientBitsNamed && !given->clientBits)) {
        return Error{"the server's compression parameters make no sense"};
    }
    const bool ignoresTakeover = !offered->server.takeover && !given->serverNoTakeover;
    const bool ignoresWindow = given->serverBits.value_or(15) > offered->server.windowBits;
    if (ignoresTakeover || ignoresWindow) {
        return Error{"the server does not keep to the compression parameters offered"};
    }
    DeflateAgreement agreed = *offered;
    agreed.server = {given->serverBits.value_or(15), !given->serverNoTakeover};
    agreed.client.takeover = offered->client.takeover && !given->clientNoTakeover;
    agreed.client.windowBits = std::min(offered->client.windowBits, given->clientBits.value_or(15));
    return std::optional(agreed);
}

Result<std::optional<DeflateAnswer>> answerDeflateOffer(std::string_view offers, const DeflateOptions& options) {
    const auto extensions = grammar::parseExtensions(offers);
    if (!extensions) {
        return Error{"the extension header is malformed"};
    }
    for (const auto& extension : *extensions) {
        if (extension.name != extensionName) {
            continue;
        }
        if (const auto offer = read(extension)) {
            return std::optional(meet(*offer, options));
        }
    }
    return std::optional<DeflateAnswer>();
}

} // namespace zentavo::websocket
