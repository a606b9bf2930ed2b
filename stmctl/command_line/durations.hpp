// Times as users type them: "90", "90s", "5m", "2h", "500ms", "1.5h".
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace stmctl
{

// Throws a Failure that names the forms: "--duration must be a time such as 90, ..., not 'soon'".
// Anything below a millisecond counts as one.
std::chrono::milliseconds parse_duration(const std::string &text, std::string_view what);

} // namespace stmctl
