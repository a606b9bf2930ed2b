// What happens to a board while a stream runs: each kind at moments of its own, derived from a
// seed.
#pragma once

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

// Of a board, from the start until records could come again. Times are in seconds.
struct Mishap {
    std::string name;
    std::vector<std::string> options; // virtual-board's
    double begin = 0;
    double over = 0;
};

// Moments in milliseconds: the same ones with every library.
class Moments
{
  public:
    explicit Moments(unsigned seed) : generator_(seed) {}

    double between(int least_ms, int most_ms)
    {
        const auto range = static_cast<unsigned>(most_ms - least_ms);
        return (least_ms + static_cast<int>(generator_() % range)) / 1000.0;
    }

  private:
    std::mt19937 generator_;
};

inline std::string seconds_of(double time)
{
    return std::to_string(time) + "s";
}

inline std::vector<std::string> spell(const std::string &kind, double from, double until)
{
    return {"--fault", kind + "@t=" + seconds_of(from) + ".." + seconds_of(until)};
}

inline std::vector<std::string> restart(const std::string &mode, double time)
{
    return {"--fault", "restart@t=" + seconds_of(time) + "=" + mode};
}

inline std::vector<std::string> intrusion(const std::string &transcript, double time)
{
    return {"--fault", "intrusion@t=" + seconds_of(time) + "=" + transcript};
}

inline std::vector<std::string> both(std::vector<std::string> one,
                                     const std::vector<std::string> &other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

// The transcripts of update in a folder: state, start, reset and firmware.
inline std::vector<Mishap> mishaps(unsigned seed, const std::string &transcripts)
{
    Moments moments(seed);
    const auto begin = [&moments] { return moments.between(1000, 4000); };
    const double silent = begin();
    const double silent_until = silent + moments.between(50, 4000);
    const double restarted = begin();
    const double loading = begin();
    const double started = loading + moments.between(500, 5000);
    const double gone = begin();
    const double gone_until = gone + moments.between(50, 4000);
    const double asked = begin();
    const double left = begin();
    const double reset = left + moments.between(500, 5000);
    const double led_away = begin();
    const double back = led_away + moments.between(500, 5000);
    const double overwritten = begin();
    const double revived = overwritten + moments.between(1500, 5000);
    return {
        {"silence", spell("silence", silent, silent_until), silent, silent_until},
        {"restart", restart("application", restarted), restarted, restarted},
        {"boot loader", both(restart("boot-loader", loading), restart("application", started)),
         loading, started},
        {"gone", spell("gone", gone, gone_until), gone, gone_until},
        {"update -state", intrusion(transcripts + "/state", asked), asked, asked + 0.2},
        {"update -start, update -reset",
         both(intrusion(transcripts + "/start", left), intrusion(transcripts + "/reset", reset)),
         left, reset + 0.1},
        {"update -start, restart",
         both(intrusion(transcripts + "/start", led_away), restart("application", back)), led_away,
         back},
        {"update -firmware, restart",
         both(intrusion(transcripts + "/firmware", overwritten), restart("application", revived)),
         overwritten, revived},
    };
}

// What lasts until something is done about it, at one moment of a time.
inline std::vector<Mishap> lasting_mishaps(Moments &moments, const std::string &transcripts,
                                           int least_ms, int most_ms)
{
    constexpr double NEVER = 1e6;
    std::vector<Mishap> all;
    const auto add = [&](const std::string &name, auto options_at) {
        const double begin = moments.between(least_ms, most_ms);
        all.push_back({name, options_at(begin), begin, NEVER});
    };
    add("silence", [](double time) { return spell("silence", time, NEVER); });
    add("restart", [](double time) { return restart("application", time); });
    add("boot loader", [](double time) { return restart("boot-loader", time); });
    add("gone", [](double time) { return spell("gone", time, NEVER); });
    for (const std::string name : {"state", "start", "firmware"}) {
        add("update -" + name,
            [&](double time) { return intrusion(transcripts + "/" + name, time); });
    }
    return all;
}

// Two, or the number in SURVIVAL_SEEDS.
inline std::vector<unsigned> survival_seeds()
{
    const char *wanted = getenv("SURVIVAL_SEEDS");
    std::vector<unsigned> seeds(wanted != nullptr ? std::stoul(wanted) : 2);
    for (unsigned i = 0; i < seeds.size(); ++i) {
        seeds[i] = i + 1;
    }
    return seeds;
}
