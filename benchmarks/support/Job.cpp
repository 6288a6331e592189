#include "support/Job.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "support/Failure.h"

namespace bench {

Job Job::fromArguments(int argc, char** argv) {
    check(argc > 1, "a task is missing; this program is started by zentavo-bench");
    Job job;
    job.task = argv[1];
    for (int i = 2; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const std::size_t split = argument.find('=');
        check(split != std::string_view::npos, argv[i]);
        const std::string_view name = argument.substr(0, split);
        const long long value = std::strtoll(argv[i] + split + 1, nullptr, 10);
        if (name == "port") {
            job.port = static_cast<std::uint16_t>(value);
        } else if (name == "traffic") {
            job.traffic = static_cast<int>(value);
        } else if (name == "events") {
            job.events = static_cast<std::size_t>(value);
        } else if (name == "body") {
            job.bodyBytes = static_cast<std::size_t>(value);
        } else if (name == "pause") {
            job.pause = value;
        } else if (name == "build") {
            job.build = value != 0;
        }
    }
    return job;
}

void tell(const char* name, double value) { std::printf("%s %.17g\n", name, value); }

} // namespace bench
