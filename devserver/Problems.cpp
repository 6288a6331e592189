#include "devserver/Problems.h"

#include <utility>

namespace zentavo::devserver {

void Problems::add(std::string problem) {
    if (list_.size() < maximum) {
        list_.push_back(std::move(problem));
    } else {
        ++more_;
    }
}

std::vector<std::string> Problems::list() const {
    std::vector<std::string> lines = list_;
    if (more_ > 0) {
        lines.push_back("and " + std::to_string(more_) + " more");
    }
    return lines;
}

} // namespace zentavo::devserver
