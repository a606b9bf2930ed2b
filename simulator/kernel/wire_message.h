/* What travels between the controller and the daemon on the device of the controller: a message that
   the driver sends, with its bytes behind it, and the answer, with as many bytes behind that. */
#pragma once

#include <linux/types.h>

#define WIRE_DEVICE_NAME "virtual-wire"

struct wire_message {
    __u32 length;   /* of the bytes that follow, and of those that come back */
    __u32 spi_mode; /* that the device has */
    __u64 wire_ns;  /* that the bytes take on the wire */
};

struct wire_answer {
    __s32 status; /* 0, or a negated errno */
    __u32 length; /* the message's */
};
