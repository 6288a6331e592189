#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <zentavo/Zentavo.h>

#include "ShopWindow.h"

namespace storefront {

/// Walks through the shop by itself and leaves a picture of each place: products, every kind of in-app message that the
/// dev server offers, cart and inbox. Says on standard output what it does and what the SDK says about each message.
class Tour {
public:
    Tour(ShopWindow& window, std::shared_ptr<zentavo::Zentavo> sdk,
         std::shared_ptr<zentavo::platform::Platform> platform, std::string server, std::filesystem::path folder);
    ~Tour();

    /// Begins; `done` is told whether all was as it should be.
    void start(std::function<void(bool)> done);

private:
    struct Step {
        std::string name; ///< of the picture; empty: none
        std::function<void()> act;
        std::function<bool()> arrived; ///< asked until it is true
        std::function<void()> leave;
        bool another = false; ///< whether the window must look different from before the step
    };

    void page(std::string name, std::function<void()> act);
    /// A step in the inbox, over when `state` is to be seen.
    void inbox(std::string name, std::function<void(InboxPage&)> act, std::string state);
    /// The inbox while its service is out of reach.
    void inboxOutage(std::string name);
    /// Asks the dev server for something; `then` runs when it has answered.
    void ask(
        const std::string& method, const std::string& path, std::function<void()> then = [] {});
    void message(std::string name, const std::string& event);
    void nothing(const std::string& event);
    void next();
    /// In some milliseconds, unless the tour has ended.
    void soon(std::function<void()> block);
    void await(unsigned waited);
    /// Looks at the window until it holds still.
    void watch(unsigned waited, unsigned still);
    void leave();
    /// On screen, with its page loaded.
    bool isMessageThere() const;
    void closeMessage();

    ShopWindow& window_;
    const std::shared_ptr<zentavo::Zentavo> sdk_;
    const std::shared_ptr<zentavo::platform::Platform> platform_;
    const std::string server_;
    const std::filesystem::path folder_;
    std::deque<Step> steps_;
    std::function<void(bool)> done_;
    bool good_ = true;
    std::vector<unsigned char> before_; ///< how the window looked when the step began
    std::vector<unsigned char> last_;
    const std::shared_ptr<int> alive_ = std::make_shared<int>(0);
    std::string lastTrace_;
};

} // namespace storefront
