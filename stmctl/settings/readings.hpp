// Queries and what they answer.
#pragma once

#include "stmctl/process/failure.hpp"
#include "stmctl/settings/operands.hpp"

#include <functional>
#include <string>

namespace stmctl
{

// One query of one channel, and its answer without the newline.
struct Reading {
    const Quantity &row;
    int channel;
    std::string text;

    std::string name() const { return full_name(row, channel); }
    int64_t number() const; // of an answer that is one
    std::string json() const;
};

Reading ask(const Device &device, const Quantity &row, int channel);

// Calls for each query of the catalogue, and each of its channels.
void for_each_query(const std::function<void(const Quantity &row, int channel)> &work);

// After a failure: whether others may go better, because the application runs and was not ended by
// its user.
bool may_go_on(const Device &device, const Failure &failure);

// Throws a Failure, "COMMAND: stopped by the user", once that is so.
void expect_no_stop(const char *command);

} // namespace stmctl
