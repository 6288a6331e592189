#pragma once

#include <unicode/ucal.h>
#include <unicode/uloc.h>

namespace zentavo::linux_port {

/// The few functions of ICU that we call. The library is opened when first asked for, since that takes up to tens of
/// milliseconds, and stays open until the process ends.
struct IcuLibrary {
    decltype(&::uloc_forLanguageTag) forLanguageTag;
    decltype(&::ucal_open) open;
    decltype(&::ucal_close) close;
    decltype(&::ucal_getAttribute) getAttribute;
    decltype(&::ucal_setAttribute) setAttribute;
    decltype(&::ucal_setMillis) setMillis;
    decltype(&::ucal_getMillis) getMillis;
    decltype(&::ucal_get) get;
    decltype(&::ucal_set) set;
    decltype(&::ucal_add) add;

    /// Null when the version that we were built with is not installed. Any thread.
    static const IcuLibrary* shared();
};

} // namespace zentavo::linux_port
