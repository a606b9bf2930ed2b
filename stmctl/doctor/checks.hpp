// The table of checks.
#pragma once

#include "stmctl/doctor/examination.hpp"
#include "stmctl/doctor/finding.hpp"

#include <span>

namespace stmctl
{

struct Check {
    const char *name;
    Finding (*judge)(const Examination &examination);
};

std::span<const Check> checks();

// Rows of the table.
Finding judge_users(const Examination &examination);
Finding judge_lock(const Examination &examination);
Finding judge_bufsiz(const Examination &examination);
Finding judge_wire_mode(const Examination &examination);
Finding judge_clock(const Examination &examination);
Finding judge_link(const Examination &examination);
Finding judge_mode(const Examination &examination);
Finding judge_version(const Examination &examination);
Finding judge_query(const Examination &examination);
Finding judge_exchange(const Examination &examination);
Finding judge_ring(const Examination &examination);
Finding judge_gnuplot(const Examination &examination);

} // namespace stmctl
