#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/MemoryPlatform.h"
#include "zentavo/Zentavo.h"
#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo {

/// An SDK on a platform whose time, net and store are in the test's hands. It is the shared instance while a test runs.
class SdkTest : public ::testing::Test {
protected:
    SdkTest() { restart(); }
    ~SdkTest() override {
        setFaultPolicy(FaultPolicy::stop);
        Zentavo::setShared(nullptr);
    }

    /// The next start of the same app: a new instance on what is stored.
    void restart() {
        sdk = std::make_shared<Zentavo>(memory.platform());
        Zentavo::setShared(sdk);
    }
    void activate(const std::string& portal = "1001") {
        sdk->activate(Configuration{portal, "555", "group.shop", "42"});
    }
    /// Activates, and forgets what that sent.
    void start() {
        activate();
        settle();
        memory.session->clear();
        memory.console->clear();
    }
    /// Lets everything happen that is to happen now.
    void settle() { memory.queues->runUntilIdle(); }

    std::shared_ptr<platform::Preferences> store() { return sdk->state()->store(); }
    const StoreKeys& keys() { return sdk->state()->keys; }

    /// Every request so far to paths that end in `path`.
    std::vector<std::shared_ptr<const platform::URLRequest>> sent(const std::string& path) {
        std::vector<std::shared_ptr<const platform::URLRequest>> found;
        for (const auto& request : memory.session->requests()) {
            if (request->url.path().ends_with(path)) {
                found.push_back(request);
            }
        }
        return found;
    }
    static Map bodyOf(const platform::URLRequest& request) {
        return request.body ? json::readMap(*request.body).value() : Map();
    }
    /// The bodies of all events so far.
    std::vector<Map> events() {
        std::vector<Map> bodies;
        for (const auto& request : sent("/event")) {
            bodies.push_back(bodyOf(*request));
        }
        return bodies;
    }
    std::vector<std::string> eventNames() {
        std::vector<std::string> names;
        for (const Map& body : events()) {
            names.push_back(*body.find("en")->asString());
        }
        return names;
    }
    /// Messages logged so far, without the prefix and the time.
    std::vector<std::string> logged() {
        std::vector<std::string> messages;
        for (const std::string& line : memory.console->lines()) {
            const std::string start = "<ZENTAVO> - 15.01.26 - 12:00:00: ";
            messages.push_back(line.starts_with(start) ? line.substr(start.size()) : line);
        }
        return messages;
    }

    testing::MemoryPlatform memory;
    std::shared_ptr<Zentavo> sdk;
};

} // namespace zentavo
