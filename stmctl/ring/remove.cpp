// ring remove: removes the segment.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/ring/ring.hpp"
#include "stmctl/ring/segment.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace stmctl
{

namespace
{

ExitStatus remove(bool force)
{
    const Segment segment = existing_segment();
    if (segment.info.shm_nattch > 0 && !force) {
        throw Failure(ExitStatus::failed,
                      fmt::format("the ring is attached {}; --force removes it anyway",
                                  attached_words(segment, attached_processes(segment))));
    }
    if (shmctl(segment.id, IPC_RMID, nullptr) != 0) {
        throw Failure(ExitStatus::failed,
                      fmt::format("cannot remove the ring of {}: {}",
                                  user_words(segment.info.shm_perm.uid), strerror(errno)));
    }
    print(segment.info.shm_nattch > 0
              ? "removed; the processes that use it keep it until they end\n"
              : "removed\n");
    return ExitStatus::done;
}

} // namespace

Action declare_ring_remove(CLI::App &command)
{
    auto force = std::make_shared<bool>(false);
    add_flag(command, "--force", *force, "even if processes have it attached");
    return [force] { return remove(*force); };
}

} // namespace stmctl
