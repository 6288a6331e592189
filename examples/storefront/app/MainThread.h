#pragma once

#include <functional>

#include <glib.h>

namespace storefront {

/// Runs `block` on the thread of the main loop, later. Any thread.
inline void onMainThread(std::function<void()> block) {
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            (*static_cast<std::function<void()>*>(data))();
            return G_SOURCE_REMOVE;
        },
        new std::function<void()>(std::move(block)),
        [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
}

} // namespace storefront
