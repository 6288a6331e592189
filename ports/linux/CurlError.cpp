#include "ports/linux/CurlError.h"

#include <string>

namespace zentavo::linux_port {

using platform::URLErrorKind;

URLErrorKind errorKind(CURLcode code) {
    switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_URL_MALFORMAT:
        return URLErrorKind::unsupportedURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return URLErrorKind::cannotResolveHost;
    case CURLE_COULDNT_CONNECT:
        return URLErrorKind::cannotConnect;
    case CURLE_OPERATION_TIMEDOUT:
        return URLErrorKind::timedOut;
    case CURLE_GOT_NOTHING:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
        return URLErrorKind::connectionLost;
    case CURLE_TOO_MANY_REDIRECTS:
        return URLErrorKind::tooManyRedirects;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
        return URLErrorKind::secureConnectionFailed;
    default:
        return URLErrorKind::other;
    }
}

platform::URLError errorAt(URLErrorKind kind, std::string_view what, const URL& url) {
    std::string message(what);
    message.append(" (").append(url.host());
    if (const auto port = url.port()) {
        message.append(":").append(std::to_string(*port));
    }
    return {kind, message.append(")")};
}

} // namespace zentavo::linux_port
