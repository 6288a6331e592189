// From a distributor's call to the notification on the bus, through the notification service as a process of its own; and
// what that process weighs. A bus, a distributor and a notification service of the program's own stand at the ends.
//
//   PushArrivalBenchmark [PUSHES]

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ports/memory/SeededRandom.h"
#include "tests/desktop/FakeApp.h"
#include "tests/desktop/FakeDistributor.h"
#include "tests/desktop/FakeNotificationServer.h"
#include "tests/desktop/PrivateBus.h"
#include "tests/desktop/WebPushSender.h"
#include "tests/ports/TemporaryFolder.h"
#include "tests/support/LoopbackServer.h"
#include "zentavo/foundation/JSON.h"

namespace {

using namespace zentavo;
using namespace zentavo::tests;
using Clock = std::chrono::steady_clock;

constexpr const char* service = "com.example.shop.NotificationService";

/// A line of /proc/PID/NAME, "Pss:   123 kB".
std::string statistic(pid_t process, const char* file, const std::string& name) {
    std::ifstream lines("/proc/" + std::to_string(process) + "/" + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ":")) {
            return line.substr(line.find_first_not_of(" \t", name.size() + 1));
        }
    }
    return "?";
}

class Arrival {
public:
    Arrival()
        : bus_({{service, command()}}), server_(bus_.address()), distributor_(bus_.address(), "Bench", 2),
          app_(bus_.address()), observer_(bus_.address()) {
        observer_.watch(service, [this](bool present) { presence_.put(present); });
        presence_.next();
        app_.call("Register");
        presence_.next();
        token_ = distributor_.asked.next().token;
        distributor_.newEndpoint(2, service, token_, "https://push.example/up");
        const std::string told = app_.told().next();
        const std::size_t key = told.find("p256dh=") + 7;
        const std::size_t auth = told.find("&auth=");
        sender_.publicKey = WebPushSender::bytes(told.substr(key, auth - key));
        sender_.auth = WebPushSender::bytes(told.substr(auth + 6));
    }

    /// The median of `pushes`, each sent when the one before is there. `cold` has the process started for each.
    void measure(const char* name, const Map& aps, int pushes, bool cold = false) {
        std::vector<double> times;
        for (int i = 0; i < pushes; ++i) {
            if (cold) {
                ::kill(process(), SIGTERM);
                presence_.next();
            }
            zentavo::testing::SeededRandom unused(1);
            const std::string message =
                sender_.encrypt(desktop::WebPushKeys::make(unused), json::write(Map{{"aps", aps}}).value());
            const std::size_t before = server_.shown().size();
            const auto start = Clock::now();
            distributor_.message(2, service, token_, message);
            while (server_.shown().size() == before) {
                std::this_thread::sleep_for(std::chrono::microseconds(20));
            }
            times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
            if (cold) {
                presence_.next();
            }
        }
        std::sort(times.begin(), times.end());
        std::printf("%-44s %7.2f ms, nine in ten within %7.2f ms\n", name, times[times.size() / 2],
                    times[times.size() * 9 / 10]);
    }
    void weigh(const char* name) {
        const pid_t found = process();
        std::printf("%-44s resident %s, its share %s, threads %s\n", name, statistic(found, "status", "VmRSS").c_str(),
                    statistic(found, "smaps_rollup", "Pss").c_str(), statistic(found, "status", "Threads").c_str());
    }
    void end() {
        ::kill(process(), SIGTERM);
        presence_.next();
    }

private:
    std::string command() const {
        const std::string extension =
            data_
                .write("Service.appex/Info.plist", std::string("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                                                               "<key>CFBundleIdentifier</key><string>") +
                                                       service + "</string></dict></plist>")
                .parent_path();
        return "/usr/bin/env TMPDIR=" + data_.path().string() + " " + ZENTAVO_PUSH_SERVICE + " " +
               data_.path().string() + "/data " + extension;
    }
    pid_t process() {
        const auto answered = std::make_shared<Awaited<guint32>>();
        observer_.call({.destination = "org.freedesktop.DBus",
                        .path = "/org/freedesktop/DBus",
                        .interface = "org.freedesktop.DBus",
                        .method = "GetConnectionUnixProcessID",
                        .parameters = desktop::Variant::share(g_variant_new("(s)", service)),
                        .answerType = "(u)"},
                       [answered](const Result<desktop::Variant>& answer) {
                           guint32 found = 0;
                           if (answer) {
                               g_variant_get(answer->get(), "(u)", &found);
                           }
                           answered->put(found);
                       });
        const guint32 found = answered->next();
        if (found == 0) {
            std::fprintf(stderr, "the service does not run\n");
            std::exit(2);
        }
        return static_cast<pid_t>(found);
    }

    TemporaryFolder data_;
    PrivateBus bus_;
    FakeNotificationServer server_;
    FakeDistributor distributor_;
    FakeApp app_;
    Awaited<bool> presence_;
    desktop::SessionBus observer_;
    WebPushSender sender_;
    std::string token_;
};

} // namespace

int main(int argc, char** argv) {
    const int pushes = argc > 1 ? std::max(1, std::atoi(argv[1])) : 100;
    const std::string picture(64U << 10U, 'x');
    LoopbackServer images([&](const auto&, auto& reply) { reply.answer(200, picture); });
    const Map plain{{"alert", Map{{"title", "Coat"}, {"body", "is here"}}}};
    Map rewritten = plain;
    rewritten.set("mutable-content", 1);
    rewritten.set("badge", Map{{"type", "increase"}, {"value", 1}});
    Map pictured = rewritten;
    pictured.set("urlImageString", images.url("/coat.png").text());

    Arrival arrival;
    arrival.weigh("the process, registered");
    arrival.measure("as it came", plain, pushes);
    arrival.weigh("the process, after pushes");
    arrival.measure("through the extension", rewritten, pushes);
    arrival.measure("with an image of 64 KiB", pictured, pushes);
    arrival.weigh("the process, after images");
    arrival.measure("the process started for it", rewritten, std::max(1, pushes / 10), true);
    arrival.measure("the same with an image", pictured, std::max(1, pushes / 10), true);
    arrival.end();
    return 0;
}
