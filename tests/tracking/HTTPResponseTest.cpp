#include "zentavo/tracking/HTTPResponse.h"

#include <gtest/gtest.h>

namespace zentavo {
namespace {

TEST(HTTPResponse, TellsKnownCodesFromOthers) {
    EXPECT_EQ(httpResponse(200), HTTPResponse::sucess);
    EXPECT_EQ(httpResponse(404), HTTPResponse::notFound);
    EXPECT_EQ(httpResponse(208), HTTPResponse::alreadyReported);
    for (const int code : {205, 206, 500, 301, -1}) {
        EXPECT_EQ(httpResponse(code), std::nullopt) << code;
    }
}

} // namespace
} // namespace zentavo
