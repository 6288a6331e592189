// A program that calls an object on a message bus, for tests of who may: a test's own connections are all of one process.
//
//   desktop_other_program ADDRESS NAME PATH INTERFACE METHOD [STEP…]
//
// NAME is the object's. Steps, of which each call takes one text and prints a line, "ok" or the error's name:
//
//   own=NAME      takes a name
//   leave=NAME    gives it back
//   call=TEXT     calls on the connection that takes names
//   other=TEXT    calls on another connection
//   shout=TEXT, shout-other=TEXT    the same without waiting for the answer; they print nothing

#include <cstdio>
#include <string>
#include <string_view>

#include <gio/gio.h>

namespace {

GDBusConnection* connect(const char* address) {
    return g_dbus_connection_new_for_address_sync(
        address,
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
}

void askBus(GDBusConnection* connection, const char* method, GVariant* parameters) {
    GVariant* answer =
        g_dbus_connection_call_sync(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                    method, parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    g_variant_unref(answer);
}

void call(GDBusConnection* connection, char** object, const std::string& text) {
    GError* error = nullptr;
    GVariant* answer = g_dbus_connection_call_sync(connection, object[0], object[1], object[2], object[3],
                                                   g_variant_new("(s)", text.c_str()), nullptr, G_DBUS_CALL_FLAGS_NONE,
                                                   10'000, nullptr, &error);
    if (answer != nullptr) {
        g_variant_unref(answer);
        std::puts("ok");
        return;
    }
    char* name = g_dbus_error_get_remote_error(error);
    std::puts(name != nullptr ? name : error->message);
    g_free(name);
    g_error_free(error);
}

void shout(GDBusConnection* connection, char** object, const std::string& text) {
    g_dbus_connection_call(connection, object[0], object[1], object[2], object[3], g_variant_new("(s)", text.c_str()),
                           nullptr, G_DBUS_CALL_FLAGS_NONE, 10'000, nullptr, nullptr, nullptr);
    g_dbus_connection_flush_sync(connection, nullptr, nullptr);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 6) {
        return 2;
    }
    GDBusConnection* named = connect(argv[1]);
    GDBusConnection* other = connect(argv[1]);
    if (named == nullptr || other == nullptr) {
        return 1;
    }
    for (int i = 6; i < argc; ++i) {
        const std::string_view step = argv[i];
        const std::string_view verb = step.substr(0, step.find('='));
        const std::string word(step.substr(step.find('=') + 1));
        if (verb == "own") {
            askBus(named, "RequestName", g_variant_new("(su)", word.c_str(), 0U));
        } else if (verb == "leave") {
            askBus(named, "ReleaseName", g_variant_new("(s)", word.c_str()));
        } else if (verb.starts_with("shout")) {
            shout(verb == "shout" ? named : other, argv + 2, word);
        } else {
            call(verb == "call" ? named : other, argv + 2, word);
        }
    }
    return 0;
}
