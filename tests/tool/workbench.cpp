// A user's workbench.
#include "tests/tool/workbench.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string_view>
#include <thread>

namespace fs = std::filesystem;

namespace
{

// Empty for programs of this machine, which is when a check takes the initialiser for superfluous.
// NOLINTNEXTLINE(readability-redundant-string-init)
constexpr std::string_view EMULATOR = TOOL_EMULATOR;

Words plus(Words words, const Words &more)
{
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

Words split(const std::string &text)
{
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
}

void redirect(int fd, const std::string &file)
{
    dup2(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), fd);
}

// "66*3 aa" in bytes.
Bytes parse_bytes(std::istringstream &words, std::string &stop)
{
    Bytes bytes;
    while (words >> stop && stop != "<" && stop != "!" && stop != ";") {
        const size_t star = stop.find('*');
        const size_t count = star == std::string::npos ? 1 : std::stoul(stop.substr(star + 1));
        bytes.insert(bytes.end(), count, static_cast<uint8_t>(std::stoul(stop, nullptr, 16)));
        stop.clear();
    }
    return bytes;
}

Line parse_line(const std::string &text)
{
    std::istringstream words(text);
    Line line;
    std::string seconds;
    std::string stop;
    words >> line.number >> seconds >> line.length >> stop;
    seconds.erase(seconds.find('.'), 1);
    line.microseconds = std::stoll(seconds);
    line.sent = parse_bytes(words, stop);
    if (stop == "!") {
        words >> line.error >> stop;
    } else {
        line.received = parse_bytes(words, stop);
    }
    std::getline(words >> std::ws, line.note);
    return line;
}

// A shell that starts the tests in the background, or nohup, leaves some of them ignored.
void handle_signals_by_default()
{
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) {
        signal(number, SIG_DFL);
    }
}

} // namespace

std::string update_program()
{
    return TOOL_UPDATE;
}

std::string probe_program(const std::string &name)
{
    return std::string(TOOL_PROBES) + "/" + name;
}

Words virtual_board(const Words &options)
{
    Words words = {TOOL_VIRTUAL_BOARD};
    if (!EMULATOR.empty()) {
        words = plus(words, {"--emulator", std::string(EMULATOR), "--preload", TOOL_PRELOAD});
    }
    return plus(words, options);
}

Words directly(const Words &environment, const Words &command)
{
    Words words =
        EMULATOR.empty() ? Words{"env", ADMIT_INSTRUMENTED} : split(std::string(EMULATOR));
    for (const std::string &setting : environment) {
        words = plus(words, EMULATOR.empty() ? Words{setting} : Words{"-E", setting});
    }
    return plus(words, command);
}

Bytes noise(size_t size, uint32_t seed)
{
    std::mt19937 generator(seed);
    Bytes bytes(size);
    std::ranges::generate(bytes, [&] { return static_cast<uint8_t>(generator()); });
    return bytes;
}

std::string joined(const Words &lines)
{
    std::string text;
    for (const std::string &line : lines) {
        text += line + '\n';
    }
    return text;
}

Workbench::Workbench()
{
    std::string name = fs::temp_directory_path() / "workbench-XXXXXX";
    folder_ = mkdtemp(name.data());
}

Workbench::~Workbench()
{
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

pid_t Workbench::start(const Words &words)
{
    std::vector<char *> arguments;
    for (const std::string &word : words) {
        arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const std::string output = path(".output");
    const std::string errors = path(".errors");
    const std::string here = folder_;
    const pid_t pid = fork();
    if (pid == 0) {
        handle_signals_by_default();
        redirect(STDOUT_FILENO, output);
        redirect(STDERR_FILENO, errors);
        if (chdir(here.c_str()) == 0) {
            execvp(arguments[0], arguments.data());
        }
        _exit(127);
    }
    return pid;
}

Result Workbench::finish(pid_t pid)
{
    int status = 0;
    waitpid(pid, &status, 0);
    Result result;
    result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    result.output = read_text(".output");
    result.errors = read_text(".errors");
    return result;
}

Result Workbench::run(const Words &words)
{
    return finish(start(words));
}

Words Workbench::on_board_in_real_time(const Words &options, const Words &command)
{
    const Words board =
        virtual_board({"--board", path("board"), "--transcript", path(".transcript")});
    return plus(plus(board, options), command);
}

Words Workbench::on_board(const Words &options, const Words &command)
{
    return on_board_in_real_time(plus({"--count-time"}, options), command);
}

Result Workbench::update_with(const Words &options, const Words &arguments)
{
    return run(on_board(options, plus({update_program()}, arguments)));
}

void Workbench::write_file(const std::string &name, const Bytes &content) const
{
    std::ofstream file(path(name), std::ios::binary);
    file.write(reinterpret_cast<const char *>(content.data()),
               static_cast<std::streamsize>(content.size()));
}

std::string Workbench::read_text(const std::string &name) const
{
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Bytes Workbench::read_file(const std::string &name) const
{
    const std::string text = read_text(name);
    return {text.begin(), text.end()};
}

Bytes Workbench::flash(size_t offset, size_t size) const
{
    const Bytes whole = read_file("board/flash.bin");
    const auto begin = whole.begin() + static_cast<std::ptrdiff_t>(offset);
    return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

std::vector<Line> Workbench::transcript() const
{
    std::vector<Line> lines;
    std::istringstream text(read_text(".transcript"));
    for (std::string line; std::getline(text, line);) {
        lines.push_back(parse_line(line));
    }
    return lines;
}

void Workbench::wait_until(const std::string &what, const std::function<bool()> &is_so)
{
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    while (!is_so()) {
        ASSERT_LT(std::chrono::steady_clock::now(), give_up) << "in vain: " << what;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void Workbench::wait_for_lines(size_t count) const
{
    wait_until(std::to_string(count) + " lines of the transcript", [this, count] {
        const std::string text = read_text(".transcript");
        return static_cast<size_t>(std::ranges::count(text, '\n')) >= count;
    });
}

void Workbench::wait_for_note(const std::string &words) const
{
    wait_for_words(words, ".transcript");
}

void Workbench::wait_for_words(const std::string &words, const std::string &file) const
{
    wait_until(words + " in " + file,
               [&] { return read_text(file).find(words) != std::string::npos; });
}
