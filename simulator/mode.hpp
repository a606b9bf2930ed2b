// What runs on the co-processor, by the numbers that a host is told.
#pragma once

#include <cstdint>

namespace simulator
{

enum class Mode : uint8_t { unknown = 0, boot_loader = 1, application = 2 };

} // namespace simulator
