#include "support/CollectorProcess.h"

#include <csignal>
#include <cstdlib>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Failure.h"

namespace bench {

CollectorProcess::CollectorProcess(CollectorMode mode) {
    Collector collector(mode, *traffic_);
    port_ = collector.port();
    child_ = fork();
    checkSystem(child_ >= 0, "a process for the collector");
    if (child_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        alarm(120);
        try {
            collector.run();
        } catch (...) { // the parent's stack is none of the child's business
        }
        std::_Exit(0);
    }
}

CollectorProcess::~CollectorProcess() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
}

} // namespace bench
