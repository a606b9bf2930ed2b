/* Shares the device with others: sends frames that nobody understands, each of which tells by whom it
   was sent and the how-manieth it is.
       sharer NUMBER COUNT [HZ] */
#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

int main(int argc, char **argv)
{
    const int number = argc > 1 ? atoi(argv[1]) : 0;
    const int count = argc > 2 ? atoi(argv[2]) : 1;
    const int fd = open("/dev/spidev1.0", O_RDWR);
    if (fd < 0) {
        perror("open");
        return 1;
    }
    for (int i = 0; i < count; ++i) {
        uint8_t sent[5] = {0xEE, (uint8_t)number, (uint8_t)(i >> 8), (uint8_t)i, 0xEE};
        uint8_t received[5];
        struct spi_ioc_transfer transfer;
        memset(received, 0x77, sizeof(received));
        memset(&transfer, 0, sizeof(transfer));
        transfer.tx_buf = (uintptr_t)sent;
        transfer.rx_buf = (uintptr_t)received;
        transfer.len = sizeof(sent);
        transfer.speed_hz = argc > 3 ? (uint32_t)atoi(argv[3]) : 0;
        if (ioctl(fd, SPI_IOC_MESSAGE(1), &transfer) != (int)sizeof(sent) || received[4] != 0) {
            perror("ioctl");
            return 1;
        }
    }
    return close(fd);
}
