/* Counts each pair of an effect and its causes, and prints in the end those pairs of which no cause
 * can be left out: "met OLD LOST_SUBTRACTION 39". The names are those of read_out.pml, in its order.
 */
#include <stdio.h>
#include <stdlib.h>

#define COUNT_OF(names) ((int)(sizeof(names) / sizeof((names)[0])))

static const char *const EFFECTS[] = {"", "MISSED", "OLD", "REJECTED", "TORN", "UNSEEN"};
static const char *const CAUSES[] = {
    "FIRST",       "LATE",   "LOST_CLEARING", "LAGGING",          "NOT_COUNTED",
    "OVERWRITTEN", "FILLED", "LOST_ADDITION", "LOST_SUBTRACTION", "PUT_IN_MARK",
    "MARK_IN_PUT", "KILLED", "RESTARTED",     "HALF_FILLED",
};
enum { CAUSE_SETS = 1 << 14 };

static unsigned long met[COUNT_OF(EFFECTS)][CAUSE_SETS];
static int has_begun;

static int has_fewer(int effect, int causes)
{
    for (int fewer = (causes - 1) & causes; fewer > 0; fewer = (fewer - 1) & causes) {
        if (met[effect][fewer] > 0) {
            return 1;
        }
    }
    return 0;
}

static void print_pair(int effect, int causes)
{
    if (met[effect][causes] == 0 || has_fewer(effect, causes)) {
        return;
    }
    printf("met %s", EFFECTS[effect]);
    for (int cause = 0; cause < COUNT_OF(CAUSES); ++cause) {
        if ((causes >> cause & 1) != 0) {
            printf(" %s", CAUSES[cause]);
        }
    }
    printf(" %lu\n", met[effect][causes]);
}

static void print_tally(void)
{
    for (int effect = 0; effect < COUNT_OF(EFFECTS); ++effect) {
        for (int causes = 0; causes < CAUSE_SETS; ++causes) {
            print_pair(effect, causes);
        }
    }
}

static void tally(int effect, int causes)
{
    if (!has_begun) {
        has_begun = 1;
        atexit(print_tally);
    }
    ++met[effect][causes];
}
