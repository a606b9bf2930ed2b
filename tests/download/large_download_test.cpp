// Goal: numbers of blocks and bytes stay true far beyond any flash.
#include "link/stm_com_funcs.h"
#include "tests/download/download_fixture.hpp"

#include <unistd.h>

namespace
{

class LargeDownload : public Download
{
};

std::string last_text;
std::string text_before;

int keep_last_texts(const char *text, int)
{
    text_before = last_text;
    last_text = text;
    return 0;
}

int no_input(char *)
{
    return 0;
}

TEST_F(LargeDownload, of_more_than_32768_blocks_is_numbered_and_counted_to_its_end)
{
    FILE *file = file_with({});
    constexpr off_t SIZE = 32770 * 1024 - 1;
    ASSERT_EQ(ftruncate(fileno(file), SIZE), 0);
    keep_transcript = false;
    stm_download_image(file, FIRMWARE, no_input, keep_last_texts);
    EXPECT_EQ(text_before.substr(0, text_before.find(',')),
              "Transmitting datablock 32769 (size: 0x03FF");
    EXPECT_EQ(last_text, "Transmitted data: 33556479 Byte\n");
}

} // namespace
