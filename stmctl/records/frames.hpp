// What adc and raw have in common: they read frames one after another.
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

// How the text of a frame with this number is shown.
using Render = std::string (*)(const std::string &text, const FrameLook &look, uint64_t number);

// How a CSV of frames begins.
using Beginning = std::string (*)(const FrameLook &look);

struct FrameKind {
    const char *name;
    void (*read)(int mode, StmPollFn poll, StmOutputFn output);
    Render render;
    Beginning beginning;
    bool has_header; // in CSV, shown before anything has come: the beginning
};

Action declare_frames(CLI::App &command, const FrameKind &kind);

} // namespace stmctl
