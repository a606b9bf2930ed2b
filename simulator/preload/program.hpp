// One program's virtual board: its settings, its clock and the device it opens.
#pragma once

#include "simulator/driver/spi_device.hpp"
#include "simulator/driver/virtual_clock.hpp"

#include <linux/spi/spidev.h>

#include <span>
#include <string>

namespace simulator
{

// Whether the program's time is counted. Neither allocates nor waits.
bool counts_time();

// Whether the real device is used.
bool leaves_device_real();

// Time since the program started, if time is counted.
extern VirtualClock program_clock;

// The file that the program has open for the device: a stand-in in the board's folder.
std::string device_stand_in();

// The device as the program sees it. Results are non-negative, or a negated errno.
// Returns the generation of the device opened; each absence of the device starts a new one.
int device_open();
void device_close(int generation);
int device_ioctl(int generation, unsigned long request, void *argument);

// A child process has a board of its own, whose records are not counted.
void leave_counts_to_parent();

// The time in the transcript starts here, at the latest with the first exchange.
void begin_transcript();

// Records a message exchanged with a real device. result is the call's, or a negated errno.
void record_real_message(std::span<const spi_ioc_transfer> transfers, int result);

} // namespace simulator
