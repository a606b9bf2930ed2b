// The kinds of records.
#pragma once

#include "link/stm_com_funcs.h"
#include "stmctl/record/columns.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

// A kind of record and the module's operations for it.
struct Variant {
    const char *name;
    void (*read)(int count, int mode, StmPollFn poll, StmOutputFn output);
    void (*follow)(int format, StmPollFn poll, StmOutputFn output);
    RecordKind kind;
};

const Variant &variant_named(std::string_view name); // the name must be one of them
std::vector<std::string> variant_names();

} // namespace stmctl
