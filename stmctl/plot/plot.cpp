// plot: draws columns of a CSV.
#include "stmctl/plot/plot.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/destination.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/terminal.hpp"
#include "stmctl/plot/gnuplot.hpp"
#include "stmctl/plot/plot_table.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

namespace stmctl
{

namespace
{

constexpr char USUAL_COLUMNS[] = "U1e,U2e,U3e";

struct Options {
    std::string file;
    std::string picture;
    std::string columns = USUAL_COLUMNS;
    bool no_clobber = false;
};

std::vector<std::string> split(const std::string &list)
{
    std::vector<std::string> names;
    for (size_t begin = 0; begin <= list.size();) {
        const size_t end = std::min(list.find(',', begin), list.size());
        names.push_back(list.substr(begin, end - begin));
        begin = end + 1;
    }
    if (std::ranges::count(names, "") > 0) {
        throw Failure(ExitStatus::usage,
                      fmt::format("--columns must be names separated by commas, not '{}'", list));
    }
    return names;
}

std::string terminal_for_text()
{
    constexpr int LEAST_ROWS = 10;
    winsize size = {};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
    const int rows = known ? size.ws_row : 24;
    return fmt::format("dumb size {},{}", std::max(terminal_width() - 1, 20),
                       std::max(rows - 1, LEAST_ROWS));
}

// The suffix of the name decides.
std::string terminal_for(const std::string &picture)
{
    if (picture.empty()) {
        return terminal_for_text();
    }
    std::string name = picture;
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return tolower(c); });
    if (name.ends_with(".png")) {
        return "png size 1200,600";
    }
    if (name.ends_with(".svg")) {
        return "svg size 1200,600 background 'white'";
    }
    throw Failure(ExitStatus::usage,
                  fmt::format("'{}': the name of a picture must end in .png or .svg", picture));
}

// An interrupt ends typed input; input from a pipe ends with its writer.
std::string read_all(int descriptor, const std::string &source)
{
    std::string text;
    char piece[65536];
    for (;;) {
        if (is_terminal(descriptor) && !wait_for_input()) {
            return text;
        }
        const ssize_t size = read(descriptor, piece, sizeof(piece));
        if (size < 0) {
            throw Failure(ExitStatus::failed,
                          fmt::format("cannot read {}: {}", source, strerror(errno)));
        }
        if (size == 0) {
            return text;
        }
        text.append(piece, static_cast<size_t>(size));
    }
}

std::string read_source(const std::string &file)
{
    if (file.empty() && is_terminal(STDIN_FILENO)) {
        throw Failure(ExitStatus::usage, "plot: no file given; see stmctl plot --help");
    }
    if (file.empty() || file == "-") {
        return read_all(STDIN_FILENO, "standard input");
    }
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw Failure(ExitStatus::failed,
                      fmt::format("cannot read '{}': {}", file, strerror(errno)));
    }
    std::string text = read_all(descriptor, fmt::format("'{}'", file));
    close(descriptor);
    return text;
}

// The data are numbers that we print ourselves, and all names are quoted: nothing in a file becomes
// a word of the script.
std::string script_for(const std::string &terminal, const PlotTable &table)
{
    std::string script = fmt::format("set terminal {}\nset grid\nset key outside top center "
                                     "horizontal\nset xlabel {} noenhanced\n"
                                     "$data << END\n",
                                     terminal, gnuplot_string(table.across));
    for (const std::vector<double> &row : table.rows) {
        script += fmt::format("{}\n", fmt::join(row, " "));
    }
    script += "END\nplot ";
    for (size_t i = 0; i < table.names.size(); ++i) {
        script += fmt::format("{}$data using 1:{} with lines title {} noenhanced",
                              i == 0 ? "" : ", ", i + 2, gnuplot_string(table.names[i]));
    }
    return script + "\n";
}

// gnuplot warns if all values are the same.
std::string range_of(const char *axis, double least, double most)
{
    return least < most ? "" : fmt::format("set {}range [{}:{}]\n", axis, least - 1, most + 1);
}

std::string ranges_of(const PlotTable &table)
{
    double least = table.rows[0][1];
    double most = least;
    for (const std::vector<double> &row : table.rows) {
        least = std::min(least, *std::min_element(row.begin() + 1, row.end()));
        most = std::max(most, *std::max_element(row.begin() + 1, row.end()));
    }
    const auto [first, last] = std::ranges::minmax_element(
        table.rows, {}, [](const std::vector<double> &row) { return row[0]; });
    return range_of("x", (*first)[0], (*last)[0]) + range_of("y", least, most);
}

ExitStatus plot(const Options &options)
{
    std::vector<std::string> columns = split(options.columns);
    const std::string terminal = terminal_for(options.picture);
    const std::string source =
        options.file.empty() || options.file == "-" ? "standard input" : options.file;
    if (options.no_clobber && options.picture.empty()) {
        throw Failure(ExitStatus::usage, "--no-clobber requires -o PICTURE");
    }
    const std::string text = read_source(options.file);
    if (const auto only = only_column(text); only && options.columns == USUAL_COLUMNS) {
        columns = {*only};
    }
    const PlotTable table = read_plot_table(text, columns, source);
    const std::string picture = run_gnuplot(ranges_of(table) + script_for(terminal, table));
    Destination destination(options.picture,
                            options.no_clobber ? OldContent::protects_file : OldContent::replaced);
    destination.begin();
    destination.write(picture);
    destination.finish();
    return ExitStatus::done;
}

} // namespace

Action declare_plot(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_operand(command, "FILE", Presence::optional, options->file,
                "CSV from stmctl; standard input if - or missing", names_of_files());
    add_option(command, "-o,--output", "PICTURE", options->picture,
               "draw to a .png or .svg file instead of as text", names_of_files());
    add_flag(command, "--no-clobber", options->no_clobber, "do not overwrite an existing picture");
    add_option(command, "--columns", "NAMES", options->columns, "columns to draw");
    return [options] { return plot(*options); };
}

} // namespace stmctl
