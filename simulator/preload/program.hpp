// A program's virtual board, which it may share with others: its options, its clock and the device that
// the program opens.
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
int device_ioctl(int generation, unsigned long request, void *argument);
int device_read(int generation, void *to, size_t size);
int device_write(int generation, const void *from, size_t size);

// Whether the device is there at the moment. Nobody's power comes for that.
bool device_is_there();

// The time in the transcript of a real device starts here, at the latest with the first exchange.
void begin_transcript();

// Records a message exchanged with a real device. result is the call's, or a negated errno.
void record_real_message(std::span<const spi_ioc_transfer> transfers, int result);

} // namespace simulator
