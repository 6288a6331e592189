// A stranger's app for a desktop, before it has made its window.
#include <ports/gtk/Attach.h>

int main() {
    zentavo::Zentavo::shared()->setIsDelivery(true);
    return zentavo::gtk::attach(nullptr) ? 1 : 0;
}
