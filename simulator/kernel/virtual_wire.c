/* An SPI controller whose wire ends in a process: a device at bus 1, chip select 0, that the kernel's own
   driver serves, and a device node from which a daemon reads each message and to which it writes the
   answer. Without a daemon nobody drives the line, as on a board whose co-processor has no power. */
#include "simulator/kernel/wire_message.h"

#include <linux/completion.h>
#include <linux/math64.h>
#include <linux/miscdevice.h>
#include <linux/module.h>
#include <linux/mutex.h>
#include <linux/platform_device.h>
#include <linux/poll.h>
#include <linux/spi/spi.h>
#include <linux/uaccess.h>

#define UNDRIVEN 0xFF

static int fail_with; /* a positive errno: the controller's own failure, before the wire */
module_param(fail_with, int, 0644);

/* One message at a time. Everything below is guarded by the mutex. */
enum phase { IDLE, OFFERED, TAKEN };

static DEFINE_MUTEX(wire);
static DECLARE_WAIT_QUEUE_HEAD(offered);
static DECLARE_COMPLETION(answered);
static enum phase phase;
static bool has_daemon;
static struct wire_message message;
static s32 status;
static u8 *sent;
static u8 *received;

static struct platform_device *platform;
static struct spi_controller *controller;
static struct spi_device *device;

/* Transfers without a buffer have no wire time either: the kernel's usual loop leaves them out. */
static bool has_bytes(const struct spi_transfer *transfer)
{
    return transfer->len != 0 && (transfer->tx_buf || transfer->rx_buf);
}

static void measure(struct spi_message *all)
{
    struct spi_transfer *transfer;

    memset(&message, 0, sizeof(message));
    message.spi_mode = all->spi->mode;
    list_for_each_entry(transfer, &all->transfers, transfer_list)
    {
        if (has_bytes(transfer)) {
            message.length += transfer->len;
            message.wire_ns +=
                div_u64((u64)transfer->len * 8 * NSEC_PER_SEC, transfer->effective_speed_hz);
        }
    }
}

static void gather(struct spi_message *all)
{
    struct spi_transfer *transfer;
    u8 *to = sent;

    list_for_each_entry(transfer, &all->transfers, transfer_list)
    {
        if (has_bytes(transfer)) {
            if (transfer->tx_buf)
                memcpy(to, transfer->tx_buf, transfer->len);
            to += transfer->len;
        }
    }
}

static void scatter(struct spi_message *all)
{
    struct spi_transfer *transfer;
    const u8 *from = received;

    list_for_each_entry(transfer, &all->transfers, transfer_list)
    {
        if (has_bytes(transfer)) {
            if (transfer->rx_buf)
                memcpy(transfer->rx_buf, from, transfer->len);
            from += transfer->len;
        }
        all->actual_length += transfer->len;
        spi_transfer_delay_exec(transfer);
    }
}

/* Waits for the daemon, whatever signals the program gets: the exchange runs to its end. */
static s32 carry(void)
{
    bool carried = false;

    mutex_lock(&wire);
    status = 0;
    if (has_daemon && message.length != 0) {
        reinit_completion(&answered);
        phase = OFFERED;
        carried = true;
    }
    mutex_unlock(&wire);
    if (carried) {
        wake_up_interruptible(&offered);
        wait_for_completion(&answered);
    }
    return status;
}

static void note_speeds(struct spi_message *all)
{
    struct spi_transfer *transfer;

    list_for_each_entry(transfer, &all->transfers, transfer_list) transfer->effective_speed_hz =
        transfer->speed_hz;
}

static int exchange(struct spi_controller *by, struct spi_message *all)
{
    note_speeds(all);
    measure(all);
    sent = kvzalloc(message.length + 1, GFP_KERNEL);
    received = kvmalloc(message.length + 1, GFP_KERNEL);
    if (!sent || !received) {
        all->status = -ENOMEM;
    } else {
        memset(received, UNDRIVEN, message.length);
        gather(all);
        all->status = fail_with > 0 ? -fail_with : carry();
        if (all->status == 0)
            scatter(all);
    }
    mutex_lock(&wire);
    phase = IDLE;
    kvfree(sent);
    kvfree(received);
    sent = NULL;
    received = NULL;
    mutex_unlock(&wire);
    spi_finalize_current_message(by);
    return 0;
}

/* The daemon's end. */

static int daemon_open(struct inode *inode, struct file *file)
{
    int result = 0;

    mutex_lock(&wire);
    if (has_daemon)
        result = -EBUSY;
    has_daemon = true;
    mutex_unlock(&wire);
    return result != 0 ? result : nonseekable_open(inode, file);
}

/* A daemon that ends in the middle of a message leaves the line undriven. */
static int daemon_release(struct inode *inode, struct file *file)
{
    mutex_lock(&wire);
    has_daemon = false;
    if (phase != IDLE) {
        phase = IDLE;
        complete(&answered);
    }
    mutex_unlock(&wire);
    return 0;
}

static ssize_t take_message(char __user *to, size_t size)
{
    if (phase != OFFERED)
        return -EAGAIN;
    if (size < sizeof(message) + message.length)
        return -EMSGSIZE;
    if (copy_to_user(to, &message, sizeof(message)) ||
        copy_to_user(to + sizeof(message), sent, message.length))
        return -EFAULT;
    phase = TAKEN;
    return sizeof(message) + message.length;
}

static ssize_t daemon_read(struct file *file, char __user *to, size_t size, loff_t *at)
{
    ssize_t result = -EAGAIN;

    while (result == -EAGAIN) {
        if (wait_event_interruptible(offered, READ_ONCE(phase) == OFFERED))
            return -ERESTARTSYS;
        mutex_lock(&wire);
        result = take_message(to, size);
        mutex_unlock(&wire);
    }
    return result;
}

static ssize_t take_answer(const char __user *from, size_t size)
{
    struct wire_answer answer;

    if (phase != TAKEN || size < sizeof(answer))
        return -EINVAL;
    if (copy_from_user(&answer, from, sizeof(answer)))
        return -EFAULT;
    if (answer.length != message.length || size != sizeof(answer) + answer.length)
        return -EMSGSIZE;
    if (copy_from_user(received, from + sizeof(answer), answer.length))
        return -EFAULT;
    status = answer.status;
    phase = IDLE;
    complete(&answered);
    return size;
}

static ssize_t daemon_write(struct file *file, const char __user *from, size_t size, loff_t *at)
{
    ssize_t result;

    mutex_lock(&wire);
    result = take_answer(from, size);
    mutex_unlock(&wire);
    return result;
}

static const struct file_operations daemon_calls = {
    .owner = THIS_MODULE,
    .open = daemon_open,
    .release = daemon_release,
    .read = daemon_read,
    .write = daemon_write,
    .llseek = no_llseek,
};

static struct miscdevice daemon_device = {
    .minor = MISC_DYNAMIC_MINOR,
    .name = WIRE_DEVICE_NAME,
    .fops = &daemon_calls,
};

/* The driver's end: a device for which the driver is asked by its own name. */

static int add_device(void)
{
    int result;

    device = spi_alloc_device(controller);
    if (!device)
        return -ENOMEM;
    strscpy(device->modalias, "virtual-board", sizeof(device->modalias));
    device->max_speed_hz = 1000000;
    result = driver_set_override(&device->dev, &device->driver_override, "spidev", 6);
    if (result == 0)
        result = spi_add_device(device);
    if (result != 0)
        spi_dev_put(device);
    return result;
}

static int add_controller(void)
{
    int result;

    controller = spi_alloc_master(&platform->dev, 0);
    if (!controller)
        return -ENOMEM;
    controller->bus_num = 1;
    controller->num_chipselect = 1;
    controller->mode_bits = SPI_CPOL | SPI_CPHA | SPI_CS_HIGH | SPI_LSB_FIRST;
    controller->bits_per_word_mask = SPI_BPW_MASK(8);
    controller->max_speed_hz = 10000000;
    controller->transfer_one_message = exchange;
    result = spi_register_controller(controller);
    if (result != 0) {
        spi_controller_put(controller);
        return result;
    }
    result = add_device();
    if (result != 0)
        spi_unregister_controller(controller);
    return result;
}

static int __init virtual_wire_begin(void)
{
    int result = misc_register(&daemon_device);

    if (result != 0)
        return result;
    platform = platform_device_register_simple("virtual-wire", -1, NULL, 0);
    result = IS_ERR(platform) ? PTR_ERR(platform) : add_controller();
    if (result != 0) {
        if (!IS_ERR(platform))
            platform_device_unregister(platform);
        misc_deregister(&daemon_device);
    }
    return result;
}

static void __exit virtual_wire_end(void)
{
    spi_unregister_controller(controller); /* and its device */
    platform_device_unregister(platform);
    misc_deregister(&daemon_device);
}

module_init(virtual_wire_begin);
module_exit(virtual_wire_end);
MODULE_DESCRIPTION("SPI controller of the virtual board");
MODULE_LICENSE("Dual MIT/GPL");
