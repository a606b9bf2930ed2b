// The table of indices in docs/ring-buffer.md, played with the ring's operations.
#include "tests/docs/document.hpp"
#include "tests/ringbuffer/ring_fixture.hpp"

namespace
{

class DocumentedRing : public Ring
{
  protected:
    DocumentedRing() { segment.assign(segment.size(), 0); }

    // Does a step, and returns the number of the record that the reader is at, as the table has it.
    std::string play(const std::string &step)
    {
        if (step == "both sides open") {
            writer_ = RingBuffer_Open("w");
            reader_ = RingBuffer_Open("r");
        } else if (step.starts_with("put ")) {
            put(std::stoi(step.substr(4)));
        } else if (step == "mark") {
            EXPECT_EQ(RingBuffer_MarkLastValue(reader_), 1);
        } else if (step == "first") {
            return std::to_string(RingBuffer_GetFirstValue(reader_)->rel_t);
        } else if (step == "next") {
            return std::to_string(RingBuffer_GetNextValue(reader_)->rel_t);
        } else {
            ADD_FAILURE() << "no such step: " << step;
        }
        return "–";
    }

    void put(int records)
    {
        for (int i = 0; i < records; ++i) {
            const RingRecord record = numbered_record(++latest_);
            EXPECT_EQ(RingBuffer_PutValue(writer_, &record), 1);
        }
    }

  private:
    int writer_ = 0;
    int reader_ = 0;
    int latest_ = 0;
};

TEST_F(DocumentedRing, has_the_indices_that_the_document_gives_after_each_step)
{
    const std::vector<Row> rows = rows_under(read_document("docs/ring-buffer.md"), "## The reader");
    EXPECT_EQ(rows.size(), 11U);
    for (const Row &row : rows) {
        const std::string record = play(row.at(0));
        Row real = {row.at(0)};
        for (const Field field : {WRITE_INDEX, MARK, READ_POS, COUNT, VALUES_LEFT}) {
            real.push_back(std::to_string(value(field)));
        }
        real.push_back(record);
        EXPECT_EQ(row, real);
    }
}

} // namespace
