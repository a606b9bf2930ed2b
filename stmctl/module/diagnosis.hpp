// Finds out why the co-processor does not do what it is asked to, by asking it.
#pragma once

#include "stmctl/module/voice.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace stmctl
{

class Device;
struct DeviceUsers;

inline constexpr uint8_t MODE_QUERY = 0x23;
inline constexpr uint8_t BOOT_LOADER = 1;
inline constexpr uint8_t APPLICATION = 2;
inline constexpr uint8_t SILENT_LINE = 0x00;
inline constexpr uint8_t UNDRIVEN_LINE = 0xFF;

enum class Condition {
    application, // runs
    boot_loader, // runs
    no_answer,   // a silent or undriven line, or a number that is not a mode
    failed,      // the exchange
    shared,      // another process has the device open: nothing was sent
};

struct Diagnosis {
    Condition condition;
    std::string words;
    std::vector<Report> failures; // of the exchange
};

// Asks for the mode, unless another process has the device open: a query would break its dialogue.
Diagnosis diagnose(const Device &device);

// The report's sentence, with the cause of an impossible length.
std::string sentence_of(const Report &report, const Device &device);

// What an answer to the mode query means that has no name: "so nothing is answering".
std::string odd_mode_words(uint8_t answer, const Device &device);
std::string odd_mode_words(uint8_t answer, const DeviceUsers &users);

} // namespace stmctl
