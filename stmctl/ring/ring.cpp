// The subcommands of "ring": the shared memory in which one process passes records to others.
#include "stmctl/ring/ring.hpp"

namespace stmctl
{

namespace
{

constexpr Command COMMANDS[] = {
    {"write", "fill the ring with the live stream of records",
     "  stmctl ring write\n"
     "  stmctl ring write --duration 3600\n",
     declare_ring_write},
    {"read", "show the records that another process writes",
     "  stmctl ring read --format csv -o ring.csv\n"
     "  stmctl ring read --from-oldest -n 100 --format jsonl\n",
     declare_ring_read},
    {"status", "show the state of the ring", "  stmctl ring status\n  stmctl ring status --json\n",
     declare_ring_status},
    {"remove", "remove the ring",
     "  stmctl ring remove\n"
     "  stmctl ring remove --force     even if processes use it\n",
     declare_ring_remove},
};

} // namespace

std::span<const Command> ring_commands()
{
    return COMMANDS;
}

} // namespace stmctl
