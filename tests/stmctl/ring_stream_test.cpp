// A hundred thousand records through the ring, from one process to another.
#include "tests/stmctl/ring_bench.hpp"

namespace
{

class RingStream : public RingBench
{
  protected:
    // On one processor the writer, whose time is counted and who never waits, cannot run on for
    // long while the reader has to wait, however busy the machine is.
    void SetUp() override
    {
        RingBench::SetUp();
        cpu_set_t all;
        cpu_set_t one;
        sched_getaffinity(0, sizeof(all), &all);
        CPU_ZERO(&one);
        for (size_t cpu = 0; CPU_COUNT(&one) == 0; ++cpu) {
            if (CPU_ISSET(cpu, &all)) {
                CPU_SET(cpu, &one);
            }
        }
        sched_setaffinity(0, sizeof(one), &one);
    }

    Result passed_on()
    {
        return script(
            "$BOARD --count-time --rate 1000 $STMCTL ring write 2>writer.err </dev/null &\n"
            "writer=$!; until $STMCTL ring status >state 2>&1; do sleep 0.02; done\n"
            "$STMCTL ring read -n 100000 --format csv -o read.csv; s=$?\n"
            "kill $writer; wait $writer; $STMCTL ring remove >/dev/null; exit $s");
    }
};

TEST_F(RingStream, every_record_of_a_writer_that_it_keeps_up_with_is_delivered)
{
    const Result result = passed_on();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
              "stmctl: ring read: 100000 of 100000 records, 0 lost, 0 rejected, 0 overflowing, 0 "
              "overruns, 0 restarts of the writer\n");
    const Table table = csv(read_text("read.csv"));
    EXPECT_EQ(table.size(), 100000U);
    expect_all(table);
    EXPECT_NE(table[0].at("U1e"), table[0].at("Uen")) << "in another order than on the wire";
}

} // namespace
