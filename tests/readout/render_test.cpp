// Goal: every character that front ends see of a record is the one that they have always seen: odd
// labels and blanks, signs that CSV and labelled text show differently, and the order of fields.
#include "readout/render.hpp"
#include "tests/readout/golden_records.hpp"

#include <cstring>

using namespace stm;

namespace
{

struct Variant {
    const char *name;
    const RecordFormat &format;
    RecordKind kind;
};

const Variant VARIANTS[] = {
    {"base", STM_RECORD, RecordKind::base},
    {"omega", STM_RECORD_OMEGA, RecordKind::omega},
    {"temp", STM_RECORD_TEMP, RecordKind::temp},
};

std::string text_of(const RecordFormat &format, const Bytes &record)
{
    char memory[RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    render_record_text(format, record.data(), buffer);
    EXPECT_EQ(static_cast<size_t>(buffer.length), strlen(memory));
    return memory;
}

std::string csv_of(const RecordFormat &format, const Bytes &record)
{
    char memory[RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    render_record_csv(format, record.data(), buffer);
    EXPECT_EQ(static_cast<size_t>(buffer.length), strlen(memory));
    return memory;
}

bool contains(const std::string &text, const std::string &piece)
{
    return text.find(piece) != std::string::npos;
}

class Rendering : public testing::TestWithParam<Variant>
{
};

std::string variant_name(const testing::TestParamInfo<Variant> &info)
{
    return info.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, Rendering, testing::ValuesIn(VARIANTS), variant_name);

TEST_P(Rendering, labelled_text_is_the_one_of_old)
{
    for (const GoldenRecord &golden : golden_records(GetParam().kind)) {
        EXPECT_EQ(text_of(GetParam().format, golden.bytes), golden.text) << golden.what;
    }
}

TEST_P(Rendering, csv_line_is_the_one_of_old)
{
    for (const GoldenRecord &golden : golden_records(GetParam().kind)) {
        EXPECT_EQ(csv_of(GetParam().format, golden.bytes), golden.csv) << golden.what;
    }
}

TEST_P(Rendering, csv_header_is_the_one_of_old)
{
    char memory[RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    render_csv_header(GetParam().format, buffer);
    EXPECT_STREQ(memory, golden_header(GetParam().kind));
}

TEST_P(Rendering, goes_behind_what_the_buffer_holds)
{
    const GoldenRecord &golden = golden_records(GetParam().kind)[0];
    char memory[2 * RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    text_append(buffer, "before:");
    render_record_csv(GetParam().format, golden.bytes.data(), buffer);
    render_record_text(GetParam().format, golden.bytes.data(), buffer);
    render_csv_header(GetParam().format, buffer);
    EXPECT_EQ(std::string(memory),
              "before:" + golden.csv + golden.text + golden_header(GetParam().kind));
}

TEST_P(Rendering, checks_neither_marker_nor_checksum)
{
    Bytes bytes = golden_records(GetParam().kind)[0].bytes;
    bytes[0] = 0x00;
    bytes[bytes.size() - 2] = 0xFE;
    bytes[bytes.size() - 1] = 0xFF;
    EXPECT_TRUE(contains(text_of(GetParam().format, bytes), "stm_int8_t   checksum  : 65534\n\n"));
    EXPECT_TRUE(contains(csv_of(GetParam().format, bytes), ";65534;\n"));
}

TEST_P(Rendering, longest_line_has_room_in_the_link_s_message)
{
    for (const GoldenRecord &golden : golden_records(GetParam().kind)) {
        EXPECT_LT(golden.csv.size(), 255U) << golden.what;
    }
    EXPECT_LT(strlen(golden_header(GetParam().kind)), 255U);
}

// No labelled record is longer: each number has all its digits, and a sign where it can.
TEST(RenderingOfAnOmegaRecord, longest_has_528_characters)
{
    const std::string text = text_of(STM_RECORD_OMEGA, GOLDEN_OMEGA[3].bytes);
    EXPECT_EQ(text.size(), 528U);
    EXPECT_LT(text.size(), static_cast<size_t>(RECORD_TEXT_SIZE));
}

TEST(RenderingOfABaseRecord, BE1_and_BE2_have_32_bits_whatever_their_labels_say)
{
    const Bytes bytes =
        record(RecordKind::base, {{"nr", 1}, {"BE1", 0xFFFF0000}, {"BE2", 0x0001FFFF}});
    const std::string text = text_of(STM_RECORD, bytes);
    EXPECT_TRUE(contains(text, "\nstm_int16_t  BE1  : -65536\nstm_int16_t  BE2  : 131071\n"));
    EXPECT_TRUE(contains(csv_of(STM_RECORD, bytes), ";0;-65536;131071;0;"));
}

TEST(RenderingOfABaseRecord, reserved_bytes_are_not_shown)
{
    const Bytes plain = record(RecordKind::base, {{"nr", 7}});
    Bytes other = record(RecordKind::base, {{"nr", 7}, {"reserved", 0x1234}});
    other[54] = plain[54];
    other[55] = plain[55];
    EXPECT_EQ(text_of(STM_RECORD, other), text_of(STM_RECORD, plain));
    EXPECT_EQ(csv_of(STM_RECORD, other), csv_of(STM_RECORD, plain));
}

// The two renderings differ on these two fields, and only there.
TEST_P(Rendering, time_stamp_has_a_sign_in_text_alone)
{
    const Bytes bytes = record(GetParam().kind, {{"nr", 1}, {"rel_t", -2}, {"U1e", -2}});
    EXPECT_TRUE(contains(text_of(GetParam().format, bytes), "\nstm_int32_t  rel_t: -2\n\n"));
    EXPECT_TRUE(contains(text_of(GetParam().format, bytes), "\nstm_int32_t  U1e  : -2\n"));
    EXPECT_TRUE(contains(csv_of(GetParam().format, bytes), ";4294967294;-2;0;0;"));
}

TEST(RenderingOfTheExtension, has_a_sign_in_text_alone)
{
    const Bytes base = record(RecordKind::base, {{"nr", 1}, {"BE32_01_ext", 0x80000001}});
    const Bytes omega = record(RecordKind::omega, {{"nr", 1}, {"BE32_01_ext", 0x80000001}});
    const char label[] = "\nstm_uint32_t   BE32_01_ext   : -2147483647\n";
    EXPECT_TRUE(contains(text_of(STM_RECORD, base), label));
    EXPECT_TRUE(contains(text_of(STM_RECORD_OMEGA, omega), label));
    EXPECT_TRUE(contains(csv_of(STM_RECORD, base), ";2147483649;0;"));
    EXPECT_TRUE(contains(csv_of(STM_RECORD_OMEGA, omega), ";2147483649;0;"));
}

TEST(RenderingOfATemperature, is_called_omega_t_in_text_with_one_blank)
{
    const Bytes bytes = record(RecordKind::temp, {{"nr", 1}, {"temp", 40000}});
    EXPECT_TRUE(
        contains(text_of(STM_RECORD_TEMP, bytes), " 1\nstm_uint16_t omega_t : 40000\nstm_int32_t"));
}

TEST(RenderingOfARotationTime, has_two_blanks_in_its_label)
{
    const Bytes bytes = record(RecordKind::omega, {{"nr", 1}, {"omega_t", 40000}});
    EXPECT_TRUE(contains(text_of(STM_RECORD_OMEGA, bytes),
                         " 1\nstm_uint16_t  omega_t : 40000\nstm_int32_t"));
}
