// The outcome of a run, as an exit status and as a file.
#pragma once

#include "stmctl/output/destination.hpp"
#include "stmctl/process/exit_status.hpp"
#include "stmctl/record/record_tally.hpp"
#include "stmctl/stream/repetition.hpp"
#include "stmctl/stream/run.hpp"

#include <optional>
#include <string>

namespace stmctl
{

// What the ending of a run means. An endless run is done when its user ends it. A limited run has
// failed if nothing came in its time. Any run has failed if it ended in a silence, or has losses
// that it must not have.
ExitStatus status_of(Ending ending, const RunOptions &options, const RecordTally &tally);

// Reports the outcome of a run, if it failed even if quiet: this may be the only report of why.
void sum_up(const std::string &sentence, ExitStatus status);

// Writes the tally as JSON, even if the run ends in a failure.
class SummaryFile
{
  public:
    // No file if the name is empty. Throws a Failure if it cannot be written, or if it would be
    // mixed with the results.
    SummaryFile(const std::string &name, const RecordTally &tally, std::optional<uint32_t> wanted,
                const Destination *results = nullptr);
    ~SummaryFile();
    SummaryFile(const SummaryFile &) = delete;
    SummaryFile &operator=(const SummaryFile &) = delete;

    void begin(); // the run begins: from now on the old content is replaced
    void finish();

  private:
    std::optional<Destination> file_;
    const RecordTally &tally_;
    std::optional<uint32_t> wanted_;
    bool due_ = false;
};

} // namespace stmctl
