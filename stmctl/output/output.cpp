// Everything that stmctl itself writes.
#include "stmctl/output/output.hpp"

#include "stmctl/output/buffered_writer.hpp"
#include "stmctl/output/terminal.hpp"
#include "stmctl/process/capture.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace stmctl
{

namespace
{

constinit BufferedWriter results(STDOUT_FILENO);

Detail chosen_detail = Detail::usual;

volatile sig_atomic_t shown_columns = 0; // of the live line
volatile sig_atomic_t shown_on_errors = 0;

bool is_read_by_line()
{
    static const bool on_terminal = is_terminal(STDOUT_FILENO);
    return on_terminal;
}

// If stmctl is started without a standard descriptor, using it is an error and does not reach the
// device.
void occupy(int descriptor, int flags)
{
    if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
        const int null_device = open("/dev/null", flags);
        if (null_device >= 0 && null_device != descriptor) {
            dup2(null_device, descriptor);
            close(null_device);
        }
    }
}

int descriptor_of(Screen screen)
{
    return screen == Screen::output ? STDOUT_FILENO : error_descriptor();
}

Screen live_screen()
{
    return shown_on_errors != 0 ? Screen::errors : Screen::output;
}

void write_errors(std::string_view text)
{
    if (!text.empty() && write(error_descriptor(), text.data(), text.size()) < 0) {
        // There is nobody left to inform.
    }
}

void draw(Screen screen, std::string_view text)
{
    if (screen == Screen::errors) {
        write_errors(text);
        return;
    }
    print(text);
    flush_output();
}

} // namespace

void print(std::string_view text)
{
    results.write(text);
    if (text.ends_with('\n') && is_read_by_line()) {
        results.flush();
    }
}

void flush_output()
{
    results.flush();
}

bool output_failed()
{
    return results.error() != 0;
}

bool reader_has_left()
{
    return results.error() == EPIPE;
}

ExitStatus status_of_failed_output()
{
    return reader_has_left() ? ExitStatus::done : ExitStatus::failed;
}

bool is_on_terminal(Screen screen)
{
    return is_terminal(descriptor_of(screen));
}

// The last column stays free: some terminals start a new line after it.
int width_of(Screen screen)
{
    return std::max(terminal_width(descriptor_of(screen)) - 1, 1);
}

void show_live_line(Screen screen, std::string_view line)
{
    line = line.substr(0, static_cast<size_t>(width_of(screen)));
    const int columns = static_cast<int>(line.size());
    shown_on_errors = screen == Screen::errors ? 1 : 0;
    draw(screen, fmt::format("\r{}{:{}}", line, "", std::max(shown_columns - columns, 0)));
    shown_columns = columns;
}

void leave_live_line()
{
    if (shown_columns > 0) {
        shown_columns = 0;
        if (write(descriptor_of(live_screen()), "\n", 1) < 0) {
            // There is nobody left to show it to.
        }
    }
}

void remove_live_line()
{
    if (shown_columns > 0) {
        draw(live_screen(), fmt::format("\r{:{}}\r", "", static_cast<int>(shown_columns)));
        shown_columns = 0;
    }
}

void say(std::string_view sentence)
{
    pass_on(fmt::format("stmctl: {}\n", sentence));
}

void set_detail(Detail detail)
{
    chosen_detail = detail;
}

Detail detail()
{
    return chosen_detail;
}

void remark(std::string_view sentence)
{
    if (chosen_detail != Detail::quiet) {
        say(sentence);
    }
}

void say_more(std::string_view sentence)
{
    if (chosen_detail == Detail::verbose) {
        say(sentence);
    }
}

void pass_on(std::string_view text)
{
    if (text.empty()) {
        return;
    }
    remove_live_line();
    flush_output(); // so that on a terminal both appear in the order of writing
    write_errors(text);
}

ExitStatus finish_output(ExitStatus status)
{
    flush_output();
    if (!output_failed() || reader_has_left()) {
        return status;
    }
    say(fmt::format("cannot write the output: {}", strerror(results.error())));
    const bool good_otherwise = status == ExitStatus::done || status == ExitStatus::stopped;
    return good_otherwise ? ExitStatus::failed : status;
}

void prepare_output()
{
    occupy(STDIN_FILENO, O_WRONLY);
    occupy(STDOUT_FILENO, O_RDONLY);
    occupy(STDERR_FILENO, O_RDONLY);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

} // namespace stmctl
