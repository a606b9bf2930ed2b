// Gathers everything once, before it is judged.
#include "stmctl/doctor/examination.hpp"

#include "stmctl/module/device.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/ring/segment.hpp"

#include <fmt/format.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace stmctl
{

namespace
{

class Descriptor
{
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int number() const { return number_; }

  private:
    int number_;
};

std::optional<NodeFile> file_of(int descriptor)
{
    struct stat file = {};
    const int result = descriptor < 0 ? stat(DEVICE, &file) : fstat(descriptor, &file);
    return result == 0
               ? std::optional(NodeFile{file.st_mode, file.st_uid, file.st_gid, file.st_rdev})
               : std::nullopt;
}

void look_at_lock(int descriptor, Examination &examination)
{
    try {
        if (!try_lock(descriptor, DEVICE)) {
            examination.holder = lock_holder(descriptor);
        }
    } catch (const Failure &failure) {
        examination.lock_failure = failure.what();
    }
}

// Only names: with the full command lines of the processes the lines would be too long.
std::string names_of(const DeviceUsers &users)
{
    std::string names;
    for (const pid_t process : users.processes) {
        names += (names.empty() ? "" : " and ") + process_name(process);
    }
    return names + (users.processes.size() == 1 ? " has" : " have");
}

// Anything sent in the middle of another program's dialogue breaks it.
bool may_talk(const Examination &examination)
{
    return examination.node.has_driver && examination.users.processes.empty() &&
           examination.holder.empty() && examination.lock_failure.empty();
}

} // namespace

std::string Examination::why_silent() const
{
    if (node.error != 0) {
        return "the device cannot be opened";
    }
    if (!node.has_driver) {
        return "there is no driver to ask";
    }
    if (!users.processes.empty()) {
        return names_of(users) + " the device open";
    }
    return holder.empty() ? lock_failure : holder + " holds the lock";
}

Examination examine()
{
    Examination examination;
    examination.caller = this_caller();
    const Descriptor device(open_to_lock());
    examination.node.error = device.number() < 0 ? errno : 0;
    examination.node.file = file_of(device.number());
    if (device.number() < 0) {
        return examination;
    }
    examination.left = wire_settings_of(device.number());
    examination.node.has_driver = examination.left.mode.has_value();
    examination.users = other_users_of(device.number());
    look_at_lock(device.number(), examination);
    if (may_talk(examination)) {
        examination.dialogue = talk(device.number());
    }
    return examination;
}

} // namespace stmctl
