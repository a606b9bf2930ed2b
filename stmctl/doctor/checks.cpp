// The table of checks, each after those that it depends on.
#include "stmctl/doctor/checks.hpp"

namespace stmctl
{

namespace
{

Finding judge_device(const Examination &examination)
{
    return judge_node(examination.node);
}

Finding judge_access(const Examination &examination)
{
    return judge_rights(examination.node, examination.caller);
}

// clang-format off
constexpr Check CHECKS[] = {
    {"device",   judge_device},
    {"rights",   judge_access},
    {"users",    judge_users},
    {"lock",     judge_lock},
    {"bufsiz",   judge_bufsiz},
    {"SPI mode", judge_wire_mode},
    {"clock",    judge_clock},
    {"link",     judge_link},
    {"exchange", judge_exchange},
    {"runs",     judge_mode},
    {"version",  judge_version},
    {"query",    judge_query},
    {"ring",     judge_ring},
    {"gnuplot",  judge_gnuplot},
};
// clang-format on

} // namespace

std::span<const Check> checks()
{
    return CHECKS;
}

} // namespace stmctl
