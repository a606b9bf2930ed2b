// Goal: the formats are those of the co-processor's records, a format that does not cover its
// record does not compile, and no flipped bit passes the checksum.
#include "readout/render.hpp"
#include "tests/readout/golden_records.hpp"

using namespace stm;

namespace
{

using enum Wire;

constexpr RecordField field(int32_t offset, Wire wire)
{
    return {"label: ", "name", offset, wire};
}

constexpr RecordFormat format(int32_t size, std::span<const RecordField> fields,
                              int32_t reserved_at)
{
    return {size, fields, reserved_at, {}, {}};
}

// Marker, a byte, four bytes, checksum.
constexpr RecordField WHOLE[] = {field(1, u8), field(2, i32), field(6, u16)};
constexpr RecordField IN_ANY_ORDER[] = {field(2, i32), field(1, i8), field(6, u16)};
constexpr RecordField HALVES[] = {field(1, u8), field(4, i16), field(2, u16), field(6, u16)};
static_assert(record_is_covered(format(8, WHOLE, 0)));
static_assert(record_is_covered(format(8, IN_ANY_ORDER, 0)));
static_assert(record_is_covered(format(8, HALVES, 0)));

constexpr RecordField HOLE[] = {field(1, u8), field(4, i16), field(6, u16)};
static_assert(record_is_covered(format(8, HOLE, 2)));
static_assert(!record_is_covered(format(8, HOLE, 0)), "a hole");
static_assert(!record_is_covered(format(8, HOLE, 3)), "reserved bytes beside their place");
static_assert(!record_is_covered(format(8, WHOLE, 2)), "reserved bytes that are shown too");

constexpr RecordField OVERLAP[] = {field(1, u8), field(2, i32), field(4, i16), field(6, u16)};
constexpr RecordField SHIFTED[] = {field(1, u8), field(3, i32), field(6, u16)};
constexpr RecordField TWICE[] = {field(1, u8), field(4, i16), field(4, u16), field(6, u16)};
constexpr RecordField ON_THE_MARKER[] = {field(0, u8), field(2, i32), field(6, u16)};
static_assert(!record_is_covered(format(8, OVERLAP, 0)), "bytes shown twice");
static_assert(!record_is_covered(format(8, SHIFTED, 0)), "a byte shown twice, and a hole");
static_assert(!record_is_covered(format(8, TWICE, 0)), "a field twice, and a hole");
static_assert(!record_is_covered(format(8, ON_THE_MARKER, 0)), "the marker as a field");

static_assert(!record_is_covered(format(7, WHOLE, 0)), "a field beyond the end");
static_assert(!record_is_covered(format(9, WHOLE, 0)), "a byte behind the checksum");

constexpr RecordField LISTED_EARLIER[] = {field(1, u8), field(6, u16), field(2, i32)};
constexpr RecordField BEFORE_A_BYTE[] = {field(1, i32), field(7, u8), field(5, u16)};
constexpr RecordField WITH_A_SIGN[] = {field(1, u8), field(2, i32), field(6, i16)};
constexpr RecordField OF_FOUR_BYTES[] = {field(1, u8), field(2, u16), field(4, i32)};
static_assert(!record_is_covered(format(8, LISTED_EARLIER, 0)), "the checksum not shown last");
static_assert(!record_is_covered(format(8, BEFORE_A_BYTE, 0)), "the checksum not at the end");
static_assert(!record_is_covered(format(8, WITH_A_SIGN, 0)), "a checksum with a sign");
static_assert(!record_is_covered(format(8, OF_FOUR_BYTES, 0)), "no checksum");

constexpr RecordFormat OF_56_BYTES = format(56, WHOLE, 0);
static_assert(record_request_fits({OF_56_BYTES, 0xC8, 73, 'I'}));
static_assert(!record_request_fits({OF_56_BYTES, 0xC8, 74, 'I'}), "more than the buffer holds");
static_assert(!record_request_fits({OF_56_BYTES, 0xC8, 72, 'I'}), "less than the buffer holds");
static_assert(!record_request_fits({STM_RECORD_OMEGA, 0xC1, 79, 'N'}));
static_assert(!record_request_fits({STM_RECORD_TEMP, 0x02, 86, 'U'}));

constexpr RecordFormat of_length(int32_t text, int32_t csv)
{
    return {8, WHOLE, 0, {nullptr, text}, {nullptr, csv}};
}
static_assert(record_has_room(of_length(640, 255)));
static_assert(!record_has_room(of_length(641, 255)), "more than the text's memory");
static_assert(!record_has_room(of_length(640, 256)), "more than the message");

static_assert(field_named(STM_RECORD_TEMP, "Uen").offset == 8);
static_assert(field_named(STM_RECORD, "checksum").offset == 54);

static_assert(wire_size(u8) == 1 && wire_size(i8) == 1);
static_assert(wire_size(u16) == 2 && wire_size(i16) == 2 && wire_size(i32) == 4);

struct Variant {
    const char *name;
    const RecordFormat &format;
    const RecordRequest &request;
    RecordKind kind;
    int32_t size;
    uint8_t command;
    int32_t most;
    char stream;
    size_t fields;
};

const Variant VARIANTS[] = {
    {"base", STM_RECORD, STM_REQUEST, RecordKind::base, 56, 0xC8, 73, 'I', 16},
    {"omega", STM_RECORD_OMEGA, STM_REQUEST_OMEGA, RecordKind::omega, 52, 0xC1, 78, 'N', 17},
    {"temp", STM_RECORD_TEMP, STM_REQUEST_TEMP, RecordKind::temp, 48, 0x02, 85, 'U', 16},
};

class RecordFormats : public testing::TestWithParam<Variant>
{
};

std::string variant_name(const testing::TestParamInfo<Variant> &info)
{
    return info.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, RecordFormats, testing::ValuesIn(VARIANTS), variant_name);

TEST_P(RecordFormats, have_the_sizes_and_requests_of_the_co_processor)
{
    const RecordFormat &format = GetParam().format;
    EXPECT_EQ(format.size, GetParam().size);
    EXPECT_EQ(GetParam().request.command, GetParam().command);
    EXPECT_EQ(GetParam().request.most, GetParam().most);
    EXPECT_EQ(GetParam().request.stream, GetParam().stream);
    EXPECT_EQ(format.fields.size(), GetParam().fields);
}

TEST_P(RecordFormats, checksum_of_a_record_is_right)
{
    for (const GoldenRecord &golden : golden_records(GetParam().kind)) {
        EXPECT_TRUE(record_checksum_ok(GetParam().format, golden.bytes.data())) << golden.what;
        EXPECT_EQ(golden.bytes, sealed(golden.bytes)) << golden.what;
        EXPECT_EQ(golden.bytes.size(), record_size(GetParam().kind)) << golden.what;
    }
}

TEST_P(RecordFormats, checksum_is_wrong_after_any_flipped_bit)
{
    for (const GoldenRecord &golden : golden_records(GetParam().kind)) {
        Bytes bytes = golden.bytes;
        for (size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
            bytes[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
            EXPECT_FALSE(record_checksum_ok(GetParam().format, bytes.data()))
                << golden.what << ", bit " << bit;
            bytes[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
        }
    }
}

TEST_P(RecordFormats, checksum_holds_whatever_the_marker_is)
{
    for (int marker = 0; marker < 256; ++marker) {
        const Bytes bytes = record(GetParam().kind, {{"marker", marker}, {"nr", 1}});
        EXPECT_TRUE(record_checksum_ok(GetParam().format, bytes.data())) << marker;
    }
}

TEST_P(RecordFormats, checksum_with_its_bytes_exchanged_is_wrong)
{
    Bytes bytes = golden_records(GetParam().kind)[0].bytes;
    std::swap(bytes[bytes.size() - 1], bytes[bytes.size() - 2]);
    EXPECT_FALSE(record_checksum_ok(GetParam().format, bytes.data()));
}

TEST_P(RecordFormats, remainder_that_was_not_inverted_is_no_checksum)
{
    Bytes bytes = golden_records(GetParam().kind)[0].bytes;
    bytes[bytes.size() - 1] ^= 0xFF;
    bytes[bytes.size() - 2] ^= 0xFF;
    EXPECT_FALSE(record_checksum_ok(GetParam().format, bytes.data()));
}

TEST_P(RecordFormats, checksum_of_bytes_that_are_all_zero_is_wrong)
{
    const Bytes bytes(record_size(GetParam().kind), 0x00);
    EXPECT_FALSE(record_checksum_ok(GetParam().format, bytes.data()));
}
