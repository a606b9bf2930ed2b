// Records as they come from the module, taken and counted.
#pragma once

#include "stmctl/module/operation.hpp"
#include "stmctl/record/record_tally.hpp"
#include "stmctl/stream/run.hpp"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace stmctl
{

class RecordStream
{
  public:
    // Takes a text that the module shows. Returns what it tells, if it is a record.
    using Take = std::function<std::optional<RecordFacts>(const char *text)>;

    // The run is finished once so many records as are wanted have come; further ones are dropped.
    // It is given up when none comes for long, unless it is to keep going.
    RecordStream(std::string name, Run &run, std::optional<uint32_t> wanted, bool keep_going,
                 RecordTally &tally, Take take);

    Sink sink();

  private:
    void take_report(std::string_view text);
    void take_timeout();

    std::string name_;
    Run &run_;
    std::optional<uint32_t> wanted_;
    bool keep_going_;
    RecordTally &tally_;
    Take take_;
    bool waiting_ = false; // a time-out was said, and no record has come since
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

} // namespace stmctl
