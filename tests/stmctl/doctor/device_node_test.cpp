// Goal: the report about a missing or wrong device node and one that may not be opened, and the
// remedies.
#include "stmctl/doctor/device_node.hpp"

#include <gtest/gtest.h>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

using namespace stmctl;

namespace
{

constexpr uid_t NOBODY = 4'000'001; // numbers without a name on any system
constexpr gid_t GROUP = 4'000'002;
constexpr gid_t OTHER_GROUP = 4'000'003;

NodeFile file_with(mode_t mode, gid_t group = GROUP)
{
    return {mode, 0, group, makedev(153, 1)};
}

DeviceNode opened(mode_t mode, bool has_driver)
{
    return {0, file_with(mode), has_driver};
}

DeviceNode forbidden(mode_t permissions, gid_t group = GROUP)
{
    return {EACCES, file_with(S_IFCHR | permissions, group), false};
}

void expect_finding(const Finding &finding, Health health, const std::string &words,
                    const std::string &remedy)
{
    EXPECT_EQ(finding.health, health) << words;
    EXPECT_EQ(finding.words, words);
    EXPECT_EQ(finding.remedy, remedy);
}

TEST(DeviceNodeLine, a_device_of_the_driver_is_good)
{
    const std::string words = "/dev/spidev1.0, a character device (153, 1)";
    expect_finding(judge_node(opened(S_IFCHR | 0660, true)), Health::good, words, "");
    expect_finding(judge_node(forbidden(0660)), Health::good, words, "");
    expect_finding(judge_node({EPERM, {}, false}), Health::good, "/dev/spidev1.0 is there", "");
}

TEST(DeviceNodeLine, anything_but_a_device_is_bad)
{
    const std::string remedy = "sudo rm -r /dev/spidev1.0; see stmctl --help access";
    const std::string words = "/dev/spidev1.0 is not a character device but ";
    expect_finding(judge_node(opened(S_IFREG | 0644, false)), Health::bad, words + "a regular file",
                   remedy);
    expect_finding(judge_node({EACCES, file_with(S_IFREG), false}), Health::bad,
                   words + "a regular file", remedy);
    expect_finding(judge_node(opened(S_IFBLK | 0644, false)), Health::bad, words + "a block device",
                   remedy);
    expect_finding(judge_node({EACCES, file_with(S_IFDIR), false}), Health::bad,
                   words + "a directory", remedy);
    expect_finding(judge_node(opened(S_IFIFO | 0644, false)), Health::bad, words + "something else",
                   remedy);
}

TEST(DeviceNodeLine, a_device_of_another_driver_is_bad)
{
    expect_finding(judge_node(opened(S_IFCHR | 0660, false)), Health::bad,
                   "/dev/spidev1.0 is a device, but not an SPI device",
                   "bind the driver spidev to it, see stmctl --help access");
}

// In a process of its own, which alone gets another group.
TEST(CallerOfDoctor, has_the_groups_of_its_session)
{
    if (getuid() != 0) {
        GTEST_SKIP() << "only root may join groups";
    }
    const pid_t child = fork();
    if (child == 0) {
        const gid_t groups[] = {GROUP, OTHER_GROUP};
        const bool joined = setgroups(2, groups) == 0;
        const Caller caller = this_caller();
        const auto has = [&](gid_t group) { return std::ranges::count(caller.groups, group) == 1; };
        const bool right = caller.user == 0 && has(GROUP) && has(OTHER_GROUP) && has(getegid());
        _exit(joined && right ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

// In a process of its own, which becomes that user.
bool belongs_to(uid_t user, const std::vector<gid_t> &groups)
{
    const pid_t child = fork();
    if (child == 0) {
        const bool changed = setuid(user) == 0;
        const Caller caller = this_caller();
        _exit(changed && caller.user == user && caller.member_of == groups ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

TEST(CallerOfDoctor, has_the_groups_of_its_user)
{
    constexpr uid_t ANYBODY = 65534; // the system's own user without rights
    const passwd *entry = getpwuid(ANYBODY);
    if (getuid() != 0 || entry == nullptr) {
        GTEST_SKIP() << "only root may become another user";
    }
    EXPECT_TRUE(belongs_to(ANYBODY, {entry->pw_gid}));
    EXPECT_TRUE(belongs_to(NOBODY, {})) << "a user without a name";
}

TEST(RightsLine, the_owner_is_shown)
{
    const Caller caller = {NOBODY, {}, {}};
    expect_finding(judge_rights({0, file_with(S_IFCHR | 0660, GROUP), true}, caller), Health::good,
                   "user 4000001 may read and write it: owner root, group 4000002, mode 0660", "");
}

TEST(RightsLine, a_user_who_is_not_in_the_group_is_told_how_to_join_it)
{
    expect_finding(judge_rights(forbidden(0660), {NOBODY, {OTHER_GROUP}, {OTHER_GROUP}}),
                   Health::bad,
                   "user 4000001 may not read and write it: owner root, group 4000002, mode 0660",
                   "sudo usermod -aG 4000002 4000001, then log in again");
}

TEST(RightsLine, a_session_from_before_joining_is_told_to_log_in_again)
{
    const Finding finding = judge_rights(forbidden(0660), {NOBODY, {OTHER_GROUP}, {GROUP}});
    EXPECT_EQ(finding.remedy, "log in again: you joined the group 4000002 after this login");
}

TEST(RightsLine, a_group_that_helps_nobody_needs_a_rule)
{
    const std::string rule = "use a udev rule for the group spi, see stmctl --help access";
    const Caller caller = {NOBODY, {}, {}};
    EXPECT_EQ(judge_rights(forbidden(0660, 0), caller).remedy, rule) << "of root";
    EXPECT_EQ(judge_rights(forbidden(0600), caller).remedy, rule) << "without rights";
    EXPECT_EQ(judge_rights(forbidden(0640), caller).remedy, rule) << "with half of them";
}

TEST(RightsLine, other_causes_are_not_blamed_on_the_group)
{
    EXPECT_EQ(judge_rights(forbidden(0660), {NOBODY, {GROUP}, {GROUP}}).remedy,
              "something else denies access: see ls -l, getfacl and dmesg");
    EXPECT_EQ(judge_rights({EPERM, file_with(S_IFCHR | 0666), false}, {NOBODY, {}, {}}).remedy,
              "the system denies it (a container?), not the file's mode");
}

TEST(RightsLine, a_missing_device_has_no_rights)
{
    expect_finding(judge_rights({ENOENT, {}, false}, {}), Health::unknown,
                   "there is no device to check", "");
}

} // namespace
