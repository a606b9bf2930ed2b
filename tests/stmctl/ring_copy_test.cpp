// Goal: what a writer puts in the very moment in which the ring's reader copies the slots belongs
// to what that reader delivers as everything.
#include "tests/stmctl/ring_reader_bench.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <sstream>
#include <utility>

namespace
{

constexpr size_t PAGE = 4096;

// The place of a segment that is attached to be read only; null if the system does not tell it.
char *view_of(int segment)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        uintptr_t address = 0;
        std::string skipped;
        std::string access;
        int id = -1;
        words >> std::hex >> address >> skipped >> access >> skipped >> skipped >> std::dec >> id;
        if (access == "r--s" && id == segment) {
            return reinterpret_cast<char *>(address);
        }
    }
    return nullptr;
}

// Acts once in the middle of a copy of the slots from the first to the last: when it has come to
// the second page of a view, where slot 85 begins. Reading waits until that is done. The index
// stands in that page, too: it is closed only once the first one is read.
class InTheMiddle
{
  public:
    InTheMiddle(char *view, std::function<void()> act)
    {
        closed = view;
        pages_left = 2;
        action = std::move(act);
        struct sigaction on_fault = {};
        on_fault.sa_handler = open_page;
        sigaction(SIGSEGV, &on_fault, &before_);
        mprotect(closed, PAGE, PROT_NONE);
    }
    ~InTheMiddle()
    {
        mprotect(closed, PAGE, PROT_READ);
        sigaction(SIGSEGV, &before_, nullptr);
        EXPECT_EQ(pages_left, 0) << "nobody has copied the slots";
    }
    InTheMiddle(const InTheMiddle &) = delete;
    InTheMiddle &operator=(const InTheMiddle &) = delete;

  private:
    static void open_page(int)
    {
        mprotect(closed, PAGE, PROT_READ);
        switch (pages_left--) {
        case 2:
            closed += PAGE;
            mprotect(closed, PAGE, PROT_NONE);
            break;
        case 1:
            action();
            break;
        default:
            std::signal(SIGSEGV, SIG_DFL); // a fault of the program's own ends it
        }
    }

    static inline char *closed = nullptr;
    static inline int pages_left = 0;
    static inline std::function<void()> action;
    struct sigaction before_ = {};
};

class ReaderCopy : public Reader
{
  protected:
    // Everything, while a writer puts more.
    void expect_everything(int32_t first, int32_t last, int32_t put_meanwhile)
    {
        const RingView view(segment());
        char *const place = view_of(segment());
        if (place == nullptr || sysconf(_SC_PAGESIZE) != static_cast<long>(PAGE)) {
            GTEST_SKIP() << "the page in which slot 85 begins is not to be had here";
        }
        SlotFollower reader(view);
        const InTheMiddle meanwhile(place, [&] { put(last - put_meanwhile + 1, last); });
        EXPECT_EQ(seen(reader.everything()), (Seen{range(first, last)}));
        put(last + 1, last + 2);
        EXPECT_EQ(settled(reader), (Seen{range(last + 1, last + 2)}));
    }
};

TEST_F(ReaderCopy, what_a_first_writer_puts_meanwhile_is_its_own)
{
    put(1, 100);
    expect_everything(1, 103, 3);
}

TEST_F(ReaderCopy, what_a_writer_that_came_round_puts_meanwhile_makes_it_no_new_one)
{
    put(1, 250); // 90 is filled next
    expect_everything(95, 253, 3);
}

TEST_F(ReaderCopy, a_writer_that_comes_round_meanwhile_is_no_new_one)
{
    put(1, 310); // 150 is filled next
    expect_everything(167, 325, 15);
}

TEST_F(ReaderCopy, what_a_new_writer_puts_meanwhile_is_all_there_is_of_it)
{
    put(1, 400);
    begin_anew();
    put(1001, 1100);
    expect_everything(1001, 1103, 3);
}

} // namespace
