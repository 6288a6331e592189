#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/Process.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::e2e {

/// A dev server of the test's own on a free port. It ends with the test, and by itself after a minute.
class DevServer {
public:
    /// `options` are added to its command line.
    explicit DevServer(std::vector<std::string> options = {});

    const std::string& url() const noexcept { return url_; }
    /// Ends at once, in the middle of whatever it does.
    void kill() const;
    /// Scripts a fault: "path=/event&status=500&times=1".
    void fault(const std::string& query) const;
    /// Waits until `count` requests for `path` have come (a few seconds at most), and returns what has come by then.
    std::vector<Map> requests(const std::string& path, std::size_t count) const;
    /// The messages of the server's inbox store as `user` has them, by id: 1 unread, 2 read, 3 removed.
    std::map<std::string, std::int64_t> inboxStates(const std::string& user) const;
    /// What its own interface says at "/_dev/PATH"; null where it says no.
    Value dev(const std::string& path) const;
    /// Sends the push in the file of this name, and says what became of it.
    Map push(const std::string& file) const;
    /// What the server says became of each in-app delivery, the newest first.
    std::vector<std::string> verdicts() const;
    /// The bodies of the events that came.
    std::vector<Map> events(std::size_t count) const;

private:
    Process process_;
    std::string url_;
};

/// A test with a server and a folder for stores.
class EndToEndTest : public ::testing::Test {
protected:
    EndToEndTest();
    ~EndToEndTest() override;

    /// The console's command line for `verbs` on this test's store.
    std::vector<std::string> consoleCommand(std::vector<std::string> verbs, const std::string& serverURL) const;
    /// Runs the console with `verbs` on this test's store, to its end. Its output is kept in `output`.
    int console(std::vector<std::string> verbs, const std::string& serverURL = {});
    static std::vector<std::string> names(const std::vector<Map>& events);

    DevServer server;
    std::filesystem::path folder;
    std::string output;
};

} // namespace zentavo::e2e
