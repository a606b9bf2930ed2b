// The kernel's SPI device driver in front of a co-processor: what it accepts, refuses and returns.
//
// Results are the kernel's: non-negative on success, a negated errno on failure.
#pragma once

#include "simulator/board/coprocessor.hpp"
#include "simulator/faults/spells.hpp"

#include <linux/spi/spidev.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

namespace simulator
{

inline constexpr uint32_t DEFAULT_SPEED_HZ = 1'000'000;
inline constexpr uint32_t HIGHEST_SPEED_HZ = 10'000'000; // higher ones are accepted, not reached

// One exchange as it went over the wire, or as it was refused.
struct Exchange {
    int number; // from 1
    std::span<const uint8_t> sent;
    std::span<const uint8_t> received; // empty if it failed
    uint64_t length;                   // also of a refused one, whose bytes were not sent
    int result;
    std::string_view note;
};

// How long that many bytes take on a wire with this clock.
constexpr std::chrono::nanoseconds wire_time(uint64_t bytes, uint32_t speed_hz)
{
    return std::chrono::nanoseconds(bytes * 8 * 1'000'000'000 / speed_hz);
}

// All that changes in the driver while a board runs: plain numbers, as the board's own state is.
struct DriverState {
    uint32_t mode = 0;
    uint32_t speed_hz = DEFAULT_SPEED_HZ;
    int32_t generation = 0; // how many absences have begun
    int32_t exchanges = 0;
    int32_t told_absences = 0; // that have begun, by hand
    bool is_gone = false;
    bool is_told_gone = false;
    uint8_t unused[2] = {};
};
static_assert(std::is_trivially_copyable_v<DriverState>);
static_assert(std::has_unique_object_representations_v<DriverState>);

// The number of transfers of an SPI_IOC_MESSAGE request, or -1 for any other request.
int transfers_of(unsigned long request);

class SpiDevice
{
  public:
    using Observer = std::function<void(const Exchange &)>;
    using Passage = std::function<void(std::chrono::nanoseconds)>;

    // The observer sees every exchange, in order. The exchange's time on the wire passes before
    // that, and before the program gets its bytes.
    SpiDevice(Coprocessor &coprocessor, const Behaviour &behaviour, Passage pass,
              Observer observer);

    // The time of the calls to come. A device that is absent then comes back with its defaults.
    void advance_to(std::chrono::nanoseconds now);

    // Returns the generation of what was opened. Nothing works with an older one. The first open after the
    // last close finds the default clock.
    int open(bool is_first);
    bool is_gone() const { return state_.is_gone; }
    // When a program closes the device, the driver keeps the mode that the program set.
    uint32_t mode() const { return state_.mode; }
    void keep_mode(uint32_t mode) { state_.mode = mode; }

    const DriverState &state() const { return state_; }
    void set_state(const DriverState &state) { state_ = state; }

    int ioctl(unsigned long request, void *argument, int generation = 0);

    // Exchanges in which the bytes of one direction do not matter: a read sends zeros.
    int read(void *to, size_t size, int generation = 0);
    int write(const void *from, size_t size, int generation = 0);

  private:
    bool is_dead(int generation) const;
    int half_exchange(const spi_ioc_transfer &transfer, size_t size, int generation);
    int message(std::span<const spi_ioc_transfer> transfers, int refusal);
    int fetch(std::span<const spi_ioc_transfer> transfers);
    bool fetch_bytes(const spi_ioc_transfer &transfer);
    int deliver(std::span<const spi_ioc_transfer> transfers) const;
    int exchange_bytes(std::span<const spi_ioc_transfer> transfers);
    std::chrono::nanoseconds time_of(std::span<const spi_ioc_transfer> transfers) const;
    int configure(unsigned long request, void *argument);
    int set_speed(uint32_t speed_hz);
    int set_mode(uint32_t mode);
    template <typename Setting, typename Take>
    int take(const void *argument, Take take);
    template <typename Setting>
    int give(void *argument, Setting value);

    Coprocessor &coprocessor_;
    Faults faults_;
    Spells absences_;
    uint64_t buffer_size_;
    Passage pass_;
    Observer observer_;
    DriverState state_;
    std::vector<uint8_t> mosi_;
    std::vector<uint8_t> miso_;
};

} // namespace simulator
