#include "zentavo/tracking/HTTPResponse.h"

#include <gtest/gtest.h>

namespace zentavo {
namespace {

TEST(HTTPResponse, TellsKnownCodesFromOthers) {
    EXPECT_EQ(httpResponse(200), HTTPResponse::sucess);
    EXPECT_EQ(httpResponse(404), HTTPResponse::notFound);
    EXPECT_EQ(httpResponse(208), HTTPResponse::alreadyReported);
    for (const std::int64_t code : {205LL, 206LL, 500LL, 301LL, -1LL, (1LL << 32) + 200}) {
        EXPECT_EQ(httpResponse(code), std::nullopt) << code;
        const Map source{{"code", code}};
        KeyedDecoder decoder(source);
        decodeHTTPResponse(decoder, "code");
        ASSERT_TRUE(decoder.failed()) << code;
        EXPECT_EQ(decoder.failure()->kind, DecodingFailure::Kind::dataCorrupted);
    }
    const Map source{{"code", 200.0}};
    KeyedDecoder decoder(source);
    EXPECT_EQ(decodeHTTPResponse(decoder, "code"), HTTPResponse::sucess);
    EXPECT_FALSE(decoder.failed());
}

} // namespace
} // namespace zentavo
