#pragma once

#include <memory>
#include <vector>

#include <gtkmm/picture.h>
#include <gtkmm/scrolledwindow.h>
#include <zentavo/platform/DispatchQueue.h>
#include <zentavo/platform/URLSession.h>

namespace storefront {

/// A picture from the network. It is asked for when it first comes on screen, scrolled into view where it lies in a
/// scroller, and a grey field until it is there.
class MessagePicture : public Gtk::Picture {
public:
    MessagePicture(zentavo::URL url, std::shared_ptr<zentavo::platform::URLSession> network,
                   std::shared_ptr<zentavo::platform::DispatchQueue> queue);
    ~MessagePicture() override;

private:
    void listen();
    void lookSoon();
    void look();
    void load();
    void show(const std::string& bytes);

    const zentavo::URL url_;
    const std::shared_ptr<zentavo::platform::URLSession> network_;
    const std::shared_ptr<zentavo::platform::DispatchQueue> queue_;
    const std::shared_ptr<int> alive_ = std::make_shared<int>(0);
    Gtk::ScrolledWindow* scroller_ = nullptr; ///< holds this
    std::vector<sigc::connection> scrolling_;
    bool looking_ = false;
    bool asked_ = false;
};

} // namespace storefront
