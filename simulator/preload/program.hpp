// What one program has of the virtual board: its settings, its clock and the device it opens.
#pragma once

#include "simulator/spi_device.hpp"
#include "simulator/virtual_clock.hpp"

#include <linux/spi/spidev.h>

#include <span>
#include <string>

namespace simulator
{

// Whether the program's time is counted. Allocates nothing, waits for nothing.
bool counts_time();

// Whether the device is left real.
bool leaves_device_real();

// Time since the program began, if time is counted.
extern VirtualClock program_clock;

// The file that the program has open for the device: a stand-in in the board's folder.
std::string device_stand_in();

// The device as the program sees it. Results are 0 or more, or a negated errno.
// Opened, it is of the generation that is returned; each absence of the device begins another one.
int device_open();
void device_close(int generation);
int device_ioctl(int generation, unsigned long request, void *argument);

// A child has a board of its own, which is not counted.
void leave_counts_to_parent();

// The time in the transcript begins here, at the latest with the first exchange.
void begin_transcript();

// Notes a message that a real device has exchanged. result is the call's, or a negated errno.
void record_real_message(std::span<const spi_ioc_transfer> transfers, int result);

} // namespace simulator
