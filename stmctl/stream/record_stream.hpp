// Takes and counts records as they come from the module, and reports when none come.
#pragma once

#include "stmctl/module/operation.hpp"
#include "stmctl/record/record_tally.hpp"
#include "stmctl/stream/run.hpp"
#include "stmctl/stream/silence.hpp"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace stmctl
{

struct StreamOptions {
    std::string name; // of the command
    std::optional<uint32_t> wanted;
    bool keep_going = false;
    std::optional<std::chrono::milliseconds> silence; // none: the default
};

class RecordStream
{
  public:
    // Takes a text that the module shows. Returns its facts if it is a record.
    using Take = std::function<std::optional<RecordFacts>(const char *text)>;

    // The run is finished once as many records as wanted have come; further ones are dropped. After
    // a silence it is given up, or the operation is interrupted in order to be run again.
    RecordStream(StreamOptions options, Run &run, RecordTally &tally, Take take = {});

    const StreamOptions &options() const { return options_; }
    Silence &silence() { return silence_; }
    const Silence &silence() const { return silence_; }

    Sink sink();

    // For records that do not come through the sink.
    void take(const RecordFacts &facts);
    void take_report(std::string_view text);

    // Called whenever the module polls.
    void look(Run::Time now);

    // Nobody asks for records until the stream goes on, so it is normal that none come.
    void rest() { resting_ = true; }
    void go_on() { resting_ = false; }

    // Reports what keeps records from coming, unless it was already reported since the last record.
    void tell(const std::string &sentence);

    // The run ends now. Returns the length of the silence in which it ends, if any.
    std::optional<Silence::Duration> finish(Run::Time now);

  private:
    void look_in_silence(Run::Time now);
    void tell_of_timeout() const;

    StreamOptions options_;
    Run &run_;
    RecordTally &tally_;
    Take take_;
    Silence silence_;
    uint64_t fresh_ = 0;            // that came since the last look
    std::vector<std::string> told_; // since the last record
    Run::Time trouble_begin_;
    bool resting_ = false;
};

// "4.2 s"
std::string seconds_words(std::chrono::milliseconds time);

} // namespace stmctl
