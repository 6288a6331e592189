#include <cstdio>
#include <string>

#include "devserver/Console.h"
#include "devserver/DevServer.h"
#include "devserver/Lifetime.h"
#include "devserver/Options.h"
#include "zentavo/foundation/Version.h"

using namespace zentavo;
using namespace zentavo::devserver;

namespace {

int fail(const std::string& why) {
    std::fprintf(stderr, "zentavo-devserver: %s\n", why.c_str());
    return 2;
}

int run(const Options& options) {
    if (!isLoopback(options.host)) {
        if (!options.expose) {
            return fail(options.host + " is not an address of this machine alone; --expose allows it");
        }
        std::fprintf(stderr, "zentavo-devserver: warning: whoever reaches %s sees all requests and plans faults\n",
                     options.host.c_str());
    }
    Lifetime lifetime({options.lifetime, options.parent});
    Console console;
    DevServer::Settings settings;
    settings.host = options.host;
    settings.port = options.port;
    settings.sessionId = options.sessionId;
    settings.inboxFolder = options.inboxFolder;
    settings.inboxStore = options.inboxStore;
    settings.campaignFolder = options.campaignFolder;
    settings.catchAll = options.catchAll;
    settings.pushFolder = options.pushFolder;
    settings.pushStore = options.pushStore;
    settings.playsDistributor = options.distributor;
    if (!options.distributorName.empty()) {
        settings.distributor.name = options.distributorName;
    }
    if (!options.quiet) {
        settings.observer = [&console](const LoggedRequest& request) { console.print(request); };
    }
    const auto server = DevServer::open(settings);
    if (!server) {
        return fail(server.error().message);
    }
    if (const std::string& problem = (*server)->distributorProblem(); !problem.empty()) {
        std::fprintf(stderr, "zentavo-devserver: warning: no push distributor: %s\n", problem.c_str());
    }
    std::printf("zentavo-devserver listening on %s\n", (*server)->url().c_str());
    std::fflush(stdout);
    lifetime.waitForEnd();
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    const auto options = Options::parse({arguments + 1, arguments + count});
    if (!options) {
        return fail(options.error().message + " (--help tells what there is)");
    }
    if (options->help) {
        std::fputs(Options::helpText().data(), stdout);
        return 0;
    }
    if (options->version) {
        std::puts("zentavo-devserver " ZENTAVO_VERSION);
        return 0;
    }
    return run(*options);
}
