// What adc and raw have in common: frames, read one after another.
#pragma once

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/command.hpp"
#include "stmctl/record/format.hpp"

#include <string>

namespace stmctl
{

// What a frame's text becomes in CSV and jsonl; the first frame's has the header.
using Render = std::string (*)(const std::string &text, const FormatOptions &options, bool first);

struct FrameKind {
    const char *name;
    void (*read)(int mode, StmPollFn poll, StmOutputFn output);
    Render render;
    bool has_header; // in CSV, shown before anything has come
};

Action declare_frames(CLI::App &command, const FrameKind &kind);

} // namespace stmctl
