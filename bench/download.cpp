// The download of an image in real time: hardly longer than its sleeps. Exchanges take no time here,
// so that nothing hides what the host does between them.
#include "bench/exchange.hpp"
#include "bench/harness.hpp"
#include "bench/yardstick/plain_link.hpp"
#include "link/stm_com_funcs.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace bench
{

namespace
{

constexpr int FRAMES = 64;
constexpr uint32_t FRAME_SIZE = 1034;
constexpr uint32_t BLOCK_BYTES = 1024; // in a frame

FILE *image = nullptr;
std::string gathered;

int no_input(char *)
{
    return 0;
}

int take(const char *text, int)
{
    benchmark::DoNotOptimize(text);
    return 0;
}

int gather(const char *text, int)
{
    gathered += text;
    return 0;
}

void our_download(StmOutputFn output)
{
    rewind(image);
    stm_download_image(image, STM_FLASH_FIRMWARE_ADDR, no_input, output);
}

void exchange_and_wait(PlainLink &link, uint32_t length)
{
    link.exchange(length);
    usleep(10'000);
    link.exchange(1);
    usleep(1'000);
}

void bare_loop()
{
    static PlainLink link;
    exchange_and_wait(link, 1);
    for (int frame = 0; frame <= FRAMES; ++frame) { // the header is one more
        exchange_and_wait(link, FRAME_SIZE);
    }
}

bool make_image()
{
    image = tmpfile();
    return image != nullptr && fwrite(data_sets()[0].records.data(), BLOCK_BYTES, FRAMES, image) ==
                                   static_cast<size_t>(FRAMES);
}

} // namespace

// The bare loop produces nothing to compare, but the download must at least be complete.
bool contenders_agree()
{
    if (!make_image()) {
        return false;
    }
    our_download(gather);
    return gathered.ends_with("Transmitted data: 65536 Byte\n");
}

void register_contenders()
{
    add("download/ours", 1, [] { our_download(take); })->Iterations(1)->UseRealTime();
    add("download/bare_loop", 1, bare_loop)->Iterations(1)->UseRealTime();
}

} // namespace bench
