// A bench for stmctl doctor: its lines by their names, and other programs that use the device.
#pragma once

#include "tests/stmctl/ring_bench.hpp"

#include <sstream>

class Doctor : public RingBench
{
  protected:
    // The line of a name, and its remedy below it.
    static std::string line(const Result &result, const std::string &name)
    {
        std::istringstream lines(result.output);
        std::string found;
        for (std::string text; std::getline(lines, text);) {
            const bool goes_on = text.starts_with(" ") && !found.empty();
            if (!goes_on && !found.empty()) {
                break;
            }
            if (goes_on || text.starts_with(name + " ")) {
                found += text + '\n';
            }
        }
        return found;
    }

    Result doctor(const Words &options = {}) { return stmctl({"doctor"}, options); }

    static void expect_bad(const Result &result, const std::string &names, int status = 1)
    {
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.errors, "stmctl: doctor: " + names + "\n");
    }

    // While another process on the same board, which is not stmctl, has the device open.
    Result beside_another(const std::string &before, const Words &arguments)
    {
        Words command = {program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return run(on_board({}, {"bash", "-c",
                                 before + "exec 9<>/dev/spidev1.0; (exec 9<&-; " + quoted(command) +
                                     "); exit $?"}));
    }
};
