// What this program was told about its run, its clock, and how it ends if something is wrong.
#pragma once

#include "simulator/driver/spi_device.hpp"
#include "simulator/run/run_options.hpp"

#include <chrono>
#include <string>

namespace simulator
{

// Ends the program with an error, if there is one.
void check(const std::string &error);

const RunOptions &run_options();

// Takes other options in their place, as long as there is no board.
void take_options(const RunOptions &options);

// The time on this program's clock, and a wait until then, where time is not counted.
std::chrono::nanoseconds now();
void sleep_until(std::chrono::nanoseconds end);

// Adds an exchange to the transcript, if there is one.
void note_exchange(const Exchange &exchange, std::chrono::nanoseconds time);

} // namespace simulator
