// Goal: each text that the module prints is known for what it is, and lines that it does not print
// are passed on.
#include "stmctl/module/voice.hpp"
#include "tests/structure/source_literals.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <set>

using namespace stmctl;

namespace
{

// What perror prints for the module's text and this error.
std::string printed(const std::string &text, const char *reason)
{
    return text + ": " + reason + "\n";
}

Report only_report(const std::string &captured)
{
    const Reports reports = read_reports(captured);
    EXPECT_EQ(reports.failures.size(), 1U) << captured;
    EXPECT_EQ(reports.rest, "") << captured;
    return reports.failures.empty() ? Report{} : reports.failures[0];
}

void expect_heard(std::string_view text, Event event, long number = 0)
{
    EXPECT_EQ(hear(text).event, event) << text;
    EXPECT_EQ(hear(text).number, number) << text;
}

TEST(Voice, each_text_to_the_output_is_an_event)
{
    expect_heard("SPI timeout\n", Event::timed_out);
    expect_heard("Error stm_com_funcs: SPI timeout\n", Event::timed_out);
    expect_heard("Wrong checksum detected (crc = 1234, checksum= 1235)\n", Event::rejected);
    expect_heard("Wrong checksum detected (iCurrentBlockIndex = 46)\n", Event::rejected);
    expect_heard("Wrong checksum detected (expected: 1, received: 2\n", Event::rejected);
    expect_heard("Cannot open ringbuffer for write\n", Event::ring_refused);
    expect_heard("Error: Writing to ringbuffer\n", Event::slot_refused);
    expect_heard("SPI Bus inactive\n", Event::bus_inactive);
    expect_heard("Checksum error\n", Event::checksum_error);
    expect_heard("Address error\n", Event::address_error);
    expect_heard("Filesize: 507904 Byte\n", Event::image_begun, 507904);
    expect_heard("Transmitting datablock 12 (size: 0x0400, checksum: 0x1234)\n", Event::block_sent,
                 12);
    expect_heard("Transmitted data: 5000 Byte\n", Event::image_ended, 5000);
}

TEST(Voice, every_error_that_the_system_knows_ends_a_report)
{
    for (const int error : {EPERM, EREMOTEIO, ECANCELED, EHWPOISON}) {
        const Report report = only_report(printed("SPI command", strerror(error)));
        EXPECT_EQ(report.error, error);
        EXPECT_EQ(report.reason, strerror(error));
        EXPECT_EQ(report.text, "SPI command");
    }
}

TEST(Voice, data_is_not_an_event)
{
    for (const char *text : {"", "\n", "42\n", "SPI timeout", "SPI timeout\n\n", " SPI timeout\n",
                             "SPI time", "Checksum sent: 12AB\n", "wrong checksum detected\n",
                             "Transmitting information header (size: 0x1388, checksum: 0x0001)\n",
                             "Wrong ADC channel (9)\n", "stm_uint8_t  nr   : 1\n", "Filesize:"}) {
        expect_heard(text, Event::none);
    }
}

TEST(Voice, each_text_to_perror_has_its_sentence)
{
    struct Row {
        const char *text;
        const char *sentence;
    };
    for (const Row &row : {
             Row{"Error: stm_com_func: Can't open device \n", "cannot open /dev/spidev1.0"},
             Row{"Error: writing speed failed\n", "the device refused a clock of 6 MHz"},
             Row{"Error: stm_com_funcs: SPI datatransfer\n", "synchronising the link failed"},
             Row{"SPI command", "sending the command failed"},
             Row{"read data", "fetching the answer failed"},
             Row{"SPI wait for ACK", "asking for the acknowledgement failed"},
             Row{"SPI send header information", "sending the header failed"},
             Row{"SPI send data", "sending the data failed"},
             Row{"Error stm_com_funcs: SPI command \n", "sending the command failed"},
             Row{"Error stm_com_funcs: SPI wait for ACK\n",
                 "asking whether the answer is ready failed"},
             Row{"Error stm_com_funcs: SPI datasize \n", "fetching the answer failed"},
             Row{"SPI datatransfer", "fetching the data failed"},
             Row{"SPI datatransfer (wait)", "asking for the next block failed"},
             Row{"SPI datatransfer (ACK a)", "fetching the length of a block failed"},
             Row{"SPI datatransfer (ACK b)", "fetching the length of a block failed"},
             Row{"SPI datatransfer (1)", "fetching the data failed (1)"},
             Row{"SPI datatransfer (2)", "fetching the data failed (2)"},
             Row{"SPI datatransfer (3)", "fetching the data failed (3)"},
             Row{"SPI datatransfer (4)", "fetching the data failed (4)"},
             Row{"shmget (ringbuffer space)", "cannot get the ring's shared memory"},
             Row{"shmat (ringbuffer space)", "cannot attach the ring's shared memory"},
             Row{"shmctl (ringbuffer space)", "cannot inspect the ring's shared memory"},
         }) {
        const Report report = only_report(printed(row.text, "Input/output error"));
        EXPECT_EQ(report.error, EIO);
        EXPECT_EQ(report.sentence(), row.sentence + std::string(": Input/output error"));
    }
}

TEST(Voice, an_unknown_text_of_perror_is_its_own_sentence)
{
    EXPECT_EQ(only_report("SPI datatransfer (9): Input/output error\n").sentence(),
              "SPI datatransfer (9): Input/output error");
    EXPECT_EQ(only_report("a: b: Broken pipe\n").text, "a: b");
}

TEST(Voice, a_report_may_lack_its_newline)
{
    EXPECT_EQ(only_report("SPI command: Input/output error").sentence(),
              "sending the command failed: Input/output error");
    EXPECT_EQ(only_report("Error: writing speed failed\n: Invalid argument").text,
              "Error: writing speed failed");
}

TEST(Voice, a_report_in_two_lines_is_one)
{
    const Reports reports =
        read_reports("Error stm_com_funcs: SPI command \n: Input/output error\n"
                     "Error: stm_com_funcs: SPI datatransfer\n: No such device\n");
    ASSERT_EQ(reports.failures.size(), 2U);
    EXPECT_EQ(reports.failures[0].text, "Error stm_com_funcs: SPI command");
    EXPECT_EQ(reports.failures[0].error, EIO);
    EXPECT_EQ(reports.failures[1].text, "Error: stm_com_funcs: SPI datatransfer");
    EXPECT_EQ(reports.failures[1].error, ENODEV);
    EXPECT_EQ(reports.rest, "");
}

TEST(Voice, half_a_report_is_not_a_report)
{
    EXPECT_EQ(read_reports("Error: writing speed failed\n").rest, "Error: writing speed failed\n");
    EXPECT_EQ(read_reports("Error: writing speed failed\n").failures.size(), 0U);
    EXPECT_EQ(read_reports(": Input/output error\n").failures.size(), 1U);
    EXPECT_EQ(read_reports("").rest, "");
    EXPECT_EQ(read_reports("\n\n").rest, "\n\n");
}

TEST(Voice, other_lines_stay_whole_and_in_their_order)
{
    const Reports reports = read_reports("first\n"
                                         "SPI command: Input/output error\n"
                                         "second\n\nthird\n"
                                         "Error: writing speed failed\n: Invalid argument\n"
                                         "read data: Success\n"
                                         "last without an end");
    EXPECT_EQ(reports.rest, "first\nsecond\n\nthird\nread data: Success\nlast without an end");
    ASSERT_EQ(reports.failures.size(), 2U);
    EXPECT_EQ(reports.failures[0].text, "SPI command");
    EXPECT_EQ(reports.failures[1].text, "Error: writing speed failed");
}

TEST(Voice, errors_show_whether_the_device_is_gone)
{
    for (const char *reason : {"Cannot send after transport endpoint shutdown", "No such device",
                               "Bad file descriptor"}) {
        const Report report = only_report(printed("SPI command", reason));
        EXPECT_TRUE(report.is_device_gone()) << reason;
        EXPECT_EQ(report.sentence(), "sending the command failed: " + std::string(reason) +
                                         "; the device is gone, see stmctl --help access");
    }
    const Report failing = only_report("SPI command: Input/output error\n");
    const Report gone = only_report("SPI command: No such device\n");
    EXPECT_FALSE(failing.is_device_gone());
    EXPECT_FALSE(is_device_gone(std::vector<Report>{}));
    EXPECT_FALSE(is_device_gone({failing}));
    EXPECT_TRUE(is_device_gone({failing, gone}));
}

TEST(Voice, a_message_too_long_is_the_drivers_when_synchronising_and_a_length_later)
{
    const Report driver =
        only_report("Error: stm_com_funcs: SPI datatransfer\n: Message too long\n");
    EXPECT_FALSE(driver.is_length_refused());
    EXPECT_EQ(
        driver.sentence().find("synchronising the link failed: Message too long; the driver's "
                               "parameter bufsiz is "),
        0U);
    const Report length = only_report("SPI datatransfer: Message too long\n");
    EXPECT_TRUE(length.is_length_refused());
    EXPECT_EQ(length.sentence(), "fetching the data failed: Message too long");
    EXPECT_FALSE(only_report("SPI datatransfer: Input/output error\n").is_length_refused());
}

TEST(Voice, bufsiz_is_shown_where_it_is_known)
{
    const std::string rest = " and must be at least 4096, see stmctl --help access";
    EXPECT_EQ(bufsiz_words(512), "the driver's parameter bufsiz is 512" + rest);
    EXPECT_EQ(bufsiz_words({}), "the driver's parameter bufsiz is too small" + rest);
}

TEST(Voice, some_reports_are_known_by_their_meaning)
{
    EXPECT_TRUE(
        only_report("Error: writing speed failed\n: Invalid argument\n").is_refused_clock());
    EXPECT_FALSE(only_report("SPI command: Invalid argument\n").is_refused_clock());
    EXPECT_TRUE(only_report("SPI send data: Input/output error\n").is_block_not_sent());
    EXPECT_FALSE(only_report("SPI send header information: Broken pipe\n").is_block_not_sent());
}

// All texts that the module's sources pass to its two channels.
class VoiceOfSources : public testing::Test
{
  protected:
    // Data, and texts of operations that stmctl does not use or after operands that it does not
    // accept.
    const std::set<std::string> UNHEARD = {
        "%s",
        "Checksum sent: %X\n",
        "Transmitting information header (size: 0x%04hX, checksum: 0x%04hX)\n",
        "Wrong %s (%d)\n",
        "Error: RingBuffer_NewValueAvailable() (fd: %d)\n",
        "Timeout while reading ring buffer (buffer empty?)\n",
        "Error: RingBuffer_MarkLastValue()\n",
        "RingBuffer_GetFirstValue()\n",
        "Cannot open Ringbuffer for read\n",
        "nr   : %d\n",
        "rel_t: %ld\n",
        "count: %d\n",
        "\nlost sample:\n",
        "difference   : %d\n",
        "\nbuffer overflow:\n",
        "buffered: %d\n",
    };

    static bool is_perrors(const std::string &text)
    {
        const Reports reports = read_reports(printed(text, "Input/output error"));
        const Report &report = reports.failures.at(0);
        return report.sentence() != report.text + ": Input/output error";
    }

    static bool is_handed_on(const SourceLiteral &literal)
    {
        for (const char *call : {"report_errno(", "report_message(output,", "fail(", "die(",
                                 "fail(output,", "fail(handle,output,"}) {
            if (literal.before.ends_with(call)) {
                return true;
            }
        }
        return literal.text.starts_with("SPI "); // tables of texts
    }

    static std::vector<SourceLiteral> handed_on()
    {
        std::vector<SourceLiteral> all;
        for (const char *folder : {"link", "download", "acquisition", "readout", "ringbuffer"}) {
            for (const auto &file : std::filesystem::directory_iterator(
                     std::filesystem::path(STRUCTURE_SOURCE_ROOT) / folder)) {
                for (const SourceLiteral &literal : SourceLiterals(file.path()).all()) {
                    if (is_handed_on(literal)) {
                        all.push_back(literal);
                    }
                }
            }
        }
        return all;
    }
};

TEST_F(VoiceOfSources, each_text_is_known_or_known_to_be_none_of_stmctls)
{
    std::set<std::string> left = UNHEARD;
    std::set<std::string> found;
    for (const SourceLiteral &literal : handed_on()) {
        const std::string &text = literal.text;
        const bool known = hear(text).event != Event::none || is_perrors(text);
        EXPECT_EQ(known, UNHEARD.count(text) == 0) << text;
        left.erase(text);
        found.insert(text);
    }
    EXPECT_TRUE(left.empty()) << "nobody says any more: " << *left.begin();
    EXPECT_EQ(found.size(), 22U + 13U + UNHEARD.size());
}

TEST_F(VoiceOfSources, each_text_is_known_on_the_channel_where_it_comes)
{
    int perrors = 0;
    int messages = 0;
    for (const SourceLiteral &literal : handed_on()) {
        if (literal.before.ends_with("report_errno(")) {
            EXPECT_TRUE(is_perrors(literal.text)) << literal.text;
            ++perrors;
        } else if (literal.before.ends_with("report_message(output,")) {
            EXPECT_FALSE(is_perrors(literal.text)) << literal.text;
            ++messages;
        }
    }
    EXPECT_GE(perrors, 17);
    EXPECT_GE(messages, 21);
}

} // namespace
