// Help that does not belong to a single command.
#pragma once

#include "stmctl/command_line/command_line.hpp"

namespace stmctl
{

std::span<const HelpTopic> help_topics();

const char *general_footer();
std::span<const MissingOption> missing_options();

} // namespace stmctl
