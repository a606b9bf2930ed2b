// Goal: a slot holds every byte of the record that came, moved to its place there and nothing
// else, and is shown character by character as front ends have always seen it.
#include "readout/render.hpp"
#include "ringbuffer/ring_record.hpp"
#include "tests/platform/transcript.hpp"

#include <cstring>

using namespace stm;

namespace
{

Bytes slot_from(const uint8_t *wire)
{
    const RingRecord record = ring_record_from_wire(wire);
    Bytes bytes(sizeof(record));
    memcpy(bytes.data(), &record, sizeof(record));
    return bytes;
}

// What comes over the wire, and the slot that is made of it, byte by byte.
constexpr uint8_t WIRE[48] = {
    0x55, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B, 0x1C, 0x1D, 0x1E, 0x1F,
    0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F,
    0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x3D, 0xDD, 0xE1};
const Bytes SLOT = {0x55, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x1C, 0x1D, 0x1E, 0x1F,
                    0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x18, 0x19, 0x1A, 0x1B,
                    0x2C, 0x2D, 0x2E, 0x2F, 0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37,
                    0x28, 0x29, 0x2A, 0x2B, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x3D, 0xDD, 0xE1};

struct Golden {
    const char *what;
    uint8_t slot[48];
    const char *text;
    const char *csv;
};

constexpr Golden GOLDENS[] = {
    {"ordinary",
     {0x55, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B,
      0x1C, 0x1D, 0x1E, 0x1F, 0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27,
      0x28, 0x29, 0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F, 0x30, 0x31, 0x32, 0x33,
      0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x3D, 0xDD, 0xE1},
     "stm_uint8_t  nr   : 17\n"
     "stm_uint16_t omega_t: 4882\n"
     "stm_int32_t  rel_t: 387323156\n\n"
     "stm_int32_t  U1e  : 454695192\n"
     "stm_int32_t  U2e  : 522067228\n"
     "stm_int32_t  U3e  : 589439264\n"
     "stm_int32_t  Uen  : 656811300\n\n"
     "stm_int32_t  I1   : 724183336\n"
     "stm_int32_t  I2   : 791555372\n"
     "stm_int32_t  I3   : 858927408\n"
     "stm_int32_t  -Ie  : 926299444\n\n"
     "stm_int16_t  BE1  : 14648\n"
     "stm_int16_t  BE2  : 15162\n"
     "stm_int8_t   BE   : 60\n"
     "stm_uint8    buffered  : 61\n"
     "stm_int8_t   checksum  : 57821\n\n",
     "17;4882;387323156;454695192;522067228;589439264;656811300;724183336;791555372;858927408;"
     "926299444;14648;15162;60;61;57821;\n"},
    {"with the sign in every byte",
     {0x55, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9, 0xCA, 0xCB,
      0xCC, 0xCD, 0xCE, 0xCF, 0xD0, 0xD1, 0xD2, 0xD3, 0xD4, 0xD5, 0xD6, 0xD7,
      0xD8, 0xD9, 0xDA, 0xDB, 0xDC, 0xDD, 0xDE, 0xDF, 0xE0, 0xE1, 0xE2, 0xE3,
      0xE4, 0xE5, 0xE6, 0xE7, 0xE8, 0xE9, 0xEA, 0xEB, 0xEC, 0xED, 0x05, 0xEB},
     "stm_uint8_t  nr   : 193\n"
     "stm_uint16_t omega_t: 50114\n"
     "stm_int32_t  rel_t: -943274556\n\n"
     "stm_int32_t  U1e  : -875902520\n"
     "stm_int32_t  U2e  : -808530484\n"
     "stm_int32_t  U3e  : -741158448\n"
     "stm_int32_t  Uen  : -673786412\n\n"
     "stm_int32_t  I1   : -606414376\n"
     "stm_int32_t  I2   : -539042340\n"
     "stm_int32_t  I3   : -471670304\n"
     "stm_int32_t  -Ie  : -404298268\n\n"
     "stm_int16_t  BE1  : -5656\n"
     "stm_int16_t  BE2  : -5142\n"
     "stm_int8_t   BE   : 236\n"
     "stm_uint8    buffered  : 237\n"
     "stm_int8_t   checksum  : 60165\n\n",
     "193;50114;3351692740;-875902520;-808530484;-741158448;-673786412;-606414376;-539042340;"
     "-471670304;-404298268;-5656;-5142;236;237;60165;\n"},
    {"of the least values",
     {0x55, 0x80, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80,
      0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80,
      0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80,
      0x00, 0x00, 0x00, 0x80, 0x00, 0x80, 0x00, 0x80, 0x80, 0x80, 0x00, 0x80},
     "stm_uint8_t  nr   : 128\n"
     "stm_uint16_t omega_t: 32768\n"
     "stm_int32_t  rel_t: -2147483648\n\n"
     "stm_int32_t  U1e  : -2147483648\n"
     "stm_int32_t  U2e  : -2147483648\n"
     "stm_int32_t  U3e  : -2147483648\n"
     "stm_int32_t  Uen  : -2147483648\n\n"
     "stm_int32_t  I1   : -2147483648\n"
     "stm_int32_t  I2   : -2147483648\n"
     "stm_int32_t  I3   : -2147483648\n"
     "stm_int32_t  -Ie  : -2147483648\n\n"
     "stm_int16_t  BE1  : -32768\n"
     "stm_int16_t  BE2  : -32768\n"
     "stm_int8_t   BE   : 128\n"
     "stm_uint8    buffered  : 128\n"
     "stm_int8_t   checksum  : 32768\n\n",
     "128;32768;2147483648;-2147483648;-2147483648;-2147483648;-2147483648;-2147483648;-2147483648;"
     "-2147483648;-2147483648;-32768;-32768;128;128;32768;\n"},
    {"of the greatest values",
     {0x55, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F,
      0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F,
      0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F,
      0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0x7F, 0xFF, 0x7F, 0x7F, 0xFF, 0xFF, 0x7F},
     "stm_uint8_t  nr   : 255\n"
     "stm_uint16_t omega_t: 65535\n"
     "stm_int32_t  rel_t: 2147483647\n\n"
     "stm_int32_t  U1e  : 2147483647\n"
     "stm_int32_t  U2e  : 2147483647\n"
     "stm_int32_t  U3e  : 2147483647\n"
     "stm_int32_t  Uen  : 2147483647\n\n"
     "stm_int32_t  I1   : 2147483647\n"
     "stm_int32_t  I2   : 2147483647\n"
     "stm_int32_t  I3   : 2147483647\n"
     "stm_int32_t  -Ie  : 2147483647\n\n"
     "stm_int16_t  BE1  : 32767\n"
     "stm_int16_t  BE2  : 32767\n"
     "stm_int8_t   BE   : 127\n"
     "stm_uint8    buffered  : 255\n"
     "stm_int8_t   checksum  : 32767\n\n",
     "255;65535;2147483647;2147483647;2147483647;2147483647;2147483647;2147483647;2147483647;"
     "2147483647;2147483647;32767;32767;127;255;32767;\n"},
    {"of ones",
     {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
     "stm_uint8_t  nr   : 255\n"
     "stm_uint16_t omega_t: 65535\n"
     "stm_int32_t  rel_t: -1\n\n"
     "stm_int32_t  U1e  : -1\n"
     "stm_int32_t  U2e  : -1\n"
     "stm_int32_t  U3e  : -1\n"
     "stm_int32_t  Uen  : -1\n\n"
     "stm_int32_t  I1   : -1\n"
     "stm_int32_t  I2   : -1\n"
     "stm_int32_t  I3   : -1\n"
     "stm_int32_t  -Ie  : -1\n\n"
     "stm_int16_t  BE1  : -1\n"
     "stm_int16_t  BE2  : -1\n"
     "stm_int8_t   BE   : 255\n"
     "stm_uint8    buffered  : 255\n"
     "stm_int8_t   checksum  : 65535\n\n",
     "255;65535;4294967295;-1;-1;-1;-1;-1;-1;-1;-1;-1;-1;255;255;65535;\n"},
    {"of zeros",
     {},
     "stm_uint8_t  nr   : 0\n"
     "stm_uint16_t omega_t: 0\n"
     "stm_int32_t  rel_t: 0\n\n"
     "stm_int32_t  U1e  : 0\n"
     "stm_int32_t  U2e  : 0\n"
     "stm_int32_t  U3e  : 0\n"
     "stm_int32_t  Uen  : 0\n\n"
     "stm_int32_t  I1   : 0\n"
     "stm_int32_t  I2   : 0\n"
     "stm_int32_t  I3   : 0\n"
     "stm_int32_t  -Ie  : 0\n\n"
     "stm_int16_t  BE1  : 0\n"
     "stm_int16_t  BE2  : 0\n"
     "stm_int8_t   BE   : 0\n"
     "stm_uint8    buffered  : 0\n"
     "stm_int8_t   checksum  : 0\n\n",
     "0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;\n"},
};

using Render = void (*)(const RecordFormat &format, const uint8_t *record, TextBuffer &buffer);

std::string rendered(Render render, const uint8_t *slot)
{
    char memory[RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    render(STM_RING_RECORD, slot, buffer);
    return memory;
}

} // namespace

TEST(RingRecord, has_every_byte_of_the_wire_in_its_new_place)
{
    EXPECT_EQ(slot_from(WIRE), SLOT);
}

TEST(RingRecord, moves_bytes_with_their_signs)
{
    uint8_t wire[48];
    Bytes slot = SLOT;
    for (size_t i = 0; i < sizeof(wire); ++i) {
        wire[i] = WIRE[i] ^ 0x80;
        slot[i] ^= 0x80;
    }
    EXPECT_EQ(slot_from(wire), slot);
}

TEST(RingRecord, keeps_the_marker_that_came_whatever_it_is)
{
    uint8_t wire[48] = {};
    for (int marker = 0; marker <= 255; ++marker) {
        wire[0] = static_cast<uint8_t>(marker);
        EXPECT_EQ(slot_from(wire)[0], marker);
    }
}

TEST(RingRecord, keeps_the_checksum_that_came_right_or_wrong)
{
    uint8_t wire[48] = {};
    wire[46] = 0xCD;
    wire[47] = 0xAB;
    EXPECT_EQ(ring_record_from_wire(wire).checksum, 0xABCD);
    wire[20] = 1;
    EXPECT_EQ(ring_record_from_wire(wire).checksum, 0xABCD);
}

TEST(RingRecord, is_made_of_bytes_at_odd_addresses_too)
{
    uint8_t memory[49];
    memcpy(memory + 1, WIRE, sizeof(WIRE));
    EXPECT_EQ(slot_from(memory + 1), SLOT);
}

TEST(RingRecord, has_its_fields_by_name)
{
    const RingRecord record = ring_record_from_wire(WIRE);
    EXPECT_EQ(record.marker, 0x55);
    EXPECT_EQ(record.nr, 0x11);
    EXPECT_EQ(record.temp, 0x1312);
    EXPECT_EQ(record.rel_t, 0x17161514);
    EXPECT_EQ(record.U1e, 0x1F1E1D1C);
    EXPECT_EQ(record.U2e, 0x23222120);
    EXPECT_EQ(record.U3e, 0x27262524);
    EXPECT_EQ(record.Uen, 0x1B1A1918);
    EXPECT_EQ(record.I1, 0x2F2E2D2C);
    EXPECT_EQ(record.I2, 0x33323130);
    EXPECT_EQ(record.I3, 0x37363534);
    EXPECT_EQ(record.negIe, 0x2B2A2928);
    EXPECT_EQ(record.BE1, 0x3938);
    EXPECT_EQ(record.BE2, 0x3B3A);
    EXPECT_EQ(record.BE, 0x3C);
    EXPECT_EQ(record.buffered, 0x3D);
    EXPECT_EQ(record.checksum, 0xE1DD);
}

TEST(RingRecordText, is_the_one_of_old)
{
    for (const Golden &golden : GOLDENS) {
        EXPECT_EQ(rendered(render_record_text, golden.slot), golden.text) << golden.what;
    }
}

TEST(RingRecordText, shows_the_7_of_bytes_8_to_11_as_U1e)
{
    uint8_t slot[48] = {};
    slot[8] = 7;
    const std::string text = rendered(render_record_text, slot);
    EXPECT_NE(text.find("\nstm_int32_t  U1e  : 7\n"), std::string::npos);
    EXPECT_NE(text.find("\nstm_int32_t  Uen  : 0\n"), std::string::npos);
}

TEST(RingRecordCsv, is_the_one_of_old)
{
    for (const Golden &golden : GOLDENS) {
        EXPECT_EQ(rendered(render_record_csv, golden.slot), golden.csv) << golden.what;
    }
}

TEST(RingRecordCsv, header_has_the_temperature_under_its_own_name)
{
    char memory[RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    render_csv_header(STM_RING_RECORD, buffer);
    EXPECT_STREQ(memory, "\"nr\";\"temp\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";"
                         "\"I3\";\"negIe\";\"BE1\";\"BE2\";\"BE\";\"buffered\";\"checksum\";\n");
}

TEST(RingRecordBE, is_shown_without_a_sign_in_all_its_values)
{
    uint8_t slot[48] = {};
    for (int value = 0; value <= 255; ++value) {
        slot[44] = static_cast<uint8_t>(value);
        const std::string number = std::to_string(value);
        EXPECT_EQ(rendered(render_record_csv, slot),
                  "0;0;0;0;0;0;0;0;0;0;0;0;0;" + number + ";0;0;\n");
        EXPECT_NE(rendered(render_record_text, slot).find("\nstm_int8_t   BE   : " + number + "\n"),
                  std::string::npos);
    }
}
