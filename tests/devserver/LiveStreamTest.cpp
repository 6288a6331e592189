#include "devserver/LiveStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/devserver/SampleEvent.h"

namespace zentavo::devserver {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class LiveStreamTest : public ::testing::Test, protected RunningServer {
protected:
    std::unique_ptr<RawConnection> watch(const std::string& query = "") const {
        auto viewer = std::make_unique<RawConnection>(server->port());
        viewer->send("GET /_dev/stream" + query + " HTTP/1.1\r\nHost: x\r\nAccept-Encoding: gzip, br\r\n\r\n");
        return viewer;
    }
};

TEST_F(LiveStreamTest, TellsWhatWasAndWhatComes) {
    send(sampleEvent("before"));
    const auto viewer = watch();
    const std::string start = viewer->readUntil("\"event\":\"before\"");
    EXPECT_THAT(start, HasSubstr("Content-Type: text/event-stream"));
    EXPECT_THAT(start, HasSubstr("event: hello\ndata: {\"server\":"));
    EXPECT_THAT(start, HasSubstr("id: 1\nevent: request\ndata: {\"number\":1,"));

    send(sampleEvent("<script>\ndata: x"));
    EXPECT_THAT(viewer->readUntil("data: x"), HasSubstr(R"("event":"<script>\ndata: x")")) << "one line, escaped";
    fault("path=/event&status=500");
    client().Delete("/_dev/requests");
    const std::string end = viewer->readUntil("\"fault\":\"status=500\"");
    EXPECT_THAT(end, HasSubstr("event: cleared\ndata: {\"clearings\":1}"));

    send(sampleEvent("seen"));
    send(sampleEvent("unseen"));
    EXPECT_THAT(watch("?since=3")->readUntil("unseen"), Not(HasSubstr("\"seen\"")));
}

TEST_F(LiveStreamTest, ViewersAreBoundedAndKeepNobodyWaiting) {
    std::vector<std::unique_ptr<RawConnection>> viewers;
    for (int i = 0; i < LiveStream::maximumViewers; ++i) {
        viewers.push_back(watch());
        EXPECT_THAT(viewers.back()->readUntil("hello"), HasSubstr("hello"));
    }
    EXPECT_THAT(watch()->readUntil("}"), HasSubstr(" 503 "));
    EXPECT_EQ(send()->status, 200);
    EXPECT_THAT(viewers.back()->readUntil("view_product"), HasSubstr("view_product"));
}

} // namespace
} // namespace zentavo::devserver
