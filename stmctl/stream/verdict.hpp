// What came of a run, as an exit status and as a file.
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

// What the ending of a run means. An endless one is done when its user ends it, a limited one has
// failed if nothing came in its time; and so has one that ended in a silence, or is to have no
// losses.
ExitStatus status_of(Ending ending, const RunOptions &options, const RecordTally &tally);

// Says what came of a run. It is all that is said of why one has failed: that is said quiet, too.
void sum_up(const std::string &sentence, ExitStatus status);

// Writes the tally as JSON, also of a run that ends in a failure.
class SummaryFile
{
  public:
    // An empty name: none. Throws a Failure if it cannot be written, or would be mixed with what
    // goes to the results.
    SummaryFile(const std::string &name, const RecordTally &tally, std::optional<uint32_t> wanted,
                const Destination *results = nullptr);
    ~SummaryFile();
    SummaryFile(const SummaryFile &) = delete;
    SummaryFile &operator=(const SummaryFile &) = delete;

    void begin(); // the run begins: from now on what the file held is replaced
    void finish();

  private:
    std::optional<Destination> file_;
    const RecordTally &tally_;
    std::optional<uint32_t> wanted_;
    bool due_ = false;
};

} // namespace stmctl
