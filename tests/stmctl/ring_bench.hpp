// A bench for the ring: scripts of several processes, with shared memory that only they see.
#pragma once

#include "tests/stmctl/record_bench.hpp"

#include <sched.h>

#include <cerrno>
#include <cstring>

class RingBench : public RecordBench
{
  protected:
    void SetUp() override
    {
        if (unshare(CLONE_NEWIPC) != 0) {
            GTEST_SKIP() << "shared memory of its own is not allowed here: " << strerror(errno);
        }
    }

    // A script for bash. $STMCTL runs it, on a fresh board $BOARD $STMCTL. Both are single
    // commands, so that $! is stmctl. "await WORDS FILE" waits until the words are in the file.
    Result script(const std::string &text)
    {
        std::string board;
        for (const std::string &word : virtual_board({})) {
            board += word + " ";
        }
        std::string stmctl;
        for (const std::string &word : directly({}, {program()})) {
            stmctl += word + " ";
        }
        return run({"bash", "-c",
                    "BOARD='" + board + "'; STMCTL='" + stmctl +
                        "'\n"
                        "await() { for ((i = 0; i < 600; ++i)); do grep -qs \"$1\" \"$2\" && "
                        "return; sleep 0.05; done; echo \"no $1\"; cat \"$2\"; }\n"
                        "fill() { $BOARD --count-time --rate \"${2:-1000}\" $STMCTL ring write "
                        "--duration \"$1\" 2>writer.err </dev/null; }\n" +
                        text});
    }

    // What a file holds, every record of it behind the one before.
    void expect_rising(const Table &table) const
    {
        for (size_t i = 1; i < table.size(); ++i) {
            ASSERT_LT(std::stol(table[i - 1].at("rel_t")), std::stol(table[i].at("rel_t"))) << i;
        }
    }

    static void expect_all(const Table &table)
    {
        for (size_t i = 1; i < table.size(); ++i) {
            ASSERT_EQ(std::stol(table[i - 1].at("rel_t")) + 1, std::stol(table[i].at("rel_t")));
        }
    }
};
