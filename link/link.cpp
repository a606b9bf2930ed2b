// The link's state, its device, and the exchange.
#include "link/link.hpp"

#include "link/report.hpp"
#include "link/stm_com_funcs.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace stm
{

constinit StmLink stm_link = {};

} // namespace stm

using namespace stm;

namespace
{

constexpr size_t DEVICE_PATH_SIZE = 19;
static_assert(sizeof(STM_SPI_DEVICE) <= DEVICE_PATH_SIZE);

uint64_t descriptor_address(const void *buffer)
{
    return reinterpret_cast<uintptr_t>(buffer);
}

// Kept: a refused clock is reported, but the link is used anyway.
void set_speed()
{
    uint32_t speed_hz = STM_SPI_SPEED_HZ;
    if (ioctl(stm_link.spi_fd, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz) != 0) {
        report_errno("Error: writing speed failed\n");
    }
}

int refuse()
{
    errno = EMSGSIZE;
    return -1;
}

} // namespace

void stm_open()
{
    char path[DEVICE_PATH_SIZE] = {};
    memcpy(path, STM_SPI_DEVICE, sizeof(STM_SPI_DEVICE));
    stm_link.spi_fd = open(path, O_RDWR);
    if (stm_link.spi_fd < 0) {
        // Kept: only this text names the module without its final "s"; like others below, it ends
        // in a newline of its own before perror's colon.
        report_errno("Error: stm_com_func: Can't open device \n");
        exit(1);
    }
    set_speed();
    stm_sync_transfer();
}

void stm_sync_transfer()
{
    memset(stm_link.rx_buffer, 0, sizeof(stm_link.rx_buffer));
    // Kept: a failed synchronisation is reported, but the link is used anyway.
    if (link_fetch(STM_BUFFER_SIZE) < 0) {
        report_errno("Error: stm_com_funcs: SPI datatransfer\n");
    }
}

void stm_close()
{
    // Kept: the descriptor keeps its value, so that a second call closes that number again.
    if (stm_link.spi_fd >= 0) {
        close(stm_link.spi_fd);
    }
}

namespace stm
{

int stm_transfer(spi_ioc_transfer &descriptor, int32_t length)
{
    if (length < 0 || length > STM_BUFFER_SIZE) {
        return refuse();
    }
    descriptor.len = static_cast<uint32_t>(length);
    return ioctl(stm_link.spi_fd, SPI_IOC_MESSAGE(1), &descriptor);
}

int stm_transfer(const uint8_t *tx, uint8_t *rx, int32_t length)
{
    spi_ioc_transfer descriptor = {};
    descriptor.tx_buf = descriptor_address(tx);
    descriptor.rx_buf = descriptor_address(rx);
    return stm_transfer(descriptor, length);
}

void link_prepare_transfer(spi_ioc_transfer &descriptor)
{
    descriptor = {};
    descriptor.tx_buf = descriptor_address(stm_link.tx_buffer);
    descriptor.rx_buf = descriptor_address(stm_link.rx_buffer);
}

int link_poll_data(int32_t bytes)
{
    memset(stm_link.tx_buffer, STM_POLL_DATA, static_cast<size_t>(bytes));
    return stm_transfer(stm_link.tx_buffer, stm_link.rx_buffer, bytes);
}

int link_fetch_pair()
{
    memset(stm_link.tx_buffer, 0, 2);
    return stm_transfer(stm_link.tx_buffer, stm_link.rx_buffer, 2);
}

int link_fetch(int32_t length)
{
    return link_fetch_behind(0, length);
}

int link_fetch_behind(int32_t held, int32_t length)
{
    memset(stm_link.tx_buffer, STM_SYNC_FILL, sizeof(stm_link.tx_buffer));
    if (length > STM_BUFFER_SIZE - held) {
        return refuse();
    }
    return stm_transfer(stm_link.tx_buffer, stm_link.rx_buffer + held, length);
}

void link_clear_buffers()
{
    memset(stm_link.tx_buffer, 0, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, 0, sizeof(stm_link.rx_buffer));
}

void link_clear_command_bytes()
{
    memset(stm_link.tx_buffer, 0, STM_COMMAND_BYTES);
    memset(stm_link.rx_buffer, 0, STM_COMMAND_BYTES);
}

} // namespace stm
