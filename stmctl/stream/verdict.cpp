// The outcome of a run, as an exit status and as a file.
#include "stmctl/stream/verdict.hpp"

#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <utility>

namespace stmctl
{

ExitStatus status_of(Ending ending, const RunOptions &options, const RecordTally &tally)
{
    const bool hole = options.fail_on_loss && tally.has_holes();
    if (ending == Ending::failed || hole) {
        return ExitStatus::failed;
    }
    if (ending == Ending::stopped || ending == Ending::stopped_in_silence) {
        const bool well = ending == Ending::stopped;
        return !options.is_endless() ? ExitStatus::stopped
               : well                ? ExitStatus::done
                                     : ExitStatus::failed;
    }
    return tally.records > 0 ? ExitStatus::done : ExitStatus::failed;
}

void sum_up(const std::string &sentence, ExitStatus status)
{
    if (status == ExitStatus::failed) {
        say(sentence);
    } else {
        remark(sentence);
    }
}

SummaryFile::SummaryFile(const std::string &name, const RecordTally &tally,
                         std::optional<uint32_t> wanted, const Destination *results)
    : tally_(tally), wanted_(wanted)
{
    if (!name.empty()) {
        file_.emplace(name);
    }
    if (file_ && results != nullptr && file_->mixes_with(*results)) {
        throw Failure(ExitStatus::usage,
                      fmt::format("--summary {}: the results go there, too", name));
    }
}

SummaryFile::~SummaryFile()
{
    try {
        finish();
    } catch (const Failure &failure) {
        say(failure.what()); // in addition to the failure in which the run ends
    }
}

void SummaryFile::begin()
{
    due_ = file_.has_value();
}

void SummaryFile::finish()
{
    if (std::exchange(due_, false)) {
        file_->begin();
        file_->write(tally_.json(wanted_) + '\n');
        file_->finish();
    }
}

} // namespace stmctl
