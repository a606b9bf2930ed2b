// docs/testing.md against the tests: its excerpts, and the calls that the platform replaces.
#include "tests/docs/document.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace
{

using Lines = std::vector<std::string>;

constexpr char NAME[] = "// "; // in front of the file's name

bool is_excerpt(const Block &block)
{
    return block.language == "cpp" && block.lines.front().starts_with(std::string(NAME) + "tests/");
}

TEST(Excerpts, stand_in_the_files_that_they_name)
{
    int excerpts = 0;
    for (const std::string &name : document_names()) {
        for (const Block &block : blocks_of(read_document(name))) {
            if (is_excerpt(block)) {
                ++excerpts;
                const Lines lines =
                    read_document(block.lines.front().substr(sizeof(NAME) - 1)).lines;
                EXPECT_NE(std::search(lines.begin(), lines.end(), block.lines.begin() + 1,
                                      block.lines.end()),
                          lines.end())
                    << name << ": " << block.lines.front();
            }
        }
    }
    EXPECT_GE(excerpts, 1);
}

// "foreach(call open ioctl close ...)"
TEST(Platform, is_documented_with_all_calls_that_it_replaces)
{
    constexpr char LIST[] = "foreach(call ";
    Lines replaced;
    for (const std::string &line : read_document("tests/platform/CMakeLists.txt").lines) {
        if (line.starts_with(LIST)) {
            std::istringstream words(
                line.substr(sizeof(LIST) - 1, line.find(')') - sizeof(LIST) + 1));
            for (std::string word; words >> word;) {
                replaced.push_back(word);
            }
        }
    }
    Lines documented;
    for (const Row &row :
         rows_under(read_document("docs/testing.md"), "## The replaced platform")) {
        documented.push_back(row.at(0));
    }
    std::ranges::sort(replaced);
    std::ranges::sort(documented);
    EXPECT_EQ(documented, replaced);
    EXPECT_GT(replaced.size(), 5U);
}

} // namespace
