#pragma once

/// Marks what the shared libraries export. Everything else is compiled with hidden visibility.
#if defined(__GNUC__)
#define ZENTAVO_EXPORT __attribute__((visibility("default")))
#else
#define ZENTAVO_EXPORT
#endif
