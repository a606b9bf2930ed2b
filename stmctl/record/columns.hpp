// The columns of records: what the module calls them, what stmctl calls them, and which a kind of
// record has.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace stmctl
{

// The bits by which the table of columns names the kinds that have one. A slot of the ring holds a
// record with a temperature.
enum class RecordKind : uint8_t { base = 1, omega = 2, temp = 4 };

// How CSV shows a number of 32 bits. The module's text shows them all with a sign.
enum class Sign : uint8_t { with, without };

enum class Line : uint8_t { plain, ends_group }; // in text, a blank line follows a group

// How an object in JSON names a member: ,"rel_t":
struct MemberName {
    std::array<char, 16> bytes; // all of it may be copied
    uint8_t size;
};

struct Column {
    std::string_view name;      // stmctl's
    std::string_view label;     // the module's, in its text, up to the number
    std::string_view name_read; // the module's, in the header of so many records in CSV
    std::string_view name_live; // the module's, in the header of its live CSV
    Sign sign;
    Line line;
    MemberName member;
};

constexpr size_t MOST_COLUMNS = 17;

// Those of one kind of record, in the order in which they are shown.
class Columns
{
  public:
    explicit consteval Columns(RecordKind kind);

    constexpr size_t size() const { return size_; }
    constexpr const Column &operator[](size_t index) const { return columns_[index]; }
    constexpr const Column *begin() const { return columns_.data(); }
    constexpr const Column *end() const { return columns_.data() + size_; }

    // Where those stand that stmctl looks at itself.
    constexpr size_t nr() const { return 0; }
    constexpr size_t rel_t() const { return rel_t_; }
    constexpr size_t buffered() const { return size_ - 2; }
    constexpr size_t checksum() const { return size_ - 1; }

  private:
    std::array<Column, MOST_COLUMNS> columns_ = {};
    size_t size_ = 0;
    size_t rel_t_ = 0;
};

const Columns &columns_of(RecordKind kind);

} // namespace stmctl
