/*
 * Reads records from the ring while another process writes them, and loses none as long as it keeps
 * up.
 *
 *     cc -I. examples/ring_reader.c -Lbuild/lib -lstm_com_funcs -o ring_reader
 *     ./ring_reader 1000
 *
 * prints that many records as "nr rel_t U1e U2e U3e". It keeps its own place in the ring instead of
 * relying on the counter that both processes change, copies a slot before using it, and puts the
 * fields back into the wire's order, over which the checksum was computed.
 */
#include "link/stm_com_funcs.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#define CHECKED_BYTES 46
#define IDLE_LIMIT    3000 /* milliseconds without a record */

static unsigned rejected = 0;

/* A slot's index, from its address in the segment. */
static int place_of(RingBuffer *ring, const RingRecord *slot)
{
    return (int)(slot - ring->slots);
}

static void put(uint8_t *to, const void *field, size_t size)
{
    memcpy(to, field, size); /* slots have the machine's byte order, which is the wire's */
}

/* On the wire Uen comes before U1e, and negIe before I1. */
static int is_whole(const RingRecord *record)
{
    uint8_t wire[RINGBUFFER_SLOT_SIZE];

    put(wire, record, sizeof(wire));
    put(wire + 8, &record->Uen, 4);
    put(wire + 12, &record->U1e, 12);
    put(wire + 24, &record->negIe, 4);
    put(wire + 28, &record->I1, 12);
    return stm_crc16(wire, CHECKED_BYTES) == record->checksum;
}

static void show(const RingRecord *record)
{
    printf("%3d %8ld %8ld %8ld %8ld\n", record->nr, (long)record->rel_t, (long)record->U1e,
           (long)record->U2e, (long)record->U3e);
}

/* Shows the records from *at up to the slot that the writer fills next. Returns how many. */
static long show_new(RingBuffer *ring, int handle, int *at, long wanted)
{
    const RingRecord *next = RingBuffer_GetWriteSlot(handle);
    long shown = 0;

    if (next == NULL) {
        return 0;
    }
    while (*at != place_of(ring, next) && shown < wanted) {
        const RingRecord record = ring->slots[*at];

        if (is_whole(&record)) {
            show(&record);
            ++shown;
        } else {
            ++rejected;
        }
        *at = (*at + 1) % RINGBUFFER_SLOTS;
    }
    return shown;
}

int main(int argc, char **argv)
{
    long wanted = argc > 1 ? strtol(argv[1], NULL, 10) : 0;
    int idle = 0;
    int handle;
    int at;
    RingBuffer *ring;

    if (wanted <= 0) {
        fputs("Usage: ring_reader COUNT\n", stderr);
        return 2;
    }
    RingBuffer_Attach();
    handle = RingBuffer_Open("r");
    if (handle < 0 || RingBuffer_GetWriteSlot(handle) == NULL) {
        fputs("ring_reader: the ring has a reader already, or is damaged\n", stderr);
        return 1;
    }
    ring = (RingBuffer *)(void *)RingBuffer_SeekValue(handle, 0); /* mark is 0: the first slot */
    at = place_of(ring, RingBuffer_GetWriteSlot(handle));
    while (wanted > 0 && idle < IDLE_LIMIT) {
        const long shown = show_new(ring, handle, &at, wanted);

        wanted -= shown;
        idle = shown > 0 ? 0 : idle + 1;
        usleep(1000);
    }
    RingBuffer_Close(handle);
    fprintf(stderr, "%u rejected\n", rejected);
    return wanted > 0;
}
