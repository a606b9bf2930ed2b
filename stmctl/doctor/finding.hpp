// The result of one check.
#pragma once

#include <string>

namespace stmctl
{

enum class Health { good, bad, unknown };

struct Finding {
    Health health = Health::unknown;
    std::string words;
    std::string remedy; // one line; may be empty
};

inline Finding good(std::string words)
{
    return {Health::good, std::move(words), {}};
}

inline Finding bad(std::string words, std::string remedy)
{
    return {Health::bad, std::move(words), std::move(remedy)};
}

inline Finding unknown(std::string words, std::string remedy = {})
{
    return {Health::unknown, std::move(words), std::move(remedy)};
}

} // namespace stmctl
