#include "ports/desktop/AppOnDesktop.h"

#include <cerrno> // the program's name

#include "ports/desktop/BusNames.h"

namespace zentavo::desktop {

AppOnDesktop AppOnDesktop::of(const platform::Bundle& program) {
    const std::string file = program_invocation_short_name;
    const auto names = BusNames::of(program);
    AppOnDesktop app{file, names ? names->app : file};
    for (const char* key : {"CFBundleDisplayName", "CFBundleName"}) {
        if (const auto name = program.infoText(key); name && !name->empty()) {
            app.name = *name;
            break;
        }
    }
    return app;
}

} // namespace zentavo::desktop
