// The extensions as real processes, on the real Linux port: store, files, network.

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ports/linux/LinuxPlatform.h"
#include "ports/memory/MemoryApplication.h"
#include "tests/e2e/Process.h"
#include "tests/ports/TemporaryFolder.h"
#include "tests/support/LoopbackServer.h"
#include "zentavo/Zentavo.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::tests {
namespace {

using e2e::Process;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr std::chrono::seconds patience{20};

class ExtensionProcessTest : public ::testing::Test {
protected:
    Process service(int rounds, const Map& aps) {
        return Process(
            {ZENTAVO_PUSH_SERVICE_CHILD, data.path() / "data", std::to_string(rounds), json::write(aps).value()},
            {"TMPDIR=" + (data.path() / "tmp").string()});
    }
    std::vector<std::string> filesLeft() const {
        std::vector<std::string> found;
        std::error_code none;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(data.path() / "tmp", none)) {
            found.push_back(entry.path());
        }
        return found;
    }
    /// What one push comes to, first line of the output.
    std::string shown(const Map& aps) {
        Process process = service(1, aps);
        std::string line = process.readLine(patience);
        EXPECT_EQ(process.wait(), 0) << process.output();
        return line;
    }
    static Map badge(const char* type, int value) { return {{"badge", Map{{"type", type}, {"value", value}}}}; }

    TemporaryFolder data;
};

TEST_F(ExtensionProcessTest, TheBadgeGoesOnInTheNextProcessAlsoWhenTheLastWasKilled) {
    EXPECT_EQ(shown(badge("increase", 2)), "badge 2");
    EXPECT_EQ(shown(badge("increase", 2)), "badge 4");
    {
        Process endless = service(1'000'000, badge("set_to", 1));
        EXPECT_EQ(endless.readLine(patience), "badge 1");
        endless.kill(SIGKILL);
        EXPECT_EQ(endless.wait(), -SIGKILL);
    }
    EXPECT_EQ(shown(badge("set_to", 9)), "badge 2");
}

TEST_F(ExtensionProcessTest, TwoProcessesAtOnceLoseNoPush) {
    Process one = service(200, badge("increase", 1));
    Process other = service(200, badge("increase", 1));
    EXPECT_EQ(one.wait(), 0);
    EXPECT_EQ(other.wait(), 0);
    EXPECT_EQ(shown(badge("increase", 0)), "badge 400");
}

TEST_F(ExtensionProcessTest, TheImageIsAFileOfThisUserAloneAndNoToolkitIsLoaded) {
    const std::string picture = std::string("\x89PNG\r\n\x1a\n", 8) + std::string(100'000, 'x');
    LoopbackServer host([&](const auto& request, auto& reply) {
        if (request.target == "/moved") {
            reply.answer(302, "", "Location: /coat.png\r\n");
        } else {
            reply.answer(200, picture);
        }
    });
    Process process = service(1, {{"urlImageString", host.url("/moved").text()}});
    const std::string line = process.readLine(patience);
    ASSERT_EQ(process.wait(), 0) << process.output();
    ASSERT_EQ(line.find("badge -1 /"), 0U) << line;
    const std::filesystem::path path = line.substr(std::string("badge -1 ").size());
    EXPECT_EQ(path.filename(), "image.jpg");
    EXPECT_EQ(path.parent_path().parent_path(), data.path() / "tmp");
    std::stringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    EXPECT_EQ(content.str(), picture);
    struct stat file = {};
    struct stat folder = {};
    ASSERT_EQ(stat(path.c_str(), &file), 0);
    ASSERT_EQ(stat(path.parent_path().c_str(), &folder), 0);
    EXPECT_EQ(file.st_mode & 0777U, 0600U);
    EXPECT_EQ(folder.st_mode & 0777U, 0700U);

    EXPECT_THAT(process.output(), HasSubstr("library libc.so"));
    EXPECT_THAT(process.output(), Not(HasSubstr("gtk")));
    EXPECT_THAT(process.output(), Not(HasSubstr("webkit")));
}

TEST_F(ExtensionProcessTest, ImagesThatAreTooLongOrMissingLeaveNothing) {
    LoopbackServer host([](const auto& request, auto& reply) {
        if (request.target == "/endless") {
            const std::string block(64U << 10U, 'x');
            reply.send("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\n\r\n");
            for (int i = 0; i < 200; ++i) { // 12.5 MiB
                reply.send(block);
            }
            reply.close();
        } else {
            reply.answer(404, "<p>Not here</p>");
        }
    });
    EXPECT_EQ(shown({{"urlImageString", host.url("/endless").text()}}), "badge -1");
    EXPECT_EQ(shown({{"urlImageString", host.url("/missing").text()}}), "badge -1");
    EXPECT_THAT(filesLeft(), IsEmpty());
}

TEST_F(ExtensionProcessTest, AnImageHostThatHangsIsLeftWhenTheTimeIsOver) {
    LoopbackServer host([](const auto&, auto& reply) { reply.hang(); });
    const auto platform = linux_port::makeLinuxPlatform({.dataFolder = data.path() / "data", .mainBundle = {}});
    ZentavoNotificationService service(std::make_shared<Zentavo>(platform));
    platform::NotificationRequest request;
    request.content.userInfo = Map{{"aps", Map{{"urlImageString", host.url("/coat.png").text()}}}};
    int calls = 0; // the thread that works never calls: the test does, in the expiry
    std::thread working([&] { service.didReceive(request, [&](const platform::NotificationContent&) { ++calls; }); });
    while (host.requests().empty()) {
        std::this_thread::yield();
    }
    service.serviceExtensionTimeWillExpire();
    EXPECT_EQ(calls, 1);
    working.join();
    EXPECT_EQ(calls, 1);
}

std::string infoOf(const std::string& identifier) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" + identifier +
           "</string></dict></plist>";
}

TEST_F(ExtensionProcessTest, WhatTheContentExtensionNotesTheAppOpens) {
    data.write("Shop.app/Info.plist", infoOf("com.example.shop"));
    data.write("Shop.app/PlugIns/Content.appex/Info.plist", infoOf("com.example.shop.content"));
    const auto platform =
        linux_port::makeLinuxPlatform({.dataFolder = data.path() / "data", .mainBundle = data.path() / "Shop.app"});
    auto interface = *platform->userInterface();
    const auto application = std::make_shared<testing::MemoryApplication>();
    interface.application = application;
    platform->attach(interface);
    Zentavo::setShared(std::make_shared<Zentavo>(platform));
    const auto delegate = std::make_shared<ZentavoUNUserNotificationCenter>();
    platform::NotificationResponse response;
    response.notification.request.content.userInfo =
        Map{{"aps", Map{{"pushId", "p1"}, {"template", "small_image"}, {"url", "https://shop.example/"}}}};
    const auto click = [&] {
        const auto handled = std::make_shared<std::promise<void>>();
        delegate->userNotificationCenter(*interface.userNotifications, response, [handled] { handled->set_value(); });
        handled->get_future().wait();
    };

    click(); // the app has the suite open before the extension writes to it
    Process extension({ZENTAVO_PUSH_CHOICE_CHILD, data.path() / "data", data.path() / "Shop.app/PlugIns/Content.appex",
                       "p1", "https://shop.example/element"});
    ASSERT_EQ(extension.wait(), 0) << extension.output();
    click();
    Zentavo::setShared(nullptr);
    std::vector<std::string> opened;
    for (const URL& url : application->opened()) {
        opened.push_back(url.text());
    }
    EXPECT_THAT(opened, ::testing::ElementsAre("https://shop.example/", "https://shop.example/element"));
}

} // namespace
} // namespace zentavo::tests
