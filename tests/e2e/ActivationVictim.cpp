// Activates the SDK and kills itself (SIGKILL) just before the N-th step that leaves a trace: a write to the store or a
// request handed over. usage: activation_victim FOLDER URL N

#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>

#include <ports/linux/LinuxPlatform.h>
#include <zentavo/Zentavo.h>

using namespace zentavo;

namespace {

int stepsLeft = 0;

void step() {
    if (stepsLeft-- == 0) {
        raise(SIGKILL);
    }
}

class MortalPreferences final : public platform::Preferences {
public:
    explicit MortalPreferences(std::shared_ptr<platform::Preferences> inner) : inner_(std::move(inner)) {}

    std::optional<Value> object(std::string_view key) const override { return inner_->object(key); }
    void set(std::string_view key, Value value) override {
        step();
        inner_->set(key, std::move(value));
    }
    void remove(std::string_view key) override {
        step();
        inner_->remove(key);
    }
    void update(std::string_view key,
                const std::function<std::optional<Value>(const std::optional<Value>&)>& change) override {
        step();
        inner_->update(key, change);
    }
    void synchronise() override {
        step();
        inner_->synchronise();
    }

private:
    const std::shared_ptr<platform::Preferences> inner_;
};

class MortalProvider final : public platform::PreferencesProvider {
public:
    explicit MortalProvider(std::shared_ptr<platform::PreferencesProvider> inner) : inner_(std::move(inner)) {}

    std::shared_ptr<platform::Preferences> standard() override { return inner_->standard(); }
    std::shared_ptr<platform::Preferences> suite(std::string_view name) override {
        return std::make_shared<MortalPreferences>(inner_->suite(name));
    }

private:
    const std::shared_ptr<platform::PreferencesProvider> inner_;
};

class MortalSession final : public platform::URLSession {
public:
    explicit MortalSession(std::shared_ptr<platform::URLSession> inner) : inner_(std::move(inner)) {}

    std::shared_ptr<platform::URLTask> start(std::shared_ptr<const platform::URLRequest> request,
                                             std::shared_ptr<platform::DispatchQueue> queue,
                                             Completion completion) override {
        step();
        return inner_->start(std::move(request), std::move(queue), std::move(completion));
    }

private:
    const std::shared_ptr<platform::URLSession> inner_;
};

} // namespace

int main(int, char** argv) {
    linux_port::LinuxOptions options;
    options.dataFolder = argv[1];
    stepsLeft = std::atoi(argv[3]);
    const auto platform = linux_port::makeLinuxPlatform(options);
    platform->preferences = std::make_shared<MortalProvider>(platform->preferences);
    platform->urlSession = std::make_shared<MortalSession>(platform->urlSession);
    const auto sdk = std::make_shared<Zentavo>(platform);
    sdk->setEndpoints(Endpoints::all(argv[2]));
    sdk->activate(Configuration{"33167", "555", "group.shop", "42"});
    return 0;
}
