// The framing of the live stream.
//
//     host          request   D*20    D*20                   66*rest    request
//     co-processor                    .. 55 high low data..  data..
//
// 0x55 may be anywhere in the header. The bytes after the length are already data; if the header
// cuts the length off, it is fetched with one or two more bytes.
#include "readout/sample_stream.hpp"

#include "link/bytes.hpp"
#include "link/link.hpp"
#include "link/report.hpp"
#include "readout/block.hpp"

#include <cstring>

namespace stm
{

namespace
{

constexpr int32_t HEADER_SIZE = HEADER_POLLING.bytes;

struct Block {
    int32_t length; // as announced
    int32_t held;   // bytes of it that came with the header
};

int send_request(const SampleStream &stream)
{
    return request_send(stream.request.command, stream.request.stream);
}

bool fail(const char *text)
{
    report_errno(text);
    return false;
}

bool fail_with_size(const SampleStream &stream, const char *text, int32_t size)
{
    report_errno(text);
    if (stream.watched) {
        report_diagnostic("datasize: %d\n", size);
    }
    return false;
}

// Takes the length from after the 0x55, fetching what the header cuts off, and moves any data that
// came with it to the start of rx_buffer.
bool take_length(const StreamFailures &failures, int32_t ready, Block &block)
{
    uint8_t *rx = stm_link.rx_buffer;
    const int32_t behind = HEADER_SIZE - 1 - ready; // bytes after the 0x55
    if (behind == 0) {
        block = {0, 0};
        if (link_fetch_pair() < 0) {
            return fail(failures.two_bytes);
        }
        block.length = get_be16(rx);
        return true;
    }
    if (behind == 1) {
        const uint8_t high = rx[HEADER_SIZE - 1];
        stm_link.tx_buffer[0] = 0;
        if (stm_transfer(stm_link.tx_buffer, rx, 1) < 0) {
            return fail(failures.one_byte);
        }
        block = {high << 8 | rx[0], 0};
        return true;
    }
    block = {get_be16(rx + ready + 1), behind - 2};
    memmove(rx, rx + ready + 3, static_cast<size_t>(block.held));
    return true;
}

// Fetches the rest of the block and requests the next one.
bool fetch_rest(const SampleStream &stream, const Block &block)
{
    const int32_t rest = block.length - block.held;
    if (link_fetch_behind(block.held, rest) < 0) {
        return fail_with_size(stream, stream.failures.data, rest);
    }
    if (send_request(stream) < 0) {
        return fail_with_size(stream, stream.failures.request, STM_FRAME_BYTES);
    }
    return true;
}

} // namespace

bool stream_begin(const SampleStream &stream)
{
    return send_request(stream) < 0 ? fail("SPI datatransfer") : true;
}

Wait stream_fetch_block(const SampleStream &stream, StmPollFn poll, StmOutputFn output)
{
    for (;;) {
        int32_t ready = 0;
        const Wait wait = block_await(HEADER_POLLING, stream.failures.wait, poll, output, ready);
        if (wait != Wait::ready) {
            return wait;
        }
        Block block = {};
        if (!take_length(stream.failures, ready, block)) {
            return Wait::failed;
        }
        if (!stream.watched || block.length != 0) {
            return fetch_rest(stream, block) ? Wait::ready : Wait::failed;
        }
        report_diagnostic("No data available\n");
        if (!stream_begin(stream)) {
            return Wait::failed;
        }
    }
}

} // namespace stm
