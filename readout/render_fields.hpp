// The renderers of a table of fields: the compiler walks the table once, and what remains is code
// that writes one record in place.
#pragma once

#include "link/bytes.hpp"
#include "link/decimal.hpp"
#include "readout/record_format.hpp"

#include <cstring>
#include <utility>

namespace stm
{

// A function call, so that the code for the sign is not repeated in every field of every format.
char *write_signed(char *to, int32_t number);

template <Wire WIRE>
int32_t field_value(const uint8_t *at)
{
    if constexpr (WIRE == Wire::u8) {
        return *at;
    } else if constexpr (WIRE == Wire::i8) {
        return static_cast<int8_t>(*at);
    } else if constexpr (WIRE == Wire::u16) {
        return get_le16(at);
    } else if constexpr (WIRE == Wire::i16) {
        return static_cast<int16_t>(get_le16(at));
    } else {
        return static_cast<int32_t>(get_le32(at));
    }
}

// Kept: all numbers are shown as signed here, even those that CSV shows without a sign.
template <const auto &FIELDS, size_t I>
char *render_field_text(const uint8_t *record, char *to)
{
    constexpr RecordField FIELD = FIELDS[I];
    constexpr size_t LABEL_LENGTH = std::string_view(FIELD.label).size();
    memcpy(to, FIELD.label, LABEL_LENGTH);
    to = write_signed(to + LABEL_LENGTH, field_value<FIELD.wire>(record + FIELD.offset));
    *to++ = '\n';
    if constexpr (FIELD.line == Line::ends_group) {
        *to++ = '\n';
    }
    return to;
}

template <const auto &FIELDS, size_t I>
char *render_field_csv(const uint8_t *record, char *to)
{
    constexpr RecordField FIELD = FIELDS[I];
    const int32_t value = field_value<FIELD.wire>(record + FIELD.offset);
    if constexpr (FIELD.csv == Csv::with_sign) {
        to = write_signed(to, value);
    } else {
        to = write_decimal(to, static_cast<uint32_t>(value));
    }
    *to = ';';
    return to + 1;
}

template <const auto &FIELDS, size_t... I>
char *render_each_text(const uint8_t *record, char *to, std::index_sequence<I...>)
{
    ((to = render_field_text<FIELDS, I>(record, to)), ...);
    return to;
}

template <const auto &FIELDS, size_t... I>
char *render_each_csv(const uint8_t *record, char *to, std::index_sequence<I...>)
{
    ((to = render_field_csv<FIELDS, I>(record, to)), ...);
    return to;
}

template <const auto &FIELDS>
char *render_fields_text(const uint8_t *record, char *to)
{
    return render_each_text<FIELDS>(record, to, std::make_index_sequence<std::size(FIELDS)>());
}

template <const auto &FIELDS>
char *render_fields_csv(const uint8_t *record, char *to)
{
    to = render_each_csv<FIELDS>(record, to, std::make_index_sequence<std::size(FIELDS)>());
    *to = '\n';
    return to + 1;
}

} // namespace stm
