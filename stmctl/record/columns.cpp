// The one table of columns.
#include "stmctl/record/columns.hpp"

namespace stmctl
{

namespace
{

constexpr uint8_t bit(RecordKind kind)
{
    return static_cast<uint8_t>(kind);
}

constexpr uint8_t ALL = bit(RecordKind::base) | bit(RecordKind::omega) | bit(RecordKind::temp);
constexpr uint8_t OMEGA = bit(RecordKind::omega);
constexpr uint8_t TEMP = bit(RecordKind::temp);
constexpr uint8_t EXTENDED = bit(RecordKind::base) | OMEGA;

struct Row {
    uint8_t kinds; // that have it
    std::string_view name;
    std::string_view label;
    Sign sign = Sign::with;
    Line line = Line::plain;
    std::string_view name_live = {}; // the module's, if different
};

// The order is the same for all kinds. The module gives the temperature the label of another
// number, and that number's name in its live CSV. clang-format off
constexpr Row ROWS[] = {
    {ALL, "nr", "stm_uint8_t  nr   : "},
    {OMEGA, "omega_t", "stm_uint16_t  omega_t : "},
    {TEMP, "temp", "stm_uint16_t omega_t : ", Sign::with, Line::plain, "omega_t"},
    {ALL, "rel_t", "stm_int32_t  rel_t: ", Sign::without, Line::ends_group},
    {ALL, "U1e", "stm_int32_t  U1e  : "},
    {ALL, "U2e", "stm_int32_t  U2e  : "},
    {ALL, "U3e", "stm_int32_t  U3e  : "},
    {ALL, "Uen", "stm_int32_t  Uen  : ", Sign::with, Line::ends_group},
    {ALL, "I1", "stm_int32_t  I1   : "},
    {ALL, "I2", "stm_int32_t  I2   : "},
    {ALL, "I3", "stm_int32_t  I3   : "},
    {ALL, "negIe", "stm_int32_t  -Ie  : ", Sign::with, Line::ends_group},
    {ALL, "BE1", "stm_int16_t  BE1  : "},
    {ALL, "BE2", "stm_int16_t  BE2  : "},
    {ALL, "BE", "stm_int8_t   BE   : "},
    {EXTENDED, "BE32_01_ext", "stm_uint32_t   BE32_01_ext   : ", Sign::without},
    {ALL, "buffered", "stm_uint8    buffered  : "},
    {ALL, "checksum", "stm_int8_t   checksum  : ", Sign::with, Line::ends_group},
};
// clang-format on

constexpr MemberName member_named(std::string_view name)
{
    MemberName member = {};
    const auto put = [&](char c) { member.bytes.at(member.size++) = c; };
    put(',');
    put('"');
    for (const char c : name) {
        put(c);
    }
    put('"');
    put(':');
    return member;
}

} // namespace

consteval Columns::Columns(RecordKind kind)
{
    for (const Row &row : ROWS) {
        if ((row.kinds & bit(kind)) != 0) {
            rel_t_ = row.name == "rel_t" ? size_ : rel_t_;
            columns_.at(size_++) = {row.name,
                                    row.label,
                                    row.name,
                                    row.name_live.empty() ? row.name : row.name_live,
                                    row.sign,
                                    row.line,
                                    member_named(row.name)};
        }
    }
}

namespace
{

constexpr Columns BASE_COLUMNS(RecordKind::base);
constexpr Columns OMEGA_COLUMNS(RecordKind::omega);
constexpr Columns TEMP_COLUMNS(RecordKind::temp);

constexpr bool stand_where_they_are_said_to(const Columns &columns)
{
    return columns[columns.nr()].name == "nr" && columns[columns.rel_t()].name == "rel_t" &&
           columns[columns.buffered()].name == "buffered" &&
           columns[columns.checksum()].name == "checksum";
}
static_assert(stand_where_they_are_said_to(BASE_COLUMNS) &&
              stand_where_they_are_said_to(OMEGA_COLUMNS) &&
              stand_where_they_are_said_to(TEMP_COLUMNS));

} // namespace

const Columns &columns_of(RecordKind kind)
{
    switch (kind) {
    case RecordKind::base:
        return BASE_COLUMNS;
    case RecordKind::omega:
        return OMEGA_COLUMNS;
    case RecordKind::temp:
        break;
    }
    return TEMP_COLUMNS;
}

} // namespace stmctl
