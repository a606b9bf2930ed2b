// The documents' transcripts: a fenced block that begins with "$ COMMAND" shows what its commands
// say, on both channels, without blanks at the ends of lines. "..." stands for a part of a line,
// and alone for any lines. "$ virtual-board ... bash" opens a shell on a virtual board, in which the
// further commands of a document run.
#include "tests/docs/document.hpp"
#include "tests/tool/workbench.hpp"

#include <sstream>

namespace
{

using Lines = std::vector<std::string>;

constexpr char ELISION[] = "...";

bool is_command(const std::string &line)
{
    return line.starts_with("$ ");
}

bool opens_board(const std::string &command)
{
    return command.starts_with("virtual-board ") && command.ends_with(" bash");
}

bool shows_commands(const Block &block)
{
    return !block.lines.empty() && is_command(block.lines.front());
}

// The parts between elisions stand in their order, the first one at the line's start, the last one
// at its end.
bool line_matches(const std::string &line, const std::string &shown)
{
    size_t at = 0;
    size_t from = 0;
    for (size_t cut = shown.find(ELISION); cut != std::string::npos;
         cut = shown.find(ELISION, from)) {
        const std::string part = shown.substr(from, cut - from);
        const size_t found = line.find(part, at);
        if (found == std::string::npos || (from == 0 && found != 0)) {
            return false;
        }
        at = found + part.size();
        from = cut + sizeof(ELISION) - 1;
    }
    const std::string last = shown.substr(from);
    return from == 0 ? line == last : line.size() >= at + last.size() && line.ends_with(last);
}

// Returns what is wrong, or nothing.
std::string difference(const Lines &real, const Lines &shown)
{
    size_t at = 0;
    bool elided = false;
    for (const std::string &line : shown) {
        if (line == ELISION) {
            elided = true;
            continue;
        }
        while (elided && at < real.size() && !line_matches(real[at], line)) {
            ++at;
        }
        if (at == real.size() || !line_matches(real[at], line)) {
            return "shown: " + line + "\nreal:  " + (at < real.size() ? real[at] : "nothing more");
        }
        ++at;
        elided = false;
    }
    return elided || at == real.size() ? "" : "not shown: " + real[at];
}

class Transcripts : public Workbench
{
  protected:
    Lines run_in_shell(const std::string &command)
    {
        const std::string in_path = "PATH=" DOCS_PROGRAMS ":$PATH; export LC_ALL=C; ";
        write_text("commands", "{ " + command + "\n} 2>&1 </dev/null\n");
        return lines_of(run({"bash", "-c", in_path + shell_ + " commands"}).output);
    }

    void write_text(const std::string &name, const std::string &text)
    {
        write_file(name, {text.begin(), text.end()});
    }

    static Lines lines_of(const std::string &output)
    {
        std::istringstream text(output);
        Lines lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
        }
        return lines;
    }

    // Runs each command of a block; the lines up to the next one are what it says.
    void check(const Block &block, const std::string &document)
    {
        for (size_t i = 0; i < block.lines.size();) {
            const std::string command = block.lines[i].substr(2);
            Lines shown;
            for (++i; i < block.lines.size() && !is_command(block.lines[i]); ++i) {
                shown.push_back(block.lines[i]);
            }
            if (opens_board(command)) {
                shell_ = command;
            }
            const Lines real = run_in_shell(opens_board(command) ? "true" : command);
            const std::string wrong = difference(real, shown);
            EXPECT_EQ(wrong, "") << document << ": $ " << command << "\n" << joined(real);
        }
    }

    // Returns the number of blocks.
    int check_document(const std::string &name)
    {
        int blocks = 0;
        shell_ = "bash";
        for (const Block &block : blocks_of(read_document(name))) {
            if (shows_commands(block)) {
                ++blocks;
                check(block, name);
            }
        }
        return blocks;
    }

    std::string shell_; // runs a file of commands
};

TEST_F(Transcripts, are_what_the_commands_really_say)
{
    int blocks = 0;
    for (const std::string &name : document_names()) {
        blocks += check_document(name);
    }
    EXPECT_GE(blocks, 15);
}

TEST_F(Transcripts, draw_the_picture_that_readme_begins_with)
{
    check_document("README.md");
    const auto drawing = [](const std::string &picture) {
        return picture.substr(picture.find("<g id=")); // above are gnuplot's version and its pens
    };
    EXPECT_EQ(drawing(read_text("voltages.svg")),
              drawing(joined(read_document("docs/voltages.svg").lines)));
}

TEST(Elisions, stand_for_any_lines_and_for_parts_of_one)
{
    EXPECT_EQ(difference({"a", "b", "c"}, {"a", "...", "c"}), "");
    EXPECT_EQ(difference({"a", "b"}, {"..."}), "");
    EXPECT_EQ(difference({"one two three"}, {"one ... three"}), "");
    EXPECT_EQ(difference({"a", "c"}, {"a", "...", "c"}), "");
}

TEST(Elisions, hide_no_difference)
{
    EXPECT_NE(difference({"a", "b"}, {"a"}), "");
    EXPECT_NE(difference({"a"}, {"a", "b"}), "");
    EXPECT_NE(difference({"a", "b", "c"}, {"...", "b"}), "");
    EXPECT_NE(difference({"one two three"}, {"one ... four"}), "");
    EXPECT_NE(difference({"one two three"}, {"two ... three"}), "");
    EXPECT_NE(difference({"one one"}, {"one ... one two"}), "");
}

} // namespace
