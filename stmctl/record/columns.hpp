// The columns of records: their names in the module and in stmctl, and which kind of record has
// them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace stmctl
{

// Bits, so that the table of columns can name several kinds. A slot of the ring holds a record with
// a temperature.
enum class RecordKind : uint8_t { base = 1, omega = 2, temp = 4 };

// How CSV shows a 32-bit number. The module's text shows all of them with a sign.
enum class Sign : uint8_t { with, without };

enum class Line : uint8_t { plain, ends_group }; // in text, a blank line follows a group

// The name of a member in a JSON object: ,"rel_t":
struct MemberName {
    std::array<char, 16> bytes; // all of them may be copied
    uint8_t size;
};

struct Column {
    std::string_view name;      // stmctl's
    std::string_view label;     // the module's, in its text, up to the number
    std::string_view name_read; // the module's, in the CSV header of a limited read-out
    std::string_view name_live; // the module's, in the CSV header of the live stream
    Sign sign;
    Line line;
    MemberName member;
};

constexpr size_t MOST_COLUMNS = 17;

// The columns of one kind of record, in the order in which they are shown.
class Columns
{
  public:
    explicit consteval Columns(RecordKind kind);

    constexpr size_t size() const { return size_; }
    constexpr const Column &operator[](size_t index) const { return columns_[index]; }
    constexpr const Column *begin() const { return columns_.data(); }
    constexpr const Column *end() const { return columns_.data() + size_; }

    // The positions of those that stmctl itself uses.
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
