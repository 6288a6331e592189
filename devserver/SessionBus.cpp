#include "devserver/SessionBus.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include <sys/stat.h>

namespace zentavo::devserver {

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
/// Flag of RequestName: fail where somebody has the name, do not queue for it.
constexpr std::uint32_t doNotQueue = 4;
constexpr std::uint32_t becameOwner = 1;
/// For saying good-bye.
constexpr std::chrono::milliseconds farewell{1'000};

int milliseconds(std::chrono::milliseconds time) { return static_cast<int>(time.count()); }

Error errorOf(const std::string& what, const Failure& failure) {
    return {what + (failure.get() != nullptr ? std::string(": ") + failure.get()->message : "")};
}

} // namespace

struct SessionBus::Setup {
    std::string address;
    std::chrono::milliseconds limit;
    std::function<Result<void>(GDBusConnection*)> setUp;
    std::promise<Result<void>> done;
};

std::string SessionBus::address() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr && *address != '\0') {
        return address;
    }
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    const std::string path = folder != nullptr ? std::string(folder) + "/bus" : "";
    struct stat facts {};
    if (path.empty() || ::stat(path.c_str(), &facts) != 0 || !S_ISSOCK(facts.st_mode)) {
        return {};
    }
    return "unix:path=" + std::string(GLibPointer<char>(g_dbus_address_escape_value(path.c_str())).get());
}

Result<void> SessionBus::start(const std::string& address, const std::string& name, std::chrono::milliseconds limit,
                               std::function<Result<void>(GDBusConnection*)> setUp) {
    name_ = name;
    auto setup = std::make_shared<Setup>(Setup{address, limit, std::move(setUp), {}});
    auto done = setup->done.get_future();
    thread_ = std::thread([this, setup] { run(*setup); });
    if (done.wait_for(limit) != std::future_status::ready) {
        // Connecting has no bound of its own.
        g_cancellable_cancel(cancellable_.get());
    }
    return done.get();
}

void SessionBus::stop() {
    {
        MutexLock lock(mutex_);
        stopped_ = true;
    }
    g_cancellable_cancel(cancellable_.get());
    g_main_context_wakeup(context_.get());
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool SessionBus::async(Block block) {
    {
        MutexLock lock(mutex_);
        if (stopped_) {
            return false;
        }
        blocks_.push_back(std::move(block));
    }
    g_main_context_wakeup(context_.get());
    return true;
}

bool SessionBus::isStopped() {
    MutexLock lock(mutex_);
    return stopped_;
}

void SessionBus::runBlocks() {
    std::vector<Block> blocks;
    {
        MutexLock lock(mutex_);
        blocks.swap(blocks_);
    }
    for (const Block& block : blocks) {
        block();
    }
}

void SessionBus::run(Setup& setup) {
    g_main_context_push_thread_default(context_.get());
    const auto opened = open(setup);
    const bool serves = opened.ok();
    setup.done.set_value(opened);
    while (serves && !isStopped()) {
        runBlocks();
        g_main_context_iteration(context_.get(), TRUE);
    }
    // Blocks that were taken are run, and calls that were made are answered: both may have somebody waiting.
    runBlocks();
    while (pending_ > 0) {
        g_main_context_iteration(context_.get(), TRUE);
    }
    close();
    g_main_context_pop_thread_default(context_.get());
}

Result<void> SessionBus::open(const Setup& setup) {
    Failure failure;
    connection_.reset(g_dbus_connection_new_for_address_sync(
        setup.address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, cancellable_.get(), failure.out()));
    if (!connection_) {
        return errorOf("the session bus cannot be reached", failure);
    }
    if (auto registered = setup.setUp(connection_.get()); !registered) {
        return registered;
    }
    const GLibPointer<GVariant> answer(g_dbus_connection_call_sync(
        connection_.get(), busName, busPath, busName, "RequestName", g_variant_new("(su)", name_.c_str(), doNotQueue),
        G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, milliseconds(setup.limit), cancellable_.get(), failure.out()));
    std::uint32_t code = 0;
    if (answer) {
        g_variant_get(answer.get(), "(u)", &code);
    }
    if (code != becameOwner) {
        return errorOf("the name " + name_ + (answer ? " is somebody else's on the bus" : " is not given"), failure);
    }
    return {};
}

void SessionBus::close() {
    if (!connection_) {
        return;
    }
    // With an answer, so that the name is free once this has returned.
    const GLibPointer<GVariant> ignored(g_dbus_connection_call_sync(
        connection_.get(), busName, busPath, busName, "ReleaseName", g_variant_new("(s)", name_.c_str()), nullptr,
        G_DBUS_CALL_FLAGS_NONE, milliseconds(farewell), nullptr, nullptr));
    g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
    connection_.reset();
    while (g_main_context_iteration(context_.get(), FALSE) != FALSE) {
    }
}

void SessionBus::call(const Target& target, GVariant* arguments, std::chrono::milliseconds limit, Answered answered) {
    struct Call {
        SessionBus& bus;
        Answered answered;
    };
    const auto finish = [](GObject* connection, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<Call> call(static_cast<Call*>(data));
        Failure failure;
        const GLibPointer<GVariant> ignored(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, failure.out()));
        --call->bus.pending_;
        if (call->answered) {
            call->answered(failure.get());
        }
    };
    ++pending_;
    g_dbus_connection_call(connection_.get(), target.name.c_str(), target.path, target.interface, target.method,
                           arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, milliseconds(limit), cancellable_.get(), finish,
                           new Call{*this, std::move(answered)});
}

} // namespace zentavo::devserver
