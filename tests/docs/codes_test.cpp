// The codes in docs/protocol.md against the lists that stmctl and the virtual board print.
#include "tests/docs/document.hpp"
#include "tests/tool/workbench.hpp"

#include <map>
#include <sstream>

namespace
{

const Document PROTOCOL = read_document("docs/protocol.md");

size_t words_in(const std::string &text)
{
    std::istringstream words(text);
    size_t count = 0;
    for (std::string word; words >> word;) {
        ++count;
    }
    return count;
}

// The rows of `stmctl list`, and of `virtual-board --commands`, by their codes.
class Codes : public Workbench
{
  protected:
    std::map<std::string, std::string> lines_of(const Words &command, const std::string &begin)
    {
        std::map<std::string, std::string> lines;
        std::istringstream text(run(command).output);
        for (std::string line; std::getline(text, line);) {
            const size_t code = line.find(" 0x");
            if (line.starts_with(begin) && code != std::string::npos) {
                lines[line.substr(code + 1, 4)] = line.substr(code + 5);
            }
        }
        return lines;
    }

    std::map<std::string, std::string> listed(const std::string &direction)
    {
        return lines_of({DOCS_PROGRAMS "/stmctl", "list"}, direction);
    }

    std::map<std::string, std::string> commands()
    {
        return lines_of({DOCS_PROGRAMS "/virtual-board", "--commands"}, "  0x");
    }
};

// A line of a list without the names of values: "TIME 0 to 32000" is "0 to 32000".
std::string squeezed(const std::string &line)
{
    std::istringstream words(line);
    std::string text;
    for (std::string word; words >> word;) {
        const bool names_value = word == "VALUE" || word == "FIRST" || word == "SECOND" ||
                                 word == "TIME" || word == "SKIP" || word == "MODE";
        text += names_value ? "" : (text.empty() ? "" : " ") + word;
    }
    return text;
}

std::string spaced(const Row &cells)
{
    std::string text;
    for (const std::string &cell : cells) {
        text += (text.empty() || cell.empty() ? "" : " ") + cell;
    }
    return text;
}

TEST_F(Codes, of_settings_are_documented_with_their_ranges)
{
    const auto listed_settings = listed("set");
    const auto rows = table_under(PROTOCOL, "### Settings");
    EXPECT_EQ(rows.size(), listed_settings.size());
    for (const auto &[code, line] : listed_settings) {
        ASSERT_TRUE(rows.contains(code)) << code;
        const Row &row = rows.at(code);
        EXPECT_EQ(spaced({row.at(0), row.at(2), row.at(3)}), squeezed(line)) << code;
    }
}

// "  0 to 7    takes 2 numbers of 16 bits   1"
TEST_F(Codes, of_settings_are_documented_with_their_parameter_bytes)
{
    const auto board = commands();
    for (const auto &[code, row] : table_under(PROTOCOL, "### Settings")) {
        const std::string &line = board.at(code);
        const size_t takes = line.find("takes ");
        const size_t bits = line.find(" of ");
        ASSERT_NE(bits, std::string::npos) << line;
        const size_t width = std::stoul(line.substr(bits + 4)) / 8;
        const size_t values = std::stoul(line.substr(takes + 6));
        EXPECT_EQ(words_in(row.at(1)), (row.at(0).empty() ? 0 : 1) + values * width) << code;
        EXPECT_EQ(row.at(1).starts_with("ch "), !row.at(0).empty()) << code;
    }
}

TEST_F(Codes, of_queries_are_documented_with_their_replies)
{
    const std::map<std::string, std::string> replies = {
        {"16 bits, signed", "signed number, 16 bits"},
        {"32 bits, signed", "signed number, 32 bits"},
        {"8 bits, unsigned", "number, 0 to 255"},
        {"text", "text"}};
    const auto listed_queries = listed("get");
    const auto board = commands();
    const auto rows = table_under(PROTOCOL, "### Queries");
    EXPECT_EQ(rows.size(), listed_queries.size());
    for (const auto &[code, line] : listed_queries) {
        ASSERT_TRUE(rows.contains(code)) << code;
        const Row &row = rows.at(code);
        EXPECT_EQ(spaced({row.at(0), replies.at(row.at(1)), row.at(3)}), squeezed(line)) << code;
        EXPECT_NE(board.at(code).find(row.at(2).empty() ? "answers" : "what " + row.at(2) + " has"),
                  std::string::npos)
            << board.at(code);
    }
}

TEST_F(Codes, of_the_virtual_board_are_all_documented)
{
    const std::string text = flowing_text(PROTOCOL);
    const auto board = commands();
    EXPECT_GT(board.size(), 50U);
    for (const auto &[code, line] : board) {
        EXPECT_NE(text.find("`" + code + "`"), std::string::npos) << code;
    }
}

} // namespace
