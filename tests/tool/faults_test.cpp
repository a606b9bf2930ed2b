// update in front of a board on which something goes wrong.
#include "tests/tool/workbench.hpp"

namespace
{

class Fault : public Workbench
{
  protected:
    // Loads an image of five blocks. The texts before the fault are those of a download without it.
    void expect(const std::string &fault, size_t good_lines, const std::string &rest,
                const std::string &errors = "")
    {
        write_file("image.bin", noise(5000, 9));
        const Result good = update({"-firmware", "image.bin"});
        const Result bad = update_with({"--fault", fault}, {"-firmware", "image.bin"});
        EXPECT_EQ(bad.status, 0);
        EXPECT_EQ(bad.output, first_lines(good.output, good_lines) +
                                  with_checksum(rest, good.output, good_lines));
        EXPECT_EQ(bad.errors, errors);
    }

    static std::string first_lines(const std::string &text, size_t count)
    {
        size_t end = 0;
        while (count-- > 0) {
            end = text.find('\n', end) + 1;
        }
        return text.substr(0, end);
    }

    // Puts the checksum that the last of the good lines shows in place of a *.
    static std::string with_checksum(std::string text, const std::string &output, size_t lines)
    {
        const size_t star = text.find('*');
        if (star != std::string::npos) {
            const std::string before = first_lines(output, lines);
            const std::string digits = before.substr(before.rfind("0x") + 2, 4);
            text.replace(star, 1, digits.substr(digits.find_first_not_of('0')));
        }
        return text;
    }
};

// Lines of a good download: size, header, block 0 to block 4, total.

TEST_F(Fault, inactive_bus_ends_a_download_at_once)
{
    expect("bus-inactive", 0, "SPI Bus inactive\n");
    expect("bus-inactive@mode", 0, "SPI Bus inactive\n");
    expect("bus-inactive@header", 2, "SPI Bus inactive\nChecksum sent: *\n");
    expect("bus-inactive@3", 6, "SPI Bus inactive\nChecksum sent: *\n");
}

TEST_F(Fault, silence_ends_a_download_in_a_timeout)
{
    expect("silence", 0, "SPI timeout\n");
    expect("silence@mode", 0, "SPI timeout\n");
    expect("silence@header", 2, "SPI timeout\nChecksum sent: *\n");
    expect("silence@0", 3, "SPI timeout\nChecksum sent: *\n");
    EXPECT_EQ(transcript().size(), 1U + 2U + 2U + 1U + 1501U);
}

TEST_F(Fault, checksum_error_ends_a_download_at_its_frame)
{
    expect("checksum-error@mode", 0, "Checksum error\n");
    expect("checksum-error@header", 2, "Checksum error\nChecksum sent: *\n");
    expect("checksum-error@3", 6, "Checksum error\nChecksum sent: *\n");
    EXPECT_EQ(flash(16384 + 3 * 1024, 1024), Bytes(1024, 0xFF));
    EXPECT_NE(flash(16384 + 2 * 1024, 1024), Bytes(1024, 0xFF));
}

TEST_F(Fault, address_error_ends_a_download_at_its_frame)
{
    expect("address-error@mode", 0, "Address error\n");
    expect("address-error@header", 2, "Address error\nChecksum sent: *\n");
    expect("address-error@4", 7, "Address error\nChecksum sent: *\n");
}

TEST_F(Fault, odd_status_from_f2_to_fe_passes_as_an_acknowledge)
{
    for (const char *fault : {"status@mode=0xF2", "status@header=0xFE", "status@2=247"}) {
        expect(fault, 8, "");
        EXPECT_EQ(flash(16384, 5000), read_file("image.bin"));
    }
}

TEST_F(Fault, odd_status_below_f0_is_no_answer)
{
    expect("status@1=0xEF", 4, "SPI timeout\nChecksum sent: *\n");
    expect("status@1=0x54", 4, "SPI timeout\nChecksum sent: *\n");
}

TEST_F(Fault, acknowledge_is_in_time_with_the_1500th_poll_and_too_late_with_the_1501st)
{
    expect("late@header=1499", 8, "");
    expect("late@header=1500", 2, "SPI timeout\nChecksum sent: *\n");
    expect("late=20", 8, "");
}

TEST_F(Fault, failing_exchange_is_reported_in_the_words_of_its_step)
{
    const std::string error = ": Input/output error\n";
    expect("exchange@2", 0, "", "SPI command" + error);
    expect("exchange@3", 0, "", "SPI wait for ACK" + error);
    expect("exchange@4", 2, "", "SPI send header information" + error);
    expect("exchange@5", 2, "Checksum sent: *\n", "SPI wait for ACK" + error);
    expect("exchange@6", 2, "", "SPI send data" + error);
    expect("exchange@7=ESHUTDOWN", 3, "Checksum sent: *\n",
           "SPI wait for ACK: Cannot send after transport endpoint shutdown\n");
    expect("exchange@10=110", 4, "", "SPI send data: Connection timed out\n");
}

TEST_F(Fault, refused_clock_does_not_keep_an_image_from_arriving)
{
    expect("speed-refused", 8, "", "Error: writing speed failed\n: Invalid argument\n");
    EXPECT_EQ(flash(16384, 5000), read_file("image.bin"));
}

TEST_F(Fault, missing_device_is_told_before_a_missing_image)
{
    const Result result = update_with({"--fault", "no-device"}, {"-firmware", "no.bin"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "Error: stm_com_func: Can't open device \n: No such file or directory\n");
}

TEST_F(Fault, the_same_fault_gives_the_same_dialogue_every_time)
{
    write_file("image.bin", noise(5000, 9));
    const Words options = {"--fault", "late@2=7", "--fault", "checksum-error@3"};
    update_with(options, {"-firmware", "image.bin"});
    const std::string once = read_text(".transcript");
    update_with(options, {"-firmware", "image.bin"});
    EXPECT_EQ(read_text(".transcript"), once);
}

} // namespace
