// docs/ring-buffer.md against the segment's layout, and against what stmctl leaves in it.
#include "tests/docs/document.hpp"

#include "stmctl/ring/segment.hpp"

#include <gtest/gtest.h>

#include <sys/ipc.h>
#include <sys/shm.h>

#include <cstddef>
#include <cstring>

namespace
{

const Document RING = read_document("docs/ring-buffer.md");

struct Field {
    const char *name;
    size_t offset;
    size_t size;
};

#define FIELD(name)                                                                                \
    {                                                                                              \
#name, offsetof(RingBuffer, name), sizeof(RingBuffer::name)                                \
    }
constexpr Field FIELDS[] = {FIELD(slots),       FIELD(writer_open), FIELD(reader_open),
                            FIELD(write_index), FIELD(mark),        FIELD(read_pos),
                            FIELD(count),       FIELD(values_left)};
#undef FIELD

// The rows of the segment's second table: five cells.
std::vector<Row> layout()
{
    std::vector<Row> rows = rows_under(RING, "## The segment");
    std::erase_if(rows, [](const Row &row) { return row.size() < 5; });
    return rows;
}

TEST(Segment, is_documented_byte_for_byte)
{
    size_t at = 0;
    for (const Row &row : layout()) {
        EXPECT_EQ(std::stoul(row.at(0)), at) << row.at(2);
        at += std::stoul(row.at(1));
    }
    EXPECT_EQ(at, sizeof(RingBuffer));
}

TEST(Segment, is_documented_with_each_field_in_its_place)
{
    std::vector<Row> rows = layout();
    std::erase_if(rows, [](const Row &row) { return row.at(2) == "–"; });
    ASSERT_EQ(rows.size(), std::size(FIELDS));
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].at(0), std::to_string(FIELDS[i].offset));
        EXPECT_EQ(rows[i].at(1), std::to_string(FIELDS[i].size));
        EXPECT_EQ(rows[i].at(2), FIELDS[i].name);
    }
}

TEST(Segment, is_documented_with_its_key_and_size)
{
    char key[16];
    snprintf(key, sizeof(key), "0x%08x", RINGBUFFER_KEY);
    const std::string number = std::to_string(RINGBUFFER_KEY);
    std::vector<Row> rows = rows_under(RING, "## The segment");
    EXPECT_EQ(rows.at(0), Row({"key", number + " (" + key + " in `ipcs -m`)"}));
    EXPECT_EQ(rows.at(1), Row({"size", std::to_string(RINGBUFFER_SIZE) + " bytes"}));
    EXPECT_EQ(rows.at(3), Row({"slots", std::to_string(RINGBUFFER_SLOTS) + " of " +
                                            std::to_string(RINGBUFFER_SLOT_SIZE) + " bytes"}));
}

// A private segment, in which the mark is the only byte that is not 0.
class Mark : public testing::Test
{
  protected:
    Mark() : id_(shmget(IPC_PRIVATE, RINGBUFFER_SIZE, 0600)) {}
    ~Mark() override { shmctl(id_, IPC_RMID, nullptr); }
    Mark(const Mark &) = delete;
    Mark &operator=(const Mark &) = delete;

    // Where it stands after stmctl has left it.
    size_t place_of(stmctl::WriterMark mark) const
    {
        stmctl::leave_mark(id_, mark);
        auto *bytes = static_cast<const uint8_t *>(shmat(id_, nullptr, SHM_RDONLY));
        const void *found = memchr(bytes, static_cast<int>(mark), RINGBUFFER_SIZE);
        const size_t place =
            found == nullptr ? 0 : static_cast<size_t>(static_cast<const uint8_t *>(found) - bytes);
        shmdt(bytes);
        return place;
    }

    std::string documented_place() const
    {
        for (const Row &row : layout()) {
            if (row.at(3) == "stmctl") {
                return row.at(0);
            }
        }
        return "";
    }

  private:
    int id_;
};

TEST_F(Mark, is_documented_where_stmctl_leaves_it)
{
    for (const auto mark : {stmctl::WriterMark::writing, stmctl::WriterMark::ended}) {
        EXPECT_EQ(std::to_string(place_of(mark)), documented_place());
    }
    EXPECT_NE(flowing_text(RING).find("at offset " + documented_place() + ","), std::string::npos);
}

TEST_F(Mark, is_documented_with_its_values)
{
    const std::vector<Row> rows = rows_under(RING, "## The writer's mark");
    ASSERT_EQ(rows.size(), 3U);
    const std::string values[] = {"unknown", "`stmctl` is writing", "`stmctl` has ended"};
    static_assert(static_cast<int>(stmctl::WriterMark::unknown) == 0);
    static_assert(static_cast<int>(stmctl::WriterMark::writing) == 1);
    static_assert(static_cast<int>(stmctl::WriterMark::ended) == 2);
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].at(0), std::to_string(i));
        EXPECT_TRUE(rows[i].at(1).starts_with(values[i])) << rows[i].at(1);
    }
}

} // namespace
