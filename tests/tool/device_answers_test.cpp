// Every call that a program can make for the device gets from the virtual board what the kernel's own driver
// gives, line by line.
#include "tests/tool/workbench.hpp"

#include <algorithm>
#include <fstream>
#include <string_view>

namespace
{

// Names of the device are known where it is opened, looked at or asked for. With these calls they are left to
// the machine, which may have a device of its own.
constexpr std::string_view OF_THE_MACHINE[] = {"readlink:", "truncate:", "rmdir:", "chdir:"};

std::string lines_of(std::istream &stream)
{
    std::string lines;
    for (std::string line; std::getline(stream, line);) {
        if (std::ranges::none_of(OF_THE_MACHINE,
                                 [&](std::string_view name) { return line.starts_with(name); })) {
            lines += line + '\n';
        }
    }
    return lines;
}

// On ARM a transfer is rounded up to 64 bytes. An emulator knows no requests of SPI devices, and says so where
// there is none behind a descriptor.
struct OnArm {
    std::string_view elsewhere;
    std::string_view answer;
};
constexpr OnArm ON_ARM[] = {
    {"2040 and 2056: 4096\n  received 00 and 00\n",
     "2040 and 2056: EMSGSIZE\n  received 11 and 11\n"},
    {"511 transfers: 4088\n", "511 transfers: EMSGSIZE\n"},
    {"O_PATH: ok\n  its clock can be read: EBADF\n",
     "O_PATH: ok\n  its clock can be read: ENOSYS\n"},
    {"exchange with the closed copy: EBADF\n", "exchange with the closed copy: ENOSYS\n"},
};

std::string answers_of_kernel()
{
    std::ifstream file(DEVICE_ANSWERS);
    std::string lines = lines_of(file);
    if (*TOOL_EMULATOR == '\0') {
        return lines;
    }
    for (const OnArm &row : ON_ARM) {
        const size_t at = lines.find(row.elsewhere);
        EXPECT_NE(at, std::string::npos) << row.elsewhere;
        lines.replace(std::min(at, lines.size()), row.elsewhere.size(), row.answer);
    }
    return lines;
}

class DeviceAnswers : public Workbench
{
  protected:
    void expect_those_of_the_kernel(const std::string &probe);
};

void DeviceAnswers::expect_those_of_the_kernel(const std::string &probe)
{
    const Result result = run(on_board({}, {probe_program(probe)}));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    std::istringstream output(result.output);
    std::istringstream found(lines_of(output));
    std::istringstream expected(answers_of_kernel());
    std::string part;
    for (std::string wanted; std::getline(expected, wanted);) {
        std::string line;
        std::getline(found, line);
        part = wanted.starts_with('#') ? wanted : part;
        EXPECT_EQ(line, wanted) << part;
    }
}

TEST_F(DeviceAnswers, are_those_of_the_kernels_own_driver)
{
    expect_those_of_the_kernel("device_probe");
}

TEST_F(DeviceAnswers, are_the_same_for_programs_with_large_files_and_late_times)
{
    expect_those_of_the_kernel("device_probe_wide");
}

} // namespace
