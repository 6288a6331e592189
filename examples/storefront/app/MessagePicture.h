#pragma once

#include <memory>

#include <gtkmm/picture.h>
#include <zentavo/platform/DispatchQueue.h>
#include <zentavo/platform/URLSession.h>

namespace storefront {

/// A picture from the network. It is asked for when it first comes on screen, and a grey field until it is there.
class MessagePicture : public Gtk::Picture {
public:
    MessagePicture(zentavo::URL url, std::shared_ptr<zentavo::platform::URLSession> network,
                   std::shared_ptr<zentavo::platform::DispatchQueue> queue);

private:
    void load();
    void show(const std::string& bytes);

    const zentavo::URL url_;
    const std::shared_ptr<zentavo::platform::URLSession> network_;
    const std::shared_ptr<zentavo::platform::DispatchQueue> queue_;
    const std::shared_ptr<int> alive_ = std::make_shared<int>(0);
    bool asked_ = false;
};

} // namespace storefront
