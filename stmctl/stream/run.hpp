// How long a run goes on, and what is done while it does.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace CLI
{
class App;
}

namespace stmctl
{

struct RunOptions {
    std::string count;    // empty: not given
    std::string duration; // in seconds; empty: not given
    bool keep_going = false;

    // Throw a Failure for what is no number, or none that makes sense.
    std::optional<uint32_t> wanted() const;
    std::optional<std::chrono::milliseconds> time() const;
};

// "-n" and "--duration"; of "-n" the help says what is counted.
void add_run_limits(CLI::App &command, RunOptions &options, const char *counted);
void add_duration(CLI::App &command, RunOptions &options);
void add_keep_going(CLI::App &command, RunOptions &options);

// The run that goes on; there is one at a time.
class Run
{
  public:
    // Called about so often as the module polls.
    using Tick = std::function<void(std::chrono::steady_clock::time_point now)>;

    explicit Run(std::optional<std::chrono::milliseconds> time, Tick tick = {});
    ~Run();
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;

    void finish() { finished_ = true; } // nothing more is wanted
    void give_up() { given_up_ = true; }
    bool given_up() const { return given_up_; }

    // It is finished or given up, its time is over, or nobody takes the output.
    bool over();

  private:
    std::optional<std::chrono::steady_clock::time_point> end_;
    Tick tick_;
    bool finished_ = false;
    bool given_up_ = false;
};

// A poll callback (StmPollFn): ends the operation when the run is over or the user wishes so. Only
// the wish counts as a stop.
int poll_run(char *line);

} // namespace stmctl
