// The meaning of stmctl's exit statuses; "stmctl --help status" explains them to users.
#pragma once

namespace stmctl
{

enum class ExitStatus {
    done = 0,      // also an endless run that its user has ended
    failed = 1,    // standard error says why
    usage = 2,     // the command line is wrong; nothing was started
    stopped = 3,   // ended by the user before the work was done
    not_there = 4, // the device or the segment
};

} // namespace stmctl
