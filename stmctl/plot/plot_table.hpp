// The columns of a CSV that are to be drawn.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

struct PlotTable {
    std::string across;             // what the first column is
    std::vector<std::string> names; // of the others
    std::vector<std::vector<double>> rows;
};

// The one column of a CSV besides the time and the number of a frame, if there is just one.
std::optional<std::string> only_column(std::string_view text);

// Throws a Failure, whose sentence names the source, if a column is missing, a value is not a
// number, or there is nothing to draw.
PlotTable read_plot_table(std::string_view text, const std::vector<std::string> &columns,
                          const std::string &source);

} // namespace stmctl
