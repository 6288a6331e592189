#pragma once

#include <string>

namespace zentavo::websocket::conformance {

/// Counts a case that was put to `subject` for the table that is printed when all tests have run, and fails the test
/// where it was not passed. `name` is "group/case"; `why` is shown with a failure.
void judge(const std::string& subject, const std::string& name, bool passed, const std::string& why = {});

} // namespace zentavo::websocket::conformance
