// Records on their way through stmctl, from the request to the file, over a link without latency,
// compared with the module and a callback that only writes what it is given.
#include "bench/exchange.hpp"
#include "bench/harness.hpp"
#include "bench/yardstick/json_lines.hpp"
#include "link/stm_com_funcs.h"
#include "stmctl/record/record_writer.hpp"
#include "stmctl/stream/record_stream.hpp"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace bench
{

using namespace stmctl;

namespace
{

FILE *written_to = nullptr;

int no_input(char *)
{
    return 0;
}

int write_plainly(const char *text, int)
{
    fwrite(text, 1, strlen(text), written_to);
    return 0;
}

void write_records(int mode, const std::string &file)
{
    written_to = fopen(file.c_str(), "w");
    stm_read_records_temp(RECORD_COUNT, mode, no_input, write_plainly);
    fclose(written_to);
}

void bare_csv(const std::string &file)
{
    write_records(READOUT_CSV, file);
}

void bare_text(const std::string &file)
{
    write_records(READOUT_TEXT, file);
}

// Does what the command "records" does.
void run_stmctl(Format format, const std::string &file)
{
    Destination destination(file);
    destination.begin();
    RecordWriter writer(format, false, columns_of(RecordKind::temp), destination);
    RegularFlush flush(destination);
    RecordTally tally;
    RecordStream *watched = nullptr;
    Run run({}, [&](Run::Time now) {
        flush(now);
        watched->look(now);
    });
    RecordStream stream({"records", RECORD_COUNT, false, {}}, run, tally,
                        [&](const char *text) { return writer.take(text); });
    watched = &stream;
    perform(
        [&](StmPollFn poll, StmOutputFn output) {
            stm_read_records_temp(RECORD_COUNT, mode_for(format), poll, output);
            return 0;
        },
        stream.sink(), [&run] { return run.ask(); });
    destination.finish();
    if (tally.records != RECORD_COUNT) {
        fputs("records: some are missing\n", stderr);
        exit(1);
    }
}

void our_csv(const std::string &file)
{
    run_stmctl(Format::csv, file);
}

void our_jsonl(const std::string &file)
{
    run_stmctl(Format::jsonl, file);
}

void our_text(const std::string &file)
{
    run_stmctl(Format::text, file);
}

using Write = void (*)(const std::string &file);

std::string written(const DataSet &set, Write write)
{
    const std::string file =
        std::filesystem::temp_directory_path() / ("records-" + std::to_string(getpid()));
    serve(set);
    write(file);
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    std::filesystem::remove(file);
    return text.str();
}

void add_writer(const char *benchmark, const char *contender, Write write)
{
    for (const DataSet &set : data_sets()) {
        add(named(benchmark, set, contender), RECORD_COUNT, [&set, write] {
            serve(set);
            write("/dev/null");
        });
    }
}

} // namespace

bool contenders_agree()
{
    for (const DataSet &set : data_sets()) {
        const std::string csv = written(set, bare_csv);
        if (csv.empty() || written(set, our_csv) != csv ||
            written(set, our_jsonl) != json_lines(csv) ||
            written(set, our_text) != written(set, bare_text)) {
            return false;
        }
    }
    return true;
}

void register_contenders()
{
    add_writer("records_csv", "ours", our_csv);
    add_writer("records_csv", "fwrite", bare_csv);
    add_writer("records_jsonl", "ours", our_jsonl);
    add_writer("records_jsonl", "fwrite_csv", bare_csv);
    add_writer("records_text", "ours", our_text);
    add_writer("records_text", "fwrite", bare_text);
}

} // namespace bench
