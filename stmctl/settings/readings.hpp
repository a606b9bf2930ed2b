// Queries and their answers.
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
    int64_t number() const; // of an answer that is a number
    std::string json() const;
};

Reading ask(const Device &device, const Quantity &row, int channel);

// Calls for each query of the catalogue, and each of its channels.
void for_each_query(const std::function<void(const Quantity &row, int channel)> &work);

// After a failure: whether other queries may still succeed, because the application is running and
// the user has not stopped us.
bool may_go_on(const Device &device, const Failure &failure);

// Throws a Failure, "COMMAND: stopped by the user", if so.
void expect_no_stop(const char *command);

} // namespace stmctl
