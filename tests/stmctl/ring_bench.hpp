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
    // commands, so that $! is stmctl. Events of the ring that it can wait for:
    //     await_status WORDS    until ring status prints the words
    //     await_one             until one writer or reader is at work: each attaches it twice, and
    //                           a writer once more if it was there
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
        return in_script("BOARD='" + board + "'; STMCTL='" + stmctl +
                         "'\n"
                         "says() { $STMCTL ring status 2>&1 </dev/null | grep -qe \"$1\"; }\n"
                         "await_status() { await_command says \"$1\"; }\n"
                         "await_one() { await_status '^attached    [23] times'; }\n"
                         "fill() { $BOARD --count-time --rate \"${2:-1000}\" $STMCTL ring write "
                         "--duration \"$1\" 2>writer.err </dev/null; }\n" +
                         text);
    }

    static void expect_all(const Table &table)
    {
        for (size_t i = 1; i < table.size(); ++i) {
            ASSERT_EQ(std::stol(table[i - 1].at("rel_t")) + 1, std::stol(table[i].at("rel_t")));
        }
    }
};
