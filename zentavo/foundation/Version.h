#pragma once

/// The one place that states the version: the build reads it from here, and so does `Zentavo::SDK_VERSION`.
#define ZENTAVO_VERSION "1.1.54"
