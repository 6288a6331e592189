#include "ports/memory/MemoryKeyServices.h"

#include <algorithm>
#include <utility>

#include "zentavo/foundation/Mutex.h"

namespace zentavo::testing {

using platform::Bytes;
using platform::RSAEncryption;
using platform::RSASignature;

struct MemoryKeyServices::State {
    Mutex mutex;
    Result<Bytes> signature ZENTAVO_GUARDED_BY(mutex) = Bytes{'s', 'i', 'g', 'n', 'a', 't', 'u', 'r', 'e'};
    std::optional<Error> refusal ZENTAVO_GUARDED_BY(mutex);
    std::vector<Signing> signings ZENTAVO_GUARDED_BY(mutex);
};

class MemoryKeyServices::Key final : public platform::RSAKey {
public:
    using Slice = std::span<const std::uint8_t>;

    Key(std::shared_ptr<State> state, bool isPrivate) : state_(std::move(state)), isPrivate_(isPrivate) {}

    std::size_t blockSize() const noexcept override { return 256; }
    bool isPrivate() const noexcept override { return isPrivate_; }

    Result<Bytes> encrypt(Slice, RSAEncryption) const override { return Error{"the memory port does not encrypt"}; }
    Result<Bytes> decrypt(Slice, RSAEncryption) const override { return Error{"the memory port does not decrypt"}; }

    Result<Bytes> sign(Slice message, RSASignature scheme) const override {
        if (!isPrivate_) {
            return Error{"a public key cannot sign"};
        }
        MutexLock lock(state_->mutex);
        state_->signings.push_back({Bytes(message.begin(), message.end()), scheme});
        return state_->signature;
    }

    Result<bool> verify(Slice, Slice signature, RSASignature) const override {
        MutexLock lock(state_->mutex);
        return state_->signature.ok() && std::ranges::equal(*state_->signature, signature);
    }

private:
    const std::shared_ptr<State> state_;
    const bool isPrivate_;
};

MemoryKeyServices::MemoryKeyServices() : state_(std::make_shared<State>()) {}

void MemoryKeyServices::setSignature(Result<Bytes> outcome) {
    MutexLock lock(state_->mutex);
    state_->signature = std::move(outcome);
}

void MemoryKeyServices::refuseKeys(std::optional<Error> reason) {
    MutexLock lock(state_->mutex);
    state_->refusal = std::move(reason);
}

std::vector<MemoryKeyServices::Signing> MemoryKeyServices::signings() const {
    MutexLock lock(state_->mutex);
    return state_->signings;
}

Result<std::shared_ptr<const platform::RSAKey>> MemoryKeyServices::makeKey(bool isPrivate) const {
    MutexLock lock(state_->mutex);
    if (state_->refusal) {
        return *state_->refusal;
    }
    return std::shared_ptr<const platform::RSAKey>(std::make_shared<Key>(state_, isPrivate));
}

Result<std::shared_ptr<const platform::RSAKey>> MemoryKeyServices::privateKey(std::span<const std::uint8_t>) const {
    return makeKey(true);
}

Result<std::shared_ptr<const platform::RSAKey>> MemoryKeyServices::publicKey(std::span<const std::uint8_t>) const {
    return makeKey(false);
}

} // namespace zentavo::testing
