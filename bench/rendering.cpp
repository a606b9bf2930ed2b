// Records and bytes to text, in the program's own memory.
#include "bench/harness.hpp"
#include "bench/yardstick/plain_render.hpp"
#include "readout/render.hpp"

#include <cstring>

using namespace stm;

namespace bench
{

namespace
{

constexpr int32_t DUMPED_BYTES = STM_BUFFER_SIZE;
constexpr int32_t DUMP_COUNT = RECORD_COUNT * RECORD_SIZE / DUMPED_BYTES;
constexpr int32_t DUMP_TEXT_SIZE = 5 * DUMPED_BYTES + 1;

void our_csv(const uint8_t *record, char *text)
{
    TextBuffer buffer = {text, PLAIN_TEXT_SIZE, 0};
    render_record_csv(STM_RECORD_TEMP, record, buffer);
}

void our_text(const uint8_t *record, char *text)
{
    TextBuffer buffer = {text, PLAIN_TEXT_SIZE, 0};
    render_record_text(STM_RECORD_TEMP, record, buffer);
}

void our_hex(const uint8_t *bytes, int32_t count, char *text)
{
    TextBuffer buffer = {text, DUMP_TEXT_SIZE, 0};
    text_append_hex(buffer, bytes, count);
}

using RenderRecord = void (*)(const uint8_t *record, char *text);
using RenderBytes = void (*)(const uint8_t *bytes, int32_t count, char *text);

void add_renderer(const char *benchmark, const char *contender, RenderRecord render)
{
    for (const DataSet &set : data_sets()) {
        add(named(benchmark, set, contender), RECORD_COUNT, [&set, render] {
            char text[PLAIN_TEXT_SIZE];
            for (int32_t i = 0; i < RECORD_COUNT; ++i) {
                render(set.record(i), text);
                benchmark::DoNotOptimize(text);
            }
        });
    }
}

void add_dump(const char *name, RenderBytes render)
{
    add(name, DUMP_COUNT, [render] {
        static char text[DUMP_TEXT_SIZE];
        const uint8_t *bytes = data_sets()[1].records.data();
        for (int32_t i = 0; i < DUMP_COUNT; ++i, bytes += DUMPED_BYTES) {
            render(bytes, DUMPED_BYTES, text);
            benchmark::DoNotOptimize(text);
        }
    });
}

bool render_alike(RenderRecord one, RenderRecord other)
{
    char text[PLAIN_TEXT_SIZE];
    char other_text[PLAIN_TEXT_SIZE];
    for (const DataSet &set : data_sets()) {
        for (int32_t i = 0; i < RECORD_COUNT; ++i) {
            one(set.record(i), text);
            other(set.record(i), other_text);
            if (strcmp(text, other_text) != 0) {
                return false;
            }
        }
    }
    return true;
}

bool dump_alike()
{
    static char text[DUMP_TEXT_SIZE];
    static char other_text[DUMP_TEXT_SIZE];
    our_hex(data_sets()[1].records.data(), DUMPED_BYTES, text);
    hex_by_snprintf(data_sets()[1].records.data(), DUMPED_BYTES, other_text);
    return strcmp(text, other_text) == 0;
}

} // namespace

bool contenders_agree()
{
    return render_alike(our_csv, csv_by_snprintf) && render_alike(our_csv, csv_by_fmt) &&
           render_alike(our_text, text_by_snprintf) && dump_alike();
}

void register_contenders()
{
    add_renderer("csv_line", "ours", our_csv);
    add_renderer("csv_line", "snprintf", csv_by_snprintf);
    add_renderer("csv_line", "fmt", csv_by_fmt);
    add_renderer("labelled_text", "ours", our_text);
    add_renderer("labelled_text", "snprintf", text_by_snprintf);
    add_dump("hex_dump/ours", our_hex);
    add_dump("hex_dump/snprintf", hex_by_snprintf);
}

} // namespace bench
