// Settings as lines of text, as save and get --all write them:
//
//     # anything
//     sampletime 100
//     adc-word-54 3 = 40000      or -25536, the same 16 bits with a sign
#pragma once

#include "stmctl/settings/operands.hpp"

#include <string>
#include <vector>

namespace stmctl
{

struct Setting {
    const Quantity *row;
    Values values;

    std::string name() const { return full_name(*row, values.channel); }
};

struct SettingsFile {
    std::vector<Setting> settings;
    std::vector<std::string> only_asked; // names in lines about what cannot be set
    std::vector<std::string> mistakes;   // "NAME:12: what is wrong"
};

SettingsFile read_settings(const std::string &name, const std::string &text);

} // namespace stmctl
