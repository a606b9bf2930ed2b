// What is running on the co-processor, with the numbers reported to a host.
#pragma once

#include <cstdint>

namespace simulator
{

enum class Mode : uint8_t { unknown = 0, boot_loader = 1, application = 2 };

} // namespace simulator
