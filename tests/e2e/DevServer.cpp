#include "tests/e2e/DevServer.h"

#include <csignal>
#include <cstdlib>
#include <utility>

#include <httplib.h>

#include "zentavo/foundation/JSON.h"

namespace zentavo::e2e {

namespace {

std::vector<std::string> command(std::vector<std::string> options) {
    options.insert(options.begin(), {ZENTAVO_DEVSERVER, "--port", "0", "--quiet", "--lifetime", "60"});
    return options;
}

} // namespace

DevServer::DevServer(std::vector<std::string> options) : process_(command(std::move(options))) {
    const std::string line = process_.readLine(std::chrono::seconds(20));
    const std::size_t start = line.find("http://");
    EXPECT_NE(start, std::string::npos) << line;
    url_ = line.substr(start);
}

void DevServer::kill() const { process_.kill(SIGKILL); }

void DevServer::fault(const std::string& query) const {
    httplib::Client client(url_);
    const auto answer = client.Post("/_dev/fault?" + query, "", "application/json");
    ASSERT_TRUE(answer) << query;
    ASSERT_LT(answer->status, 300) << answer->body;
}

std::vector<Map> DevServer::requests(const std::string& path, std::size_t count) const {
    httplib::Client client(url_);
    client.set_read_timeout(20);
    client.Get("/_dev/wait?path=" + path + "&count=" + std::to_string(count) + "&timeout=5");
    const auto answer = client.Get("/_dev/requests?path=" + path);
    std::vector<Map> found;
    if (answer) {
        const auto list = json::read(answer->body).value();
        for (const Value& request : *list.asMap()->find("requests")->asList()) {
            found.push_back(*request.asMap());
        }
    }
    return found;
}

std::map<std::string, std::int64_t> DevServer::inboxStates(const std::string& user) const {
    httplib::Client client(url_);
    const auto answer = client.Get("/_dev/inbox");
    std::map<std::string, std::int64_t> found;
    const Map everything = answer ? json::readMap(answer->body).value() : Map{{"messages", List()}};
    for (const Value& message : *everything.find("messages")->asList()) {
        std::int64_t& state = found[*message.asMap()->find("item_id")->asString()];
        state = 1;
        for (const Value& each : *message.asMap()->find("states")->asList()) {
            if (*each.asMap()->find("lookup_id") == user) {
                state = *each.asMap()->find("status")->exactInt64();
            }
        }
    }
    return found;
}

Value DevServer::dev(const std::string& path) const {
    httplib::Client client(url_);
    const auto answer = client.Get("/_dev/" + path);
    return answer && answer->status == 200 ? json::read(answer->body).value() : Value();
}

Map DevServer::push(const std::string& file) const {
    httplib::Client client(url_);
    client.set_read_timeout(20);
    const auto answer = client.Post("/_dev/push", R"({"file": ")" + file + "\"}", "application/json");
    return answer ? json::readMap(answer->body).value() : Map();
}

std::vector<std::string> DevServer::verdicts() const {
    httplib::Client client(url_);
    const auto answer = client.Get("/_dev/deliveries");
    const Map all = answer ? json::readMap(answer->body).value() : Map{{"deliveries", List()}};
    std::vector<std::string> verdicts;
    for (const Value& delivery : *all.find("deliveries")->asList()) {
        verdicts.push_back(*delivery.asMap()->find("verdict")->asString());
    }
    return verdicts;
}

std::vector<Map> DevServer::events(std::size_t count) const {
    std::vector<Map> bodies;
    for (const Map& request : requests("/event", count)) {
        bodies.push_back(*request.find("body")->asMap());
    }
    return bodies;
}

EndToEndTest::EndToEndTest() {
    std::string pattern = ::testing::TempDir() + "zentavo-e2e-XXXXXX";
    folder = mkdtemp(pattern.data());
}

EndToEndTest::~EndToEndTest() { std::filesystem::remove_all(folder); }

std::vector<std::string> EndToEndTest::consoleCommand(std::vector<std::string> verbs,
                                                      const std::string& serverURL) const {
    std::vector<std::string> arguments{ZENTAVO_CONSOLE, "--suite", folder, "--server", serverURL};
    arguments.insert(arguments.end(), verbs.begin(), verbs.end());
    return arguments;
}

int EndToEndTest::console(std::vector<std::string> verbs, const std::string& serverURL) {
    Process process(consoleCommand(std::move(verbs), serverURL.empty() ? server.url() : serverURL));
    const int status = process.wait();
    output = process.output();
    return status;
}

std::vector<std::string> EndToEndTest::names(const std::vector<Map>& events) {
    std::vector<std::string> result;
    for (const Map& event : events) {
        result.push_back(*event.find("en")->asString());
    }
    return result;
}

} // namespace zentavo::e2e
