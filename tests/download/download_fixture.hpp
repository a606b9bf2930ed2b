// What the tests of the download share: images, and the parts of which a download's transcript is
// made.
#pragma once

#include "tests/platform/dialogue.hpp"

#include <cstdio>

constexpr uint32_t FIRMWARE = 0x08004000;
constexpr uint32_t BOOTER = 0x08000000;

// The fixture: an opened link whose co-processor acknowledges everything.
class Download : public Dialogue
{
  protected:
    Download();
    ~Download() override;
    Download(const Download &) = delete;
    Download &operator=(const Download &) = delete;

    // A file with this content, open at its start; closed with the test.
    FILE *file_with(const Bytes &image);
    // Any other stream that is closed with the test.
    FILE *keep(FILE *stream);

    void load(FILE *file, uint32_t address);
    void load(const Bytes &image, uint32_t address);

  private:
    std::vector<FILE *> files;
};

// An image in which no byte can be foretold from its neighbours; the same in every run.
Bytes image_of(size_t size);
Bytes part_of(const Bytes &bytes, size_t begin, size_t end);

// An acknowledge wait that is answered in its first poll, and one that the operator stops there.
extern const Transcript WAIT;
extern const Transcript STOPPED_WAIT;

// A frame as it must travel. tail: what bytes 1024 to 1033 held before, where the data end sooner.
Bytes frame(uint32_t address, uint32_t size, const Bytes &data, const Bytes &tail);

// The checksum in the first two bytes of a frame.
unsigned checksum_of(const Bytes &frame_bytes);

// The texts of a download.
std::string say_header(unsigned size, unsigned checksum);
std::string say_block(int number, unsigned size, unsigned checksum);
std::string say_checksum_sent(unsigned checksum);

// The blocks of an image from the first one to the last, each acknowledged at once.
Transcript blocks(uint32_t address, const Bytes &image, const Bytes &tail_before);
