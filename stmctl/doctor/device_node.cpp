// The device node: whether it is one, and who may open it.
#include "stmctl/doctor/device_node.hpp"

#include "stmctl/module/device.hpp"

#include <fmt/format.h>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace stmctl
{

namespace
{

bool is_forbidden(int error)
{
    return error == EACCES || error == EPERM;
}

bool has(const std::vector<gid_t> &groups, gid_t group)
{
    return std::ranges::find(groups, group) != groups.end();
}

std::string user_name(uid_t user)
{
    const passwd *entry = getpwuid(user);
    return entry != nullptr ? entry->pw_name : fmt::format("{}", user);
}

std::string group_name(gid_t group)
{
    const struct group *entry = getgrgid(group);
    return entry != nullptr ? entry->gr_name : fmt::format("{}", group);
}

std::string owner_words(const NodeFile &file)
{
    return fmt::format("owner {}, group {}, mode {:04o}", user_name(file.owner),
                       group_name(file.group), file.mode & 07777U);
}

const char *kind_words(mode_t mode)
{
    return S_ISREG(mode)   ? "a regular file"
           : S_ISDIR(mode) ? "a directory"
           : S_ISBLK(mode) ? "a block device"
                           : "something else";
}

Finding judge_file(const NodeFile &file)
{
    if (!S_ISCHR(file.mode)) {
        return bad(
            fmt::format("{} is not a character device but {}", DEVICE, kind_words(file.mode)),
            fmt::format("sudo rm -r {}; see stmctl --help access", DEVICE));
    }
    return good(fmt::format("{}, a character device ({}, {})", DEVICE, major(file.number),
                            minor(file.number)));
}

std::string remedy_of_rights(const NodeFile &file, const Caller &caller)
{
    constexpr mode_t GROUP_MAY = S_IRGRP | S_IWGRP;
    const std::string group = group_name(file.group);
    if (file.group == 0 || (file.mode & GROUP_MAY) != GROUP_MAY) {
        return "use a udev rule for the group spi, see stmctl --help access";
    }
    if (has(caller.groups, file.group)) {
        return "something else denies access: see ls -l, getfacl and dmesg";
    }
    if (has(caller.member_of, file.group)) {
        return fmt::format("log in again: you joined the group {} after this login", group);
    }
    return fmt::format("sudo usermod -aG {} {}, then log in again", group, user_name(caller.user));
}

std::vector<gid_t> groups_of_session()
{
    std::vector<gid_t> groups(static_cast<size_t>(std::max(getgroups(0, nullptr), 0)));
    groups.resize(static_cast<size_t>(
        std::max(getgroups(static_cast<int>(groups.size()), groups.data()), 0)));
    groups.push_back(getegid());
    return groups;
}

std::vector<gid_t> groups_of_user(uid_t user)
{
    const passwd *entry = getpwuid(user);
    if (entry == nullptr) {
        return {};
    }
    int count = 0;
    getgrouplist(entry->pw_name, entry->pw_gid, nullptr, &count);
    std::vector<gid_t> groups(static_cast<size_t>(count));
    getgrouplist(entry->pw_name, entry->pw_gid, groups.data(), &count);
    groups.resize(std::min(groups.size(), static_cast<size_t>(std::max(count, 0))));
    return groups;
}

} // namespace

Caller this_caller()
{
    return {geteuid(), groups_of_session(), groups_of_user(geteuid())};
}

Finding judge_node(const DeviceNode &node)
{
    if (node.error != 0 && !is_forbidden(node.error)) {
        return bad(fmt::format("{} cannot be opened: {}", DEVICE, strerror(node.error)),
                   remedy_of_opening(node.error));
    }
    const bool is_character_device = node.file && S_ISCHR(node.file->mode);
    if (node.error == 0 && !node.has_driver && is_character_device) {
        return bad(fmt::format("{} is a device, but not an SPI device", DEVICE),
                   "bind the driver spidev to it, see stmctl --help access");
    }
    return node.file ? judge_file(*node.file) : good(fmt::format("{} is there", DEVICE));
}

Finding judge_rights(const DeviceNode &node, const Caller &caller)
{
    if (node.error != 0 && !is_forbidden(node.error)) {
        return unknown("there is no device to check");
    }
    const std::string who = "user " + user_name(caller.user);
    const std::string whose = node.file ? ": " + owner_words(*node.file) : "";
    if (node.error == 0) {
        return good(fmt::format("{} may read and write it{}", who, whose));
    }
    const std::string words = fmt::format("{} may not read and write it{}", who, whose);
    if (node.error == EPERM) {
        return bad(words, "the system denies it (a container?), not the file's mode");
    }
    return bad(words,
               node.file ? remedy_of_rights(*node.file, caller) : remedy_of_opening(node.error));
}

} // namespace stmctl
