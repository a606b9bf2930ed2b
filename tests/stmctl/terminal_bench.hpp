// A bench with a terminal on it, of any width.
#pragma once

#include "tests/stmctl/stmctl_bench.hpp"

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>

class TerminalBench : public StmctlBench
{
  protected:
    void open_terminal(const Words &words, unsigned short columns = 80)
    {
        const winsize size = {24, columns, 0, 0};
        const std::string folder = path("");
        child_ = forkpty(&keyboard_, nullptr, nullptr, &size);
        if (child_ == 0) {
            std::vector<char *> arguments;
            for (const std::string &word : words) {
                arguments.push_back(const_cast<char *>(word.c_str()));
            }
            arguments.push_back(nullptr);
            if (chdir(folder.c_str()) == 0) {
                execvp(arguments[0], arguments.data());
            }
            _exit(127);
        }
    }

    void type(const std::string &keys) const
    {
        EXPECT_EQ(write(keyboard_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    // Continues reading until the words are on the screen.
    void read_until(const std::string &words)
    {
        const auto give_up = std::chrono::steady_clock::now() + std::chrono::minutes(5);
        while (screen_.find(words) == std::string::npos &&
               std::chrono::steady_clock::now() < give_up && read_on()) {
        }
        EXPECT_NE(screen_.find(words), std::string::npos) << screen_;
    }

    // All that was shown, from the start; returns the exit status.
    int close_terminal()
    {
        while (read_on()) {
        }
        int status = 0;
        waitpid(child_, &status, 0);
        close(keyboard_);
        return WEXITSTATUS(status);
    }

    // Whether the program has started another one.
    bool has_child() const
    {
        const std::string pid = std::to_string(child_);
        std::ifstream children("/proc/" + pid + "/task/" + pid + "/children");
        return !std::string(std::istreambuf_iterator<char>(children), {}).empty();
    }

    const std::string &screen() const { return screen_; }
    void clear_screen() { screen_.clear(); }

  private:
    bool read_on()
    {
        pollfd shown = {keyboard_, POLLIN, 0};
        poll(&shown, 1, 300'000);
        char piece[4096];
        const ssize_t size = read(keyboard_, piece, sizeof(piece));
        if (size > 0) {
            screen_.append(piece, static_cast<size_t>(size));
        }
        return size > 0;
    }

    pid_t child_ = -1;
    int keyboard_ = -1;
    std::string screen_;
};
