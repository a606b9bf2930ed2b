// Goal: the state of a board is all that changes in it: boards with equal states answer equally, in the
// middle of whatever is being said.
#include "tests/simulator/virtual_wire.hpp"

#include "simulator/driver/intrusion.hpp"
#include "simulator/driver/transcript_reader.hpp"

#include <cstring>
#include <filesystem>
#include <fstream>

namespace simulator
{

namespace
{

namespace fs = std::filesystem;

constexpr size_t COPIES = 8; // of each dialogue, evenly spread over it

// A board with all that belongs to it.
class Machine
{
  public:
    explicit Machine(const Behaviour &behaviour) : behaviour_(behaviour) {}

    Machine(const Machine &other)
        : flash_(other.flash_), memory_(other.memory_), behaviour_(other.behaviour_)
    {
        coprocessor_.set_state(other.coprocessor_.state());
    }
    Machine &operator=(const Machine &) = delete;

    // What an exchange receives, and what the co-processor thought of it.
    std::pair<Bytes, std::string> exchange(const SentBytes &sent)
    {
        Bytes received(sent.bytes.size(), 0x77);
        coprocessor_.advance_to(sent.time);
        coprocessor_.exchange(sent.bytes, received);
        return {received, coprocessor_.note()};
    }

    bool is_like(const Machine &other) const
    {
        const BoardState state = coprocessor_.state();
        const BoardState others = other.coprocessor_.state();
        return memcmp(&state, &others, sizeof(state)) == 0 && flash_ == other.flash_ &&
               memory_ == other.memory_ && coprocessor_.settings() == other.coprocessor_.settings();
    }

  private:
    Bytes flash_ = Bytes(FLASH_SIZE, FLASH_ERASED);
    Bytes memory_ = Bytes(MEMORY_SIZE, 0);
    Behaviour behaviour_;
    Coprocessor coprocessor_ = Coprocessor(
        {std::span<uint8_t, FLASH_SIZE>(flash_), std::span<uint8_t, MEMORY_SIZE>(memory_)}, {},
        behaviour_);
};

Faults faults_of(const fs::path &dialogue)
{
    Faults faults;
    std::ifstream lines(dialogue.string() + ".faults");
    std::string reason;
    for (std::string line; std::getline(lines, line);) {
        if (const std::optional<Fault> fault = parse_fault(line, reason)) {
            faults.push_back(*fault);
        }
    }
    return faults;
}

// The dialogues of a walkthrough, each as what was sent, in the order of its times.
std::vector<fs::path> dialogues()
{
    const char *folder = getenv("WALKTHROUGH_DIALOGUES");
    std::vector<fs::path> found;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() != ".faults") {
            found.push_back(entry.path());
        }
    }
    std::ranges::sort(found);
    return found;
}

// Several programs may have written a transcript, each with a time of its own.
std::vector<SentBytes> read_dialogue(const fs::path &path)
{
    std::vector<SentBytes> sent;
    EXPECT_EQ(read_transcript(path, sent), "");
    for (size_t i = 1; i < sent.size(); ++i) {
        sent[i].time = std::max(sent[i].time, sent[i - 1].time);
    }
    return sent;
}

void expect_equal_answers(const std::vector<SentBytes> &sent, const Behaviour &behaviour)
{
    Machine first(behaviour);
    std::vector<Machine> copies;
    copies.reserve(COPIES);
    for (size_t i = 0; i < sent.size(); ++i) {
        while (copies.size() < COPIES && (copies.size() + 1) * sent.size() / (COPIES + 1) <= i) {
            copies.emplace_back(first);
        }
        const auto answer = first.exchange(sent[i]);
        for (Machine &copy : copies) {
            ASSERT_EQ(copy.exchange(sent[i]), answer) << "exchange " << i + 1;
        }
    }
    for (const Machine &copy : copies) {
        EXPECT_TRUE(copy.is_like(first));
    }
}

TEST(BoardState, copied_in_the_middle_of_a_dialogue_goes_on_like_the_original)
{
    size_t with_bytes = 0;
    for (const fs::path &path : dialogues()) {
        SCOPED_TRACE(path.filename());
        Behaviour behaviour;
        behaviour.faults = faults_of(path);
        behaviour.header_index = ANY_HEADER_INDEX;
        std::ifstream lines(path);
        if (lines.peek() != std::ifstream::traits_type::eof()) {
            expect_equal_answers(read_dialogue(path), behaviour);
            ++with_bytes;
        }
    }
    EXPECT_GT(with_bytes, 100U) << "dialogues";
}

} // namespace

} // namespace simulator
