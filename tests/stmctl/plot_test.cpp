// plot: a CSV as a picture or in the terminal; nothing in it becomes a command to gnuplot.
#include "tests/stmctl/record_bench.hpp"

#include <csignal>

namespace
{

class Plot : public RecordBench
{
  protected:
    // With a program of our own in the place of gnuplot.
    Result plot_by(const Words &gnuplot, const Words &arguments)
    {
        Words lines = {"#!/bin/sh"};
        lines.insert(lines.end(), gnuplot.begin(), gnuplot.end());
        write_lines("gnuplot", lines);
        std::filesystem::permissions(path("gnuplot"), std::filesystem::perms::owner_all);
        Words words = directly({"PATH=" + path("") + ":/usr/bin:/bin"}, {program(), "plot"});
        words.insert(words.end(), arguments.begin(), arguments.end());
        return run(words);
    }

    void SetUp() override
    {
        // NOLINTNEXTLINE(cert-env33-c): words of our own
        if (std::system("gnuplot --version >/dev/null 2>&1") != 0) {
            GTEST_SKIP() << "gnuplot is not installed";
        }
        says({"records", "-n", "90", "--format", "csv", "-o", "records.csv"});
    }

    Result plot(const Words &arguments, const std::string &behind = "")
    {
        Words words = directly({}, {program(), "plot"});
        words.insert(words.end(), arguments.begin(), arguments.end());
        return run({"bash", "-c", quoted(words) + behind});
    }

    void write_lines(const std::string &name, const Words &lines) const
    {
        const std::string text = joined(lines);
        write_file(name, Bytes(text.begin(), text.end()));
    }
};

TEST_F(Plot, in_the_terminal)
{
    const Result result = plot({"records.csv"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    for (const char *words : {"U1e", "U2e", "U3e", "rel_t", "***", "300000"}) {
        EXPECT_NE(result.output.find(words), std::string::npos) << result.output;
    }
    EXPECT_EQ(result.output[0], ' ') << "no new page";
    EXPECT_EQ(plot({}, "<records.csv").output, result.output);
    EXPECT_EQ(plot({"-"}, "<records.csv").output, result.output);
}

TEST_F(Plot, as_a_picture_by_the_name_of_the_file)
{
    EXPECT_EQ(plot({"records.csv", "-o", "a.png"}).status, 0);
    EXPECT_EQ(read_text("a.png").substr(1, 3), "PNG");
    EXPECT_EQ(plot({"records.csv", "--output", "b.png"}).status, 0);
    EXPECT_TRUE(read_file("b.png") == read_file("a.png"));
    EXPECT_EQ(plot({"records.csv", "-o", "A.SVG", "--columns", "I1,negIe"}).status, 0);
    const std::string svg = read_text("A.SVG");
    EXPECT_NE(svg.find("<svg"), std::string::npos);
    EXPECT_NE(svg.find("negIe"), std::string::npos);
    EXPECT_NE(svg.find("</svg>"), std::string::npos) << "whole";
    expect_failure(plot({"records.csv", "-o", "a.jpg"}), 2,
                   "'a.jpg': the name of a picture must end in .png or .svg");
    expect_failure(plot({"records.csv", "-o", "no/a.png"}), 1,
                   "cannot write 'no/a.png': No such file or directory");
    expect_failure(plot({"records.csv"}, ">/dev/full"), 1,
                   "cannot write the output: No space left on device");
    std::filesystem::create_symlink("/dev/full", path("full.svg"));
    expect_failure(plot({"records.csv", "-o", "full.svg"}), 1,
                   "cannot write 'full.svg': No space left on device");
}

TEST_F(Plot, values_that_are_all_the_same_are_drawn_without_a_warning)
{
    write_lines("one.csv", {"\"rel_t\";\"U1e\";", "7;1;"});
    write_lines("same.csv", {"\"rel_t\";\"U1e\";", "7;1;", "8;1;"});
    write_lines("above.csv", {"\"rel_t\";\"U1e\";", "7;900;", "8;900;"});
    for (const char *file : {"one.csv", "same.csv", "above.csv"}) {
        const Result result = plot({file, "--columns", "U1e"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        EXPECT_NE(result.output, "");
    }
}

TEST_F(Plot, what_cannot_be_drawn_is_reported)
{
    expect_failure(plot({"missing.csv"}), 1,
                   "cannot read 'missing.csv': No such file or directory");
    expect_failure(plot({"."}), 1, "cannot read '.': Is a directory");
    expect_failure(plot({}, "</dev/null"), 1, "standard input: it is empty");
    expect_failure(plot({"-"}, "</dev/null"), 1, "standard input: it is empty");
    write_lines("header.csv", {"\"rel_t\";\"U1e\";"});
    expect_failure(plot({"header.csv", "--columns", "U1e"}), 1, "header.csv: it holds no records");
    expect_failure(plot({"header.csv", "--columns", "U9e"}), 1,
                   "header.csv: no column 'U9e'; the columns are rel_t,U1e");
    write_lines("text.txt", {"stm_uint8_t  nr   : 1"});
    expect_failure(plot({"text.txt"}), 1,
                   "text.txt: not a CSV with a header as --format csv writes it");
    write_lines("bad.csv", {"\"U1e\";", "5;", "x5;"});
    expect_failure(plot({"bad.csv", "--columns", "U1e"}), 1,
                   "bad.csv: line 3: 'x5' is not a number");
    write_lines("tail.csv", {"\"U1e\";", "5x;"});
    expect_failure(plot({"tail.csv", "--columns", "U1e"}), 1,
                   "tail.csv: line 2: '5x' is not a number");
    write_lines("quote.csv", {"\"", "1;"});
    expect_failure(plot({"quote.csv"}), 1, "quote.csv: no column 'U1e'; the columns are \"");
    write_lines("short.csv", {"\"nr\";\"U1e\";", "1;2;", "1;"});
    expect_failure(plot({"short.csv", "--columns", "U1e"}), 1,
                   "short.csv: line 3: '' is not a number");
    write_lines("nan.csv", {"\"U1e\";", "nan;", "1;"});
    expect_failure(plot({"nan.csv", "--columns", "U1e"}), 1,
                   "nan.csv: line 2: 'nan' is not a number");
    write_lines("control.csv", {"\"U1e\";", "5;", "\x1B[2J;"});
    expect_failure(plot({"control.csv", "--columns", "U1e"}), 1,
                   "control.csv: line 3: '\\x1B[2J' is not a number");
    write_lines("delete.csv", {"\"U1e\";", "\x7F;"});
    expect_failure(plot({"delete.csv", "--columns", "U1e"}), 1,
                   "delete.csv: line 2: '\\x7F' is not a number");
    expect_failure(plot({"records.csv", "--columns", "U1e,,I1"}), 2,
                   "--columns must be names separated by commas, not 'U1e,,I1'");
}

TEST_F(Plot, nothing_in_the_data_is_a_command_to_gnuplot)
{
    const std::string evil = "'.system('touch evil').'$data `touch evil` @x {/Bold x}_1";
    write_lines("evil.csv", {"\"" + evil + "\";\"x'y\";", "1;2;", "3;4;"});
    Words words = directly({}, {program(), "plot", "evil.csv", "--columns"});
    words.push_back(evil);
    const Result result = run(words);
    EXPECT_EQ(result.status, 0) << result.errors;
    words.insert(words.end(), {"-o", "|touch evil;.svg"});
    EXPECT_EQ(run(words).status, 0);
    EXPECT_TRUE(std::filesystem::exists(path("|touch evil;.svg")));
    EXPECT_FALSE(std::filesystem::exists(path("evil")));
}

TEST_F(Plot, without_gnuplot_it_says_what_to_install)
{
    Words words = directly({"PATH=/nowhere"}, {program(), "plot", "records.csv"});
    expect_failure(run(words), 1,
                   "plot needs gnuplot, which is not installed: install the package gnuplot-nox, "
                   "or gnuplot");
}

TEST_F(Plot, a_stream_can_be_piped_into_it)
{
    const Result result = in_shell({"follow", "-n", "90", "--format", "csv"},
                                   "2>/dev/null | " + quoted(directly({}, {program(), "plot"})));
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("U3e"), std::string::npos);
}

TEST_F(Plot, lines_may_end_as_on_other_systems)
{
    write_lines("plain.csv", {"\"rel_t\";\"U1e\";", "1;2;", "3;4;"});
    write_lines("other.csv", {"\"rel_t\";\"U1e\"\r", "1;2\r", "3;4\r"});
    const Result result = plot({"other.csv", "--columns", "U1e"});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output, plot({"plain.csv", "--columns", "U1e"}).output);
}

TEST_F(Plot, without_rel_t_lines_are_counted)
{
    write_lines("lines.csv", {"\"U1e\";", "5;", "6;"});
    const std::string lines = plot({"lines.csv", "--columns", "U1e"}).output;
    EXPECT_NE(lines.find(" line "), std::string::npos) << lines;
    EXPECT_NE(lines.find(" 1.2 "), std::string::npos) << lines;
    write_lines("times.csv", {"\"rel_t\";\"U1e\";", "700;5;", "800;6;"});
    const std::string times = plot({"times.csv", "--columns", "U1e"}).output;
    EXPECT_NE(times.find(" rel_t "), std::string::npos) << times;
    EXPECT_NE(times.find("700 "), std::string::npos) << times;
}

TEST_F(Plot, the_only_column_is_drawn_without_being_named)
{
    says({"adc", "--format", "csv", "-o", "frame.csv"});
    const std::string frame = plot({"frame.csv"}).output;
    EXPECT_NE(frame.find(" value ***"), std::string::npos) << frame;
    EXPECT_NE(frame.find(" line "), std::string::npos);
    EXPECT_EQ(plot({"frame.csv", "--columns", "value"}).output, frame);
    says({"adc", "-n", "2", "--format", "csv", "--timestamps", "-o", "frames.csv"});
    EXPECT_NE(plot({"frames.csv"}).output.find(" value ***"), std::string::npos);
    write_lines("two.csv", {"\"U1e\";\"value\";", "5;6;"});
    expect_failure(plot({"two.csv"}), 1, "two.csv: no column 'U2e'; the columns are U1e,value");
}

TEST_F(Plot, every_separator_is_understood)
{
    const std::string drawn = plot({"records.csv"}).output;
    for (const char *separator : {",", ";", "tab"}) {
        says({"records", "-n", "90", "--format", "csv", "--separator", separator, "-o", "other"});
        EXPECT_EQ(plot({"other"}).output, drawn) << separator;
    }
}

TEST_F(Plot, an_existing_picture_is_kept_if_the_user_says_so)
{
    write_lines("a.svg", {"old"});
    expect_failure(plot({"records.csv", "-o", "a.svg", "--no-clobber"}), 1,
                   "'a.svg' already exists; --no-clobber keeps it");
    EXPECT_EQ(read_text("a.svg"), "old\n");
    EXPECT_EQ(plot({"records.csv", "-o", "b.svg", "--no-clobber"}).status, 0);
    expect_failure(plot({"records.csv", "--no-clobber"}), 2, "--no-clobber requires -o PICTURE");
}

TEST_F(Plot, fits_a_terminal)
{
    std::istringstream lines(plot({"records.csv"}).output);
    size_t count = 0;
    size_t longest = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        longest = std::max(longest, line.size());
    }
    EXPECT_EQ(count, 23U);
    EXPECT_EQ(longest, 79U);
}

TEST_F(Plot, a_png_has_its_size)
{
    EXPECT_EQ(plot({"records.csv", "-o", "a.png"}).status, 0);
    const Bytes picture = read_file("a.png");
    EXPECT_EQ(Bytes(picture.begin() + 16, picture.begin() + 24),
              (Bytes{0, 0, 0x04, 0xB0, 0, 0, 0x02, 0x58}));
}

TEST_F(Plot, a_failing_gnuplot_is_reported_and_no_picture_made)
{
    for (const char *gnuplot : {"cat >/dev/null", "cat; exit 1", "cat; kill -9 $$"}) {
        write_lines("gnuplot", {"#!/bin/sh", gnuplot});
        std::filesystem::permissions(path("gnuplot"), std::filesystem::perms::owner_all);
        Words words = directly({"PATH=" + path("") + ":/usr/bin:/bin"},
                               {program(), "plot", "records.csv", "-o", "a.svg"});
        expect_failure(run(words), 1, "gnuplot failed");
        EXPECT_FALSE(std::filesystem::exists(path("a.svg"))) << gnuplot;
    }
}

TEST_F(Plot, a_gnuplot_that_is_not_really_there_is_told_as_one_that_is_missing)
{
    expect_failure(plot_by({"cat >/dev/null", "exit 127"}, {"records.csv"}), 1,
                   "plot needs gnuplot, which is not installed: install the package gnuplot-nox, "
                   "or gnuplot");
    expect_failure(plot_by({"cat >/dev/null", "exit 126"}, {"records.csv"}), 1, "gnuplot failed");
}

TEST_F(Plot, a_gnuplot_that_cannot_be_run_is_told_with_the_reason)
{
    if (TOOL_EMULATOR[0] != '\0') {
        GTEST_SKIP() << "an emulator reports a program that cannot be run as one that failed";
    }
    write_lines("gnuplot", {"#!/nowhere"});
    std::filesystem::permissions(path("gnuplot"), std::filesystem::perms::owner_read);
    Words words = directly({"PATH=" + path("")}, {program(), "plot", "records.csv"});
    expect_failure(run(words), 1, "cannot run gnuplot: Permission denied");
}

TEST_F(Plot, gnuplot_gets_the_rows_and_how_they_are_drawn)
{
    write_lines("rows.csv", {"\"rel_t\";\"U1e\";\"I1\";", "7;1;-5;", "9;2.5;3;"});
    const Words gnuplot = {"cat >script", "printf '\\f drawn\\n'"};
    const Result result = plot_by(gnuplot, {"rows.csv", "--columns", "I1,U1e"});
    EXPECT_EQ(result.output, " drawn\n") << "no form feed";
    EXPECT_EQ(read_text("script"), "set terminal dumb size 79,23\n"
                                   "set grid\n"
                                   "set key outside top center horizontal\n"
                                   "set xlabel 'rel_t' noenhanced\n"
                                   "$data << END\n"
                                   "7 -5 1\n"
                                   "9 3 2.5\n"
                                   "END\n"
                                   "plot $data using 1:2 with lines title 'I1' noenhanced, $data "
                                   "using 1:3 with lines title 'U1e' noenhanced\n");
    EXPECT_EQ(plot_by(gnuplot, {"rows.csv", "--columns", "U1e", "-o", "a.png"}).output, "");
    EXPECT_TRUE(read_text("script").starts_with("set terminal png size 1200,600\n"));
    EXPECT_EQ(read_text("a.png"), " drawn\n");
    plot_by(gnuplot, {"rows.csv", "--columns", "U1e", "-o", "a.svg"});
    EXPECT_TRUE(
        read_text("script").starts_with("set terminal svg size 1200,600 background 'white'\n"));
}

TEST_F(Plot, a_range_of_one_value_is_widened_by_one_on_each_side)
{
    write_lines("rows.csv", {"\"rel_t\";\"U1e\";\"I1\";", "7;900;0;", "7;900;1;"});
    const Words gnuplot = {"cat >script", "echo drawn"};
    plot_by(gnuplot, {"rows.csv", "--columns", "U1e"});
    EXPECT_TRUE(read_text("script").starts_with("set xrange [6:8]\nset yrange [899:901]\nset t"));
    plot_by(gnuplot, {"rows.csv", "--columns", "U1e,I1"});
    EXPECT_TRUE(read_text("script").starts_with("set xrange [6:8]\nset terminal "));
    for (const Words &rows : {Words{"7;5;", "9;3;"}, Words{"9;3;", "7;5;"}}) {
        write_lines("rows.csv", {"\"rel_t\";\"U1e\";", rows[0], rows[1]});
        plot_by(gnuplot, {"rows.csv", "--columns", "U1e"});
        EXPECT_TRUE(read_text("script").starts_with("set terminal ")) << rows[0];
    }
}

// More rows than a pipe holds: what is left of them has no reader.
TEST_F(Plot, a_gnuplot_that_ends_before_it_has_read_everything_is_waited_for)
{
    Words rows = {"\"U1e\";"};
    rows.resize(20'000, "12345;");
    write_lines("rows.csv", rows);
    expect_failure(plot_by({"exit 1"}, {"rows.csv", "--columns", "U1e"}), 1, "gnuplot failed");
    EXPECT_EQ(plot_by({"echo drawn"}, {"rows.csv", "--columns", "U1e"}).output, "drawn\n");
}

// Signals 13 and 25, which stmctl itself ignores: a shell would leave them ignored, too.
TEST_F(Plot, gnuplot_handles_a_closed_pipe_and_a_full_disk_as_usual)
{
    write_lines("gnuplot", {"#!/bin/sh", "cat >/dev/null", "grep SigIgn /proc/self/status"});
    std::filesystem::permissions(path("gnuplot"), std::filesystem::perms::owner_all);
    const Result result =
        run(directly({"PATH=" + path("") + ":/usr/bin:/bin"}, {program(), "plot", "records.csv"}));
    ASSERT_TRUE(result.output.starts_with("SigIgn:")) << result.output;
    const uint64_t ignored = std::stoull(result.output.substr(sizeof("SigIgn:") - 1), nullptr, 16);
    EXPECT_EQ(ignored & (uint64_t{1} << (SIGPIPE - 1)), 0U);
    EXPECT_EQ(ignored & (uint64_t{1} << (SIGXFSZ - 1)), 0U);
}

// A terminal sends Ctrl-C to the whole group of stmctl.
TEST_F(Plot, gnuplot_is_in_a_group_of_its_own)
{
    write_lines("gnuplot", {"#!/bin/sh", "cat >/dev/null",
                            "read -r id name state parent group rest </proc/$$/stat",
                            "[ \"$group\" = $$ ] && echo its own || echo that of others"});
    std::filesystem::permissions(path("gnuplot"), std::filesystem::perms::owner_all);
    const Result result =
        run(directly({"PATH=" + path("") + ":/usr/bin:/bin"}, {program(), "plot", "records.csv"}));
    EXPECT_EQ(result.output, "its own\n");
}

TEST_F(Plot, the_users_set_up_for_other_plots_has_no_effect)
{
    write_lines(".gnuplot", {"set title 'MINE'"});
    Words words = directly({"HOME=" + path("")}, {program(), "plot", "records.csv"});
    const Result result = run(words);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output.find("MINE"), std::string::npos);
}

} // namespace
