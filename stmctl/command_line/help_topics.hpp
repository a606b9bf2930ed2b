// Help that belongs to no single command.
#pragma once

#include <string>
#include <string_view>

// The text of "stmctl --help TOPIC", or null.
const char *help_topic(std::string_view name);

std::string general_footer();
