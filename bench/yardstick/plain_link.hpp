// The yardsticks' replacement for the module's link: two buffers, and exchanges between them.
#pragma once

#include <cstdint>

namespace bench
{

struct PlainLink {
    uint8_t tx[4096];
    uint8_t rx[4096];

    void clear();
    void exchange(uint32_t length);
    void fetch(uint32_t length); // by sending filler
    void fetch_behind(uint32_t held, uint32_t length);
    void request(uint8_t command, uint8_t second);

  private:
    void exchange(uint8_t *to, uint32_t length);
};

} // namespace bench
