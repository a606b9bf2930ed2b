// Goal: what the module says stands in one file of stmctl, so that a new word of it is learned
// there.
#include "tests/structure/source_literals.hpp"

#include <gtest/gtest.h>

#include <set>

namespace
{

namespace fs = std::filesystem;

const fs::path ROOT = STRUCTURE_SOURCE_ROOT;
constexpr char VOICE[] = "stmctl/module/voice.cpp";
constexpr char COLUMNS[] = "stmctl/record/columns.cpp";

// Columns that stmctl itself speaks of.
const std::set<std::string> OWN_NAMES = {"nr", "temp", "rel_t", "buffered", "checksum"};

std::vector<SourceLiteral> literals_of(const std::string &file)
{
    return SourceLiterals(ROOT / file).all();
}

std::set<std::string> files_in(const std::vector<std::string> &folders)
{
    std::set<std::string> files;
    for (const std::string &folder : folders) {
        for (const fs::directory_entry &entry : fs::recursive_directory_iterator(ROOT / folder)) {
            const std::string ending = entry.path().extension();
            if (ending == ".cpp" || ending == ".hpp") {
                files.insert(entry.path().lexically_relative(ROOT).generic_string());
            }
        }
    }
    return files;
}

std::string without_newline(std::string text)
{
    text.resize(text.find_last_not_of(" \n") + 1);
    return text;
}

// Not "; ", with which sentences of stmctl's own go on.
bool has_words(const std::string &text)
{
    return std::ranges::any_of(text, [](char c) { return isalpha(c) != 0; });
}

// A text belongs to the module if that says it: stmctl may know how it begins.
std::set<std::string> texts_of_module(const std::string &file)
{
    std::set<std::string> said;
    for (const std::string &source :
         files_in({"link", "download", "acquisition", "readout", "ringbuffer"})) {
        for (const SourceLiteral &literal : literals_of(source)) {
            said.insert(literal.text);
        }
    }
    std::set<std::string> texts;
    for (const SourceLiteral &literal : literals_of(file)) {
        const std::string text = without_newline(literal.text);
        const bool is_said = std::ranges::any_of(
            said, [&](const std::string &one) { return one.starts_with(text); });
        if (has_words(text) && is_said && OWN_NAMES.count(text) == 0) {
            texts.insert(text);
        }
    }
    return texts;
}

// Short ones are words that others may use.
bool shows(const std::string &literal, const std::string &text)
{
    constexpr size_t LONG = 8;
    return text.size() < LONG ? literal == text : literal.find(text) != std::string::npos;
}

void expect_nowhere_else(const std::string &owner)
{
    const std::set<std::string> texts = texts_of_module(owner);
    for (const std::string &file : files_in({"stmctl"})) {
        if (file == owner) {
            continue;
        }
        for (const SourceLiteral &literal : literals_of(file)) {
            for (const std::string &text : texts) {
                EXPECT_FALSE(shows(literal.text, text)) << file << ": " << text;
            }
        }
    }
}

TEST(TextsOnce, what_the_module_reports_is_known_to_its_voice_alone)
{
    const std::set<std::string> texts = texts_of_module(VOICE);
    for (const char *text : {"SPI timeout", "Error: stm_com_funcs: SPI datatransfer", "read data",
                             "shmctl (ringbuffer space)", "Filesize:"}) {
        EXPECT_EQ(texts.count(text), 1U) << text;
    }
    EXPECT_GE(texts.size(), 31U);
    expect_nowhere_else(VOICE);
}

TEST(TextsOnce, labels_and_names_of_columns_stand_in_their_table_alone)
{
    const std::set<std::string> texts = texts_of_module(COLUMNS);
    for (const char *text :
         {"stm_int32_t  -Ie  :", "stm_uint8    buffered  :", "negIe", "BE32_01_ext", "omega_t"}) {
        EXPECT_EQ(texts.count(text), 1U) << text;
    }
    EXPECT_EQ(texts.size(), 31U); // 18 labels, 13 names
    expect_nowhere_else(COLUMNS);
}

TEST(TextsOnce, literals_are_read_as_the_compiler_does)
{
    const fs::path path = testing::TempDir() + "literals-" + std::to_string(getpid());
    std::ofstream(path)
        << "#include \"a.hpp\"\n// \"b\"\n/* \"c\" */ call('\"', \"d\\n\"\n \"e\");\n"
           "const int x = 1'000; f(\"g\\\"h\");\n";
    const std::vector<SourceLiteral> found = SourceLiterals(path).all();
    fs::remove(path);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].text, "d\ne");
    EXPECT_EQ(found[0].before, "call(,");
    EXPECT_EQ(found[1].text, "g\\\"h");
    EXPECT_EQ(found[1].before, "f(");
}

} // namespace
