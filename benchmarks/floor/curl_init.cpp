// What merely linking and initialising libcurl costs a program: the yardstick of the SDK's start.

#include <curl/curl.h>

#include "support/Job.h"
#include "support/SteadyTime.h"

int main() {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const auto now = bench::steadyNanoseconds();
    bench::tell("activated_at", static_cast<double>(now));
}
