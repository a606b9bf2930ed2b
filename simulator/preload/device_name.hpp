// Whether a path names the device.
#pragma once

namespace simulator
{

inline constexpr char DEVICE[] = "/dev/spidev1.0";

enum class Named {
    other,
    device,
    below_device, // as if the device were a folder
};

// The path is seen from a folder, as openat does it. A link at its end is not followed on request.
Named what_is_named(int directory, const char *path, bool follows_link = true);

} // namespace simulator
