// A bench for the commands that show records, with a reader for their output.
#pragma once

#include "tests/stmctl/stmctl_bench.hpp"

#include <algorithm>
#include <map>
#include <sstream>

using Table = std::vector<std::map<std::string, std::string>>; // rows, by the names of columns

class RecordBench : public StmctlBench
{
  protected:
    // A CSV as stmctl writes it.
    static Table csv(const std::string &text)
    {
        Words names;
        Table table;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_EQ(line.back(), ';');
            const Words fields = split(line, ';');
            if (names.empty()) {
                names = fields;
                continue;
            }
            EXPECT_EQ(fields.size(), names.size()) << line;
            auto &row = table.emplace_back();
            for (size_t i = 0; i < std::min(fields.size(), names.size()); ++i) {
                row[names[i].substr(1, names[i].size() - 2)] = fields[i];
            }
        }
        return table;
    }

    // Objects of plain numbers, one per line.
    static Table jsonl(const std::string &text)
    {
        Table table;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_EQ(line.front(), '{');
            EXPECT_EQ(line.back(), '}');
            auto &row = table.emplace_back();
            for (const std::string &member : split(line.substr(1, line.size() - 2) + ',', ',')) {
                const size_t colon = member.find("\":");
                EXPECT_EQ(member.front(), '"') << line;
                const std::string value = member.substr(colon + 2);
                EXPECT_EQ(value.find_first_not_of("-0123456789."), std::string::npos) << line;
                row[member.substr(1, colon - 1)] = value;
            }
        }
        return table;
    }

    static Words column(const Table &table, const std::string &name)
    {
        Words values;
        for (const auto &row : table) {
            values.push_back(row.at(name));
        }
        return values;
    }

    // What is shown, one record after another.
    static void expect_rising(const Table &table)
    {
        for (size_t i = 1; i < table.size(); ++i) {
            ASSERT_LT(std::stol(table[i - 1].at("rel_t")), std::stol(table[i].at("rel_t"))) << i;
        }
    }

    static Words numbers(int first, int last)
    {
        Words words;
        for (int number = first; number <= last; ++number) {
            words.push_back(std::to_string(number));
        }
        return words;
    }

    static size_t count(const std::string &text, const std::string &part)
    {
        size_t found = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++found;
        }
        return found;
    }

  private:
    static Words split(const std::string &line, char separator)
    {
        Words parts;
        std::istringstream stream(line);
        for (std::string part; std::getline(stream, part, separator);) {
            parts.push_back(part);
        }
        return parts;
    }
};
