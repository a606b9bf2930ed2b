// A bench for streams to which something happens: compares what came with what the board counted.
#pragma once

#include "tests/stmctl/mishaps.hpp"
#include "tests/stmctl/stmctl_bench.hpp"

#include <algorithm>
#include <map>
#include <sstream>

// The records of one life of the board that came.
struct Came {
    long records = 0;
    long last = 0; // rel_t
    long missing = 0;
};

// From the start of a trouble. Each unsuccessful attempt has doubled the wait for the next: after
// the end it is not longer than the trouble was, apart from what the first attempts take.
inline double promised_length(const Mishap &mishap)
{
    return 2 * (mishap.over - mishap.begin) + 4;
}

inline double run_time(const Mishap &mishap)
{
    return mishap.begin + promised_length(mishap) + 1;
}

// What a stream in CSV, with the time first, has shown.
struct Shown {
    std::vector<Came> lives;
    std::vector<double> gaps; // of more than half a second between two records
    double seconds = 0;       // from the first to the last

    long records() const { return sum(&Came::records); }
    long missing() const { return sum(&Came::missing); }

    long sum(long Came::*number) const
    {
        long all = 0;
        for (const Came &life : lives) {
            all += life.*number;
        }
        return all;
    }
};

// What the board reports about one of its lives.
struct Given {
    long measured = 0;
    long delivered = 0;
};

inline constexpr long LARGEST_BLOCK = 85; // records

using Numbers = std::map<std::string, long>;

class SurvivalBench : public StmctlBench
{
  protected:
    // update's dialogues, on boards of their own.
    void record_transcripts(size_t image_size = 60'000)
    {
        std::filesystem::create_directory(path("dialogues"));
        write_file("image.bin", noise(image_size, 5));
        record("state", {"-state"});
        record("start", {"-start"});
        record("reset", {"-reset"});
        record("firmware", {"-firmware", "image.bin"});
    }

    // With each of the mishaps that make returns for a seed.
    template <typename Make, typename Expect>
    static void with_each(Make make, Expect expect)
    {
        for (const unsigned seed : survival_seeds()) {
            for (const Mishap &mishap : make(seed)) {
                SCOPED_TRACE("seed " + std::to_string(seed) + ": " + mishap.name + ", " +
                             quoted(mishap.options));
                expect(mishap);
            }
        }
    }

    template <typename Expect>
    void with_each_mishap(Expect expect)
    {
        with_each([this](unsigned seed) { return mishaps(seed, path("dialogues")); }, expect);
    }

    template <typename Expect>
    void with_each_lasting_mishap(int least_ms, int most_ms, Expect expect)
    {
        with_each(
            [&](unsigned seed) {
                Moments moments(seed);
                return lasting_mishaps(moments, path("dialogues"), least_ms, most_ms);
            },
            expect);
    }

    // On the board in the state in which the last command left it.
    Result on_same_board(const Words &options, const Words &arguments)
    {
        Words words = both(virtual_board({"--count-time", "--board", path("board")}), options);
        words.push_back(program());
        return run(both(words, arguments));
    }

    Result on_fresh_board(const Words &options, const Words &arguments)
    {
        std::filesystem::remove_all(path("board"));
        std::filesystem::remove(path("summary"));
        return on_same_board(options, arguments);
    }

    static Shown shown_in(const std::string &csv)
    {
        Shown shown;
        double first = 0;
        double before = 0;
        EXPECT_TRUE(csv.starts_with("\"time\";\"nr\";\"temp\";\"rel_t\";"));
        for (size_t at = csv.find('\n') + 1; at < csv.size(); at = csv.find('\n', at) + 1) {
            const size_t number = csv.find(';', csv.find(';', csv.find(';', at) + 1) + 1) + 1;
            const double time = strtod(&csv[at], nullptr);
            take(shown, strtol(&csv[number], nullptr, 10));
            first = first == 0 ? time : first;
            if (before != 0 && time - before > 0.5) {
                shown.gaps.push_back(time - before);
            }
            before = time;
        }
        shown.seconds = before - first;
        return shown;
    }

    // The members of the one object in a file, as whole numbers; null is -1.
    Numbers numbers_in(const std::string &file) const
    {
        Numbers numbers;
        std::istringstream members(read_text(file));
        for (std::string member; std::getline(members, member, ',');) {
            const size_t begin = member.find('"') + 1;
            const size_t end = member.find('"', begin);
            const std::string value = member.substr(end + 2);
            numbers[member.substr(begin, end - begin)] = value == "null" ? -1 : std::stol(value);
        }
        return numbers;
    }

    // In the order of time. Lives in which nothing was delivered are left out.
    std::vector<Given> lives_of_board() const
    {
        std::vector<Given> lives;
        Given rest = {counted("measured"), counted("delivered")};
        std::istringstream rows(read_text("board/lives"));
        std::string row;
        std::getline(rows, row);
        EXPECT_EQ(row.substr(0, 31), "life seconds measured delivered");
        while (std::getline(rows, row)) {
            std::istringstream fields(row);
            std::string skipped;
            Given life;
            fields >> skipped >> skipped >> life.measured >> life.delivered;
            rest = {rest.measured - life.measured, rest.delivered - life.delivered};
            lives.push_back(life);
        }
        lives.push_back(rest);
        std::erase_if(lives, [](const Given &life) { return life.delivered == 0; });
        return lives;
    }

    long counted(const std::string &name) const
    {
        std::istringstream rows(read_text("board/counts"));
        for (std::string row; std::getline(rows, row);) {
            if (row.starts_with(name + " ")) {
                return std::stol(row.substr(name.size()));
            }
        }
        ADD_FAILURE() << "the board does not count " << name;
        return 0;
    }

    // Everything that the board delivered was shown or rejected, and what is missing is reported.
    // The module drops the current block when it cannot ask for the next: it counts as missing.
    void expect_accounts(const Shown &shown, const Numbers &summary) const
    {
        const std::vector<Given> given = lives_of_board();
        ASSERT_EQ(shown.lives.size(), given.size());
        for (size_t i = 0; i < given.size(); ++i) {
            EXPECT_LE(shown.lives[i].records, given[i].delivered) << "life " << i;
            EXPECT_LE(shown.lives[i].last, given[i].measured) << "life " << i;
        }
        EXPECT_EQ(shown.missing(), summary.at("lost"));
        EXPECT_EQ(shown.records(), summary.at("records"));
        EXPECT_EQ(std::ssize(shown.lives) - 1, summary.at("steps_back"));
        const long came = shown.records() + summary.at("rejected");
        EXPECT_GE(came + LARGEST_BLOCK * summary.at("failing_exchanges"), counted("delivered"));
        EXPECT_GE(came + shown.missing(), counted("delivered"));
        EXPECT_EQ(counted("measured"), counted("delivered") + counted("overrun") +
                                           counted("discarded") + counted("buffered"));
    }

    // Each interruption begins with sentences that are each printed once, and ends with one that
    // says how long it took.
    static void expect_told_once(const std::string &errors, const std::string &command,
                                 const std::vector<double> &gaps)
    {
        expect_lengths(told_once(errors, command), gaps);
    }

    // How long they took.
    static std::vector<double> told_once(const std::string &errors, const std::string &command)
    {
        const std::string name = "stmctl: " + command + ": ";
        const std::string again = name + "records are coming again after ";
        std::vector<double> told;
        Words begun;
        std::istringstream lines(errors);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_TRUE(line.starts_with(name)) << line;
            if (line.find(" records, ") != std::string::npos) {
                break; // the summary
            }
            if (!line.starts_with(again)) {
                EXPECT_EQ(std::ranges::count(begun, line), 0) << "said twice: " << line;
                begun.push_back(line);
                continue;
            }
            EXPECT_FALSE(begun.empty()) << "nothing was said before " << line;
            begun.clear();
            told.push_back(std::stod(line.substr(again.size())));
        }
        EXPECT_TRUE(begun.empty()) << "never over: " << (begun.empty() ? "" : begun[0]);
        return told;
    }

  private:
    void record(const std::string &name, const Words &arguments)
    {
        const Words board =
            virtual_board({"--count-time", "--transcript", path("dialogues/" + name), "--board",
                           path("dialogues/board")});
        run(both(board, both({update_program()}, arguments)));
        ASSERT_NE(read_text("dialogues/" + name), "") << name;
    }

    // A record that does not rise begins another life.
    static void take(Shown &shown, long rel_t)
    {
        if (shown.lives.empty() || rel_t <= shown.lives.back().last) {
            EXPECT_EQ(rel_t, 1) << "a life begins with its first record";
            shown.lives.push_back({1, rel_t, 0});
            return;
        }
        Came &life = shown.lives.back();
        life.missing += rel_t - life.last - 1;
        life.last = rel_t;
        ++life.records;
    }

    // What lasts two seconds is reported, and what is reported happened.
    static void expect_lengths(const std::vector<double> &told, const std::vector<double> &gaps)
    {
        const auto is_among = [](double length, const std::vector<double> &others) {
            return std::ranges::any_of(
                others, [length](double other) { return std::abs(length - other) < 0.2; });
        };
        EXPECT_LE(told.size(), gaps.size());
        for (const double length : told) {
            EXPECT_TRUE(is_among(length, gaps)) << "told, but not there: " << length << " s";
        }
        for (const double length : gaps) {
            EXPECT_TRUE(length < 2 || is_among(length, told)) << "not told: " << length << " s";
        }
    }
};
