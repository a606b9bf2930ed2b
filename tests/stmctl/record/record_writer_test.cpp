// Goal: what the module shows and records that come as numbers are written the same in each format.
#include "stmctl/record/record_writer.hpp"

#include "stmctl/process/failure.hpp"
#include "stmctl/record/record_csv.hpp"
#include "tests/stmctl/record/record_examples.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

using namespace stmctl;

namespace
{

const Columns &TEMP = columns_of(RecordKind::temp);

class Writer : public testing::Test
{
  protected:
    Writer() : path_(testing::TempDir() + "records-" + std::to_string(getpid())) {}
    ~Writer() override { std::filesystem::remove(path_); }

    // What is in the file after some work with a writer.
    template <typename Work>
    std::string written(Format format, bool timestamps, Work work)
    {
        Destination destination(path_);
        destination.begin();
        RecordWriter writer(format, timestamps, TEMP, destination);
        work(writer);
        writer.finish();
        destination.finish();
        std::ostringstream text;
        text << std::ifstream(path_).rdbuf();
        return text.str();
    }

    std::string taken(Format format, const std::vector<std::string> &texts)
    {
        return written(format, false, [&](RecordWriter &writer) {
            for (const std::string &text : texts) {
                writer.take(text);
            }
        });
    }

    static Record record() { return *record_of_csv(TEMP, TEMP_LINE); }

  private:
    std::string path_;
};

TEST_F(Writer, passes_on_lines_of_csv_after_a_header_of_its_own)
{
    EXPECT_EQ(taken(Format::csv, {LIVE_TEMP_HEADER, TEMP_LINE, TEMP_LINE}),
              std::string(TEMP_HEADER) + TEMP_LINE + TEMP_LINE);
}

TEST_F(Writer, writes_a_header_once_even_if_the_module_shows_it_again)
{
    EXPECT_EQ(taken(Format::csv, {TEMP_HEADER, TEMP_LINE, TEMP_HEADER, TEMP_LINE}),
              std::string(TEMP_HEADER) + TEMP_LINE + TEMP_LINE);
}

TEST_F(Writer, turns_lines_of_csv_into_objects)
{
    const std::string objects = taken(Format::jsonl, {TEMP_HEADER, TEMP_LINE, TEMP_LINE});
    const std::string object =
        R"({"nr":7,"temp":2350,"rel_t":1234,"U1e":100,"U2e":200,"U3e":300,"Uen":-600,"I1":10,)"
        R"("I2":20,"I3":30,"negIe":-60,"BE1":1,"BE2":2,"BE":-3,"buffered":17,"checksum":513})"
        "\n";
    EXPECT_EQ(objects, object + object);
}

TEST_F(Writer, passes_on_text_and_hex)
{
    EXPECT_EQ(taken(Format::text, {TEMP_TEXT, TEMP_TEXT}), std::string(TEMP_TEXT) + TEMP_TEXT);
    EXPECT_EQ(taken(Format::hex, {"Received value: \n0x55 \n"}), "Received value: \n0x55 \n");
}

TEST_F(Writer, writes_records_that_come_as_numbers_as_the_module_shows_them)
{
    const auto take_record = [](RecordWriter &writer) {
        writer.begin();
        writer.take(record());
        writer.take(record());
    };
    EXPECT_EQ(written(Format::text, false, take_record), std::string(TEMP_TEXT) + TEMP_TEXT);
    EXPECT_EQ(written(Format::csv, false, take_record),
              std::string(TEMP_HEADER) + TEMP_LINE + TEMP_LINE);
    EXPECT_EQ(written(Format::jsonl, false, take_record),
              taken(Format::jsonl, {TEMP_HEADER, TEMP_LINE, TEMP_LINE}));
}

TEST_F(Writer, puts_the_time_first)
{
    const auto take_both = [](RecordWriter &writer) {
        writer.take(TEMP_HEADER);
        writer.take(TEMP_LINE);
        writer.take(record());
    };
    std::istringstream csv(written(Format::csv, true, take_both));
    std::string line;
    std::getline(csv, line);
    EXPECT_EQ(line + '\n', std::string("\"time\";") + TEMP_HEADER);
    while (std::getline(csv, line)) {
        EXPECT_EQ(line.substr(17) + '\n', std::string(";") + TEMP_LINE);
    }
    std::istringstream jsonl(written(Format::jsonl, true, take_both));
    while (std::getline(jsonl, line)) {
        EXPECT_EQ(line.substr(0, 8), "{\"time\":");
        EXPECT_EQ(line.substr(25, 15), ",\"nr\":7,\"temp\":");
    }
}

TEST_F(Writer, returns_the_facts_of_what_it_writes)
{
    written(Format::csv, false, [](RecordWriter &writer) {
        EXPECT_FALSE(writer.take(TEMP_HEADER));
        EXPECT_EQ(writer.take(TEMP_LINE)->rel_t, 1234U);
    });
    written(Format::jsonl, false,
            [](RecordWriter &writer) { EXPECT_EQ(writer.take(TEMP_LINE)->buffered, 17U); });
    written(Format::text, false,
            [](RecordWriter &writer) { EXPECT_EQ(writer.take(TEMP_TEXT)->rel_t, 1234U); });
    written(Format::hex, false,
            [](RecordWriter &writer) { EXPECT_FALSE(writer.take("0x55 \n")->known); });
}

TEST_F(Writer, refuses_what_is_not_a_record)
{
    EXPECT_THROW(taken(Format::csv, {"7;2350;\n"}), Failure);
    EXPECT_THROW(taken(Format::csv, {TEMP_TEXT}), Failure);
    EXPECT_THROW(taken(Format::csv, {BASE_HEADER}), Failure);
    EXPECT_THROW(taken(Format::jsonl, {OMEGA_LINE}), Failure);
    EXPECT_THROW(taken(Format::text, {TEMP_LINE}), Failure);
    EXPECT_THROW(taken(Format::text, {""}), Failure);
}

TEST_F(Writer, tells_the_first_line_of_what_it_refuses)
{
    const auto expect_told = [&](Format format, const std::string &text, const std::string &why) {
        try {
            taken(format, {text});
            ADD_FAILURE() << "not refused: " << text;
        } catch (const Failure &failure) {
            EXPECT_EQ(failure.what(), why);
            EXPECT_EQ(failure.status(), ExitStatus::failed);
        }
    };
    const std::string rest = "', which is not a record of this kind";
    expect_told(Format::text, "one\x1B\ntwo\n", "the module printed 'one\\x1B" + rest);
    expect_told(Format::csv, "7;2350;\n8;\n", "the module printed '7;2350;" + rest);
    expect_told(Format::csv, BASE_HEADER, "the module's records have unexpected columns");
}

} // namespace
