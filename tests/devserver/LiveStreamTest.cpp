#include "devserver/LiveStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/devserver/SampleEvent.h"

namespace zentavo::devserver {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class LiveStreamTest : public ::testing::Test, protected RunningServer {
protected:
    /// What comes is not compressed, so a test may read it as it is.
    std::unique_ptr<RawConnection> watch(const std::string& query = "", const std::string& fields = "") const {
        auto viewer = std::make_unique<RawConnection>(server->port());
        viewer->send("GET /_dev/stream" + query +
                     " HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                     "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n" +
                     fields + "\r\n");
        return viewer;
    }
};

TEST_F(LiveStreamTest, TellsWhatWasAndWhatComes) {
    send(sampleEvent("before"));
    const auto viewer = watch("", "Origin: http://x\r\n");
    const std::string start = viewer->readUntil("\"faults\":[]");
    EXPECT_THAT(start, HasSubstr(" 101 "));
    EXPECT_THAT(start, HasSubstr(R"("clearings":0,"skipped":0,"requests":[{"number":1,)"));
    EXPECT_THAT(start, HasSubstr(R"("event":"before")"));

    send(sampleEvent("during"));
    EXPECT_THAT(viewer->readUntil("\"total\":2"), Not(HasSubstr("before")));
    fault("path=/event&status=500");
    client().Delete("/_dev/requests");
    EXPECT_THAT(viewer->readUntil("\"fault\":\"status=500\""), HasSubstr("\"clearings\":1"));
}

TEST_F(LiveStreamTest, WhoComesAgainHearsOnlyWhatWasMissed) {
    for (const char* name : {"first", "second", "third"}) {
        send(sampleEvent(name));
    }
    const std::string all = watch()->readUntil("third");
    EXPECT_THAT(all, HasSubstr("first"));
    const std::size_t at = all.find("\"server\":\"") + 10;
    const std::string run = all.substr(at, all.find('"', at) - at);
    EXPECT_THAT(watch("?since=2&server=" + run)->readUntil("third"), Not(HasSubstr("second")));
    EXPECT_THAT(watch("?since=2&server=another")->readUntil("third"), HasSubstr("first"))
        << "numbers of another run mean nothing";
}

TEST_F(LiveStreamTest, RefusesStrangersAndNonsense) {
    EXPECT_THAT(watch("", "Origin: http://evil.example\r\n")->readAll(), StartsWith("HTTP/1.1 403 "));
    EXPECT_THAT(watch("?since=-1")->readAll(), StartsWith("HTTP/1.1 400 "));
    EXPECT_THAT(watch("s")->readAll(), StartsWith("HTTP/1.1 400 "));
    const RawConnection plain(server->port());
    plain.send("GET /_dev/stream HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(plain.readAll(), StartsWith("HTTP/1.1 4"));
    auto inTheMiddle = client();
    inTheMiddle.set_keep_alive(true);
    EXPECT_EQ(inTheMiddle.Get("/_dev/status")->status, 200);
    EXPECT_EQ(inTheMiddle.Get("/_dev/stream")->status, 426);
}

TEST_F(LiveStreamTest, ViewersAreBoundedAndKeepNobodyWaiting) {
    std::vector<std::unique_ptr<RawConnection>> viewers;
    for (std::size_t i = 0; i < LiveStream::maximumViewers; ++i) {
        viewers.push_back(watch());
        EXPECT_THAT(viewers.back()->readUntil("faults"), HasSubstr(" 101 "));
    }
    EXPECT_THAT(watch()->readAll(), StartsWith("HTTP/1.1 503 "));
    EXPECT_EQ(send()->status, 200);
    EXPECT_THAT(viewers.back()->readUntil("view_product"), HasSubstr("view_product"));
}

TEST_F(LiveStreamTest, WhoDoesNotReadIsSentAway) {
    // The slow one comes first and is told first: once the other has heard of something, it was sent it too.
    const auto slow = watch();
    EXPECT_THAT(slow->readUntil("faults"), HasSubstr(" 101 "));
    const auto quick = watch();
    EXPECT_THAT(quick->readUntil("faults"), HasSubstr(" 101 "));
    // More than the system's buffers hold for who does not read: the rest of the first still waits when the second comes.
    LoggedRequest large;
    large.findings.event.assign(8U << 20U, 'x');
    server->log().add(large);
    // Compared as truths: eight megabytes are nothing to print.
    EXPECT_TRUE(quick->readUntil("faults").find("\"number\":1,") != std::string::npos);
    server->log().add({});
    EXPECT_THAT(quick->readUntil("\"number\":2,"), HasSubstr("\"number\":2,"));
    const std::string all = slow->readUntil("than they were read");
    EXPECT_TRUE(all.ends_with("\x0F\xA0requests came faster than they were read"));
    EXPECT_EQ(all.find("\"number\":2,"), std::string::npos);
    server->log().add({});
    EXPECT_THAT(watch("?since=2")->readUntil("faults"), HasSubstr("\"number\":3,")) << "and may come again";
}

} // namespace
} // namespace zentavo::devserver
