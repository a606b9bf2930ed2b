// What one program has of the virtual board: its settings, its clock and the device it opened.
#pragma once

#include "simulator/settings.hpp"
#include "simulator/virtual_clock.hpp"

#include <linux/spi/spidev.h>

#include <span>

namespace simulator
{

// The settings from the environment; read once. They are wrong only if somebody has set them by
// hand, which ends the program with status 125.
const Settings &settings();

// Time since the program's first look at it, if time is counted.
VirtualClock &program_clock();

// The time in the transcript begins here, at the latest with the first exchange.
void begin_transcript();

// The device as the program sees it. Results are 0 or more, or a negated errno.
int device_open();
void device_close();
int device_ioctl(unsigned long request, void *argument);

// The file that is open under the descriptor that the program gets for the device.
const char *device_stand_in();

// Notes a message that a real device has exchanged. result is the call's, or a negated errno.
void record_real_message(std::span<const spi_ioc_transfer> transfers, int result);

} // namespace simulator
