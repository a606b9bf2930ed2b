// What adc and raw have in common: frames, read one after another.
#pragma once

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/command.hpp"
#include "stmctl/record/format.hpp"

#include <cstdint>
#include <string>

namespace stmctl
{

// How frames are shown in CSV and jsonl.
struct FrameLook {
    bool csv;
    bool timestamps;
    bool numbered; // there may be several of them
};

// What the text of a frame of this number becomes.
using Render = std::string (*)(const std::string &text, const FrameLook &look, uint64_t number);

// With what a CSV of them begins.
using Beginning = std::string (*)(const FrameLook &look);

struct FrameKind {
    const char *name;
    void (*read)(int mode, StmPollFn poll, StmOutputFn output);
    Render render;
    Beginning beginning;
    bool has_header; // in CSV, shown before anything has come; its beginning is it
};

Action declare_frames(CLI::App &command, const FrameKind &kind);

} // namespace stmctl
