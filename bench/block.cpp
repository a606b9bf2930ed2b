// Whole blocks of records, from the request to the output callback, over a link without latency.
#include "bench/exchange.hpp"
#include "bench/harness.hpp"
#include "bench/yardstick/plain_readout.hpp"
#include "bench/yardstick/plain_render.hpp"
#include "link/stm_com_funcs.h"

#include <string>

namespace bench
{

namespace
{

constexpr char CSV_HEADER[] =
    "\"nr\";\"temp\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
    "\"BE1\";\"BE2\";\"BE\";\"buffered\";\"checksum\";\n";

std::string gathered;

int no_input(char *)
{
    return 0;
}

int take(const char *text, int)
{
    benchmark::DoNotOptimize(text);
    benchmark::ClobberMemory();
    return 0;
}

int gather(const char *text, int)
{
    gathered += text;
    return 0;
}

void our_csv(StmOutputFn output)
{
    stm_read_records_temp(RECORD_COUNT, READOUT_CSV, no_input, output);
}

void plain_csv(StmOutputFn output)
{
    plain_read_records(RECORD_COUNT, CSV_HEADER, csv_by_strcat, no_input, output);
}

void our_text(StmOutputFn output)
{
    stm_read_records_temp(RECORD_COUNT, READOUT_TEXT, no_input, output);
}

void plain_text(StmOutputFn output)
{
    plain_read_records(RECORD_COUNT, nullptr, text_by_lines, no_input, output);
}

using ReadOut = void (*)(StmOutputFn output);

std::string text_of(const DataSet &set, ReadOut read_out)
{
    serve(set);
    gathered.clear();
    read_out(gather);
    return gathered;
}

bool read_alike(ReadOut one, ReadOut other)
{
    for (const DataSet &set : data_sets()) {
        const std::string text = text_of(set, one);
        if (text.empty() || text != text_of(set, other)) {
            return false;
        }
    }
    return true;
}

void add_read_out(const char *benchmark, const char *contender, ReadOut read_out)
{
    for (const DataSet &set : data_sets()) {
        add(named(benchmark, set, contender), BLOCK_COUNT, [&set, read_out] {
            serve(set);
            read_out(take);
        });
    }
}

} // namespace

bool contenders_agree()
{
    return read_alike(our_csv, plain_csv) && read_alike(our_text, plain_text);
}

void register_contenders()
{
    add_read_out("block_csv", "ours", our_csv);
    add_read_out("block_csv", "strcat", plain_csv);
    add_read_out("block_text", "ours", our_text);
    add_read_out("block_text", "sprintf", plain_text);
}

} // namespace bench
