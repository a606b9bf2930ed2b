// The files by which descriptors of the device are recognised, whatever their numbers. A device
// that comes back has a new file and a new generation.
#pragma once

namespace simulator
{

inline constexpr int NOT_OF_DEVICE = -1;

// From now on, descriptors of the file that this one refers to are the device's, of this
// generation.
void know_device_file(int fd, int generation);

// The same for the file of that name, as long as no file is known.
void know_device_file_if_none_is(const char *path);

bool knows_device_file();

// The generation of a descriptor's file, or NOT_OF_DEVICE.
int device_generation(int fd);

// Whether it is a descriptor of the device, and the device is not a real one. In the middle of a call into
// the driver none is: then the board writes to whatever it is told to.
bool is_virtual_device(int fd);

} // namespace simulator
