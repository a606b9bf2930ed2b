// What the command line of update asks for.
#pragma once

// Kept: the gap between 1 and 6, and the value 99.
enum UpdateAction {
    ACTION_FIRMWARE = 0,
    ACTION_BOOTER = 1,
    ACTION_VERSION = 6,
    ACTION_STATE = 7,
    ACTION_START = 8,
    ACTION_RESET = 9,
    ACTION_INVALID = 99,
};

inline constexpr int FILE_NAME_SIZE = 255;

struct UpdateOptions {
    UpdateAction action;
    bool has_file_name;
    char file_name[FILE_NAME_SIZE]; // NUL-terminated; valid if has_file_name
};

// Reads the arguments. Without a known option, the usage text is printed; an image's file name that
// is too long is reported on standard error. Both end the process with status 1.
UpdateOptions parse_options(int argc, char **argv);
