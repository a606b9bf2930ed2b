// docs/design.md lists what is kept odd on purpose: a row for each remark "Kept:" of the code, in
// the code's order, with a word of the line that the remark belongs to.
#include "tests/docs/document.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

namespace
{

namespace fs = std::filesystem;

constexpr const char *FOLDERS[] = {"acquisition", "app",     "download",
                                   "link",        "readout", "ringbuffer"};

bool is_remark(const std::string &line)
{
    const size_t comment = line.find("//");
    return comment != std::string::npos && (line.find("Kept:", comment) != std::string::npos ||
                                            line.find("kept:", comment) != std::string::npos);
}

bool is_code(const std::string &line)
{
    const size_t first = line.find_first_not_of(' ');
    return first != std::string::npos && line.compare(first, 2, "//") != 0;
}

// The code around a remark: on its line, on the line before, and on the three lines of code after
// it. That of a whole file stands before the file's first line of code.
std::string code_around(const std::vector<std::string> &lines, size_t remark)
{
    const auto at = lines.begin() + static_cast<std::ptrdiff_t>(remark);
    if (std::none_of(lines.begin(), at, is_code) &&
        std::ranges::find_if(lines, is_code)->starts_with("#")) {
        return "whole file";
    }
    std::string code = lines[remark].substr(0, lines[remark].find("//")) + '\n';
    code += remark > 0 && is_code(lines[remark - 1]) ? lines[remark - 1] + '\n' : "";
    int taken = 0;
    for (size_t i = remark + 1; i < lines.size() && taken < 3; ++i) {
        if (is_code(lines[i])) {
            code += lines[i] + '\n';
            ++taken;
        }
    }
    return code;
}

std::vector<std::string> remarks_of(const std::string &file)
{
    const std::vector<std::string> lines = read_document(file).lines;
    std::vector<std::string> codes;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (is_remark(lines[i])) {
            codes.push_back(code_around(lines, i));
        }
    }
    return codes;
}

// The code around each remark of the module and of update, by the files' names.
std::map<std::string, std::vector<std::string>> remarks()
{
    std::map<std::string, std::vector<std::string>> found;
    for (const char *folder : FOLDERS) {
        for (const auto &entry : fs::directory_iterator(fs::path(DOCS_ROOT) / folder)) {
            const std::string name = folder + ("/" + entry.path().filename().string());
            const std::vector<std::string> codes = remarks_of(name);
            if (!codes.empty()) {
                found[name] = codes;
            }
        }
    }
    return found;
}

std::map<std::string, std::vector<std::string>> documented()
{
    std::map<std::string, std::vector<std::string>> places;
    for (const Row &row :
         rows_under(read_document("docs/design.md"), "## What is kept odd on purpose")) {
        places[row.at(0)].push_back(row.at(1));
        EXPECT_FALSE(row.at(2).empty()) << row.at(0);
    }
    return places;
}

TEST(Kept, remarks_of_the_code_have_a_line_each_in_the_document)
{
    const auto places = documented();
    const auto found = remarks();
    EXPECT_GT(found.size(), 20U);
    for (const auto &[file, codes] : found) {
        ASSERT_TRUE(places.contains(file)) << file;
        const std::vector<std::string> &words = places.at(file);
        ASSERT_EQ(words.size(), codes.size()) << file;
        for (size_t i = 0; i < codes.size(); ++i) {
            EXPECT_NE(codes[i].find(words[i]), std::string::npos)
                << file << ": " << words[i] << " is not in\n"
                << codes[i];
        }
    }
}

TEST(Kept, lines_of_the_document_belong_to_files_with_such_remarks)
{
    const auto found = remarks();
    for (const auto &[file, words] : documented()) {
        EXPECT_TRUE(found.contains(file)) << file;
    }
}

} // namespace
