// The checksum over a record, and over a frame of a download.
#include "bench/harness.hpp"
#include "bench/yardstick/byte_table.hpp"
#include "link/stm_com_funcs.h"

#include <boost/crc.hpp>

namespace bench
{

namespace
{

constexpr int32_t RECORD_BYTES = 46; // of a record with a temperature, without its checksum
constexpr int32_t FRAME_BYTES = 1032;

using Checksum = uint16_t (*)(const uint8_t *data, uint16_t length);

uint16_t boost_crc(const uint8_t *data, uint16_t length)
{
    boost::crc_optimal<16, 0x1021, 0xFFFF, 0xFFFF, false, false> crc;
    crc.process_bytes(data, length);
    return crc.checksum();
}

struct Contender {
    const char *name;
    Checksum checksum;
};

constexpr Contender CONTENDERS[] = {
    {"ours", stm_crc16}, {"byte_table", byte_table_crc}, {"boost_crc", boost_crc}};

// Calls work with each piece of that many bytes, at intervals of step.
template <typename Work>
int64_t walk(int32_t length, int32_t step, Work work)
{
    const std::vector<uint8_t> &bytes = data_sets()[0].records;
    int64_t pieces = 0;
    for (size_t at = 0; at + static_cast<size_t>(length) <= bytes.size();
         at += static_cast<size_t>(step)) {
        work(bytes.data() + at);
        ++pieces;
    }
    return pieces;
}

void add_length(const char *benchmark, int32_t length, int32_t step)
{
    const int64_t pieces = walk(length, step, [](const uint8_t *) {});
    for (const auto &[name, checksum] : CONTENDERS) {
        add(std::string(benchmark) + "/" + name, pieces, [=, checksum = checksum] {
            walk(length, step, [=](const uint8_t *data) {
                benchmark::DoNotOptimize(checksum(data, static_cast<uint16_t>(length)));
            });
        });
    }
}

} // namespace

bool contenders_agree()
{
    bool agree = true;
    for (const int32_t length : {RECORD_BYTES, FRAME_BYTES}) {
        walk(length, length, [&](const uint8_t *data) {
            const auto size = static_cast<uint16_t>(length);
            const uint16_t expected = byte_table_crc(data, size);
            for (const Contender &contender : CONTENDERS) {
                agree = agree && contender.checksum(data, size) == expected;
            }
        });
    }
    return agree;
}

void register_contenders()
{
    add_length("crc16_46", RECORD_BYTES, RECORD_SIZE);
    add_length("crc16_1032", FRAME_BYTES, FRAME_BYTES);
}

} // namespace bench
