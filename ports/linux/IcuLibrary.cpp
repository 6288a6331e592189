#include "ports/linux/IcuLibrary.h"

#include <dlfcn.h>

// ICU's headers give each function a name with the version in it; these spell the result.
#define ZENTAVO_TEXT(x) #x
#define ZENTAVO_EXPANDED_TEXT(x) ZENTAVO_TEXT(x)

namespace zentavo::linux_port {
namespace {

template <class Function>
bool find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(library, name));
    return function != nullptr;
}

const IcuLibrary* load() {
    // Never closed: a calendar may be asked while the process ends.
    void* library = ::dlopen("libicui18n.so." U_ICU_VERSION_SHORT, RTLD_LAZY | RTLD_LOCAL);
    static IcuLibrary icu{};
    const bool complete = library != nullptr &&
                          find(library, ZENTAVO_EXPANDED_TEXT(uloc_forLanguageTag), icu.forLanguageTag) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_open), icu.open) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_close), icu.close) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_getAttribute), icu.getAttribute) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_setAttribute), icu.setAttribute) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_setMillis), icu.setMillis) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_getMillis), icu.getMillis) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_get), icu.get) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_set), icu.set) &&
                          find(library, ZENTAVO_EXPANDED_TEXT(ucal_add), icu.add);
    return complete ? &icu : nullptr;
}

} // namespace

const IcuLibrary* IcuLibrary::shared() {
    static const IcuLibrary* const icu = load();
    return icu;
}

} // namespace zentavo::linux_port
