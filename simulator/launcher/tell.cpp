// virtual-board tell: by hand, what happens to a board while programs use it.
#include "simulator/launcher/tell.hpp"

#include "simulator/store/order.hpp"
#include "simulator/words/text.hpp"

namespace simulator
{

namespace
{

std::string all_orders()
{
    std::string words;
    for (const Order &order : orders()) {
        words += (words.empty() ? "" : ", ") + std::string(order.words);
    }
    return words;
}

} // namespace

std::string tell_by_hand(std::span<char *> words)
{
    if (words.size() != 2) {
        return "tell needs a board's folder and one of these: " + all_orders();
    }
    const Order *order = find_order(words[1]);
    if (order == nullptr) {
        return text("a board cannot be told '%s', only one of these: %s", words[1],
                    all_orders().c_str());
    }
    return tell(words[0], *order);
}

std::string describe_orders()
{
    std::string lines;
    for (const Order &order : orders()) {
        lines += text("  %-20s  %s\n", std::string(order.words).c_str(), order.help);
    }
    return lines;
}

} // namespace simulator
