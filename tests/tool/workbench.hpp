// A user's workbench: commands run as real processes in a folder of their own, under virtual-board.
#pragma once

#include <gtest/gtest.h>

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

using Words = std::vector<std::string>;
using Bytes = std::vector<uint8_t>;

struct Result {
    int status = -1; // of the exit; 128 and the signal for a command that a signal ended
    std::string output;
    std::string errors;
};

// One exchange of a transcript.
struct Line {
    int number = 0;
    int64_t microseconds = 0;
    size_t length = 0;
    Bytes sent;
    Bytes received;
    std::string error; // name of the errno of a failed exchange
    std::string note;
};

class Workbench : public testing::Test
{
  protected:
    Workbench();
    ~Workbench() override;
    Workbench(const Workbench &) = delete;
    Workbench &operator=(const Workbench &) = delete;

    // Runs a command to its end, in the workbench's folder.
    Result run(const Words &words);

    // Starts one and comes back; finish waits for it.
    pid_t start(const Words &words);
    Result finish(pid_t pid);

    // The words that run one of our own programs under virtual-board, with time counted and with a
    // transcript, on the workbench's board.
    Words on_board(const Words &options, const Words &command);
    Words on_board_in_real_time(const Words &options, const Words &command);

    // Runs update so.
    Result update(const Words &arguments) { return update_with({}, arguments); }
    Result update_with(const Words &options, const Words &arguments);

    // Files, by their name in the workbench's folder.
    std::string path(const std::string &name) const { return folder_ / name; }
    void write_file(const std::string &name, const Bytes &content) const;
    Bytes read_file(const std::string &name) const;
    std::string read_text(const std::string &name) const;

    // Flash from an offset on, as the board has it.
    Bytes flash(size_t offset, size_t size) const;

    // The transcript of the last command on the board.
    std::vector<Line> transcript() const;

    // Wait, in real time, until something is so. There is a limit, against hanging alone: how long
    // anything takes is the machine's own affair.
    static void wait_until(const std::string &what, const std::function<bool()> &is_so);
    void wait_for_lines(size_t count) const;            // in the transcript
    void wait_for_note(const std::string &words) const; // there
    void wait_for_words(const std::string &words, const std::string &file) const;

  private:
    std::filesystem::path folder_;
};

// Programs of the build under test, and the words that run them on this machine.
std::string update_program();
std::string probe_program(const std::string &name);
Words virtual_board(const Words &options);
Words directly(const Words &environment, const Words &command); // NAME=VALUE, and no board

// The setting with which instrumented programs bear a library that is loaded before their own.
inline constexpr char ADMIT_INSTRUMENTED[] = "ASAN_OPTIONS=verify_asan_link_order=0";

// Reproducible noise.
Bytes noise(size_t size, uint32_t seed);

std::string joined(const Words &lines);
