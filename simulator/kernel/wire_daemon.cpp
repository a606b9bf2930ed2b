// The process at the other end of the kernel's wire: reads each message from the controller's device, lets
// the board answer it, and writes the answer, until it is killed.
#include "simulator/kernel/served_board.hpp"
#include "simulator/kernel/wire_message.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace
{

using simulator::RunOptions;
using simulator::ServedBoard;

constexpr size_t LONGEST_MESSAGE = 1'048'576; // bytes

constexpr char USAGE[] = "usage: wire-daemon DEVICE FOLDER TRANSCRIPT [FAULT...]\n";

int fail(const std::string &why)
{
    fprintf(stderr, "wire-daemon: %s\n", why.c_str());
    return 1;
}

std::string take_arguments(int argc, char **argv, RunOptions &options)
{
    std::string error;
    options.directory = argv[2];
    options.transcript = argv[3];
    for (int i = 4; i < argc && error.empty(); ++i) {
        simulator::add_fault(options, argv[i], error);
    }
    return error;
}

// The message's head and bytes, and the answer's.
struct Wire {
    int fd = -1;
    wire_message head = {};
    std::vector<uint8_t> message = std::vector<uint8_t>(sizeof(wire_message) + LONGEST_MESSAGE);
    std::vector<uint8_t> answer;
};

bool read_message(Wire &wire)
{
    const ssize_t size = read(wire.fd, wire.message.data(), wire.message.size());
    if (size < static_cast<ssize_t>(sizeof(wire.head))) {
        return false;
    }
    memcpy(&wire.head, wire.message.data(), sizeof(wire.head));
    return static_cast<size_t>(size) == sizeof(wire.head) + wire.head.length;
}

bool serve(Wire &wire, ServedBoard &board)
{
    wire.answer.assign(sizeof(wire_answer) + wire.head.length, 0);
    const std::span<uint8_t> mosi(wire.message.data() + sizeof(wire.head), wire.head.length);
    const std::span<uint8_t> miso(wire.answer.data() + sizeof(wire_answer), wire.head.length);
    wire_answer head = {};
    head.length = wire.head.length;
    head.status = board.exchange(
        {mosi, miso, wire.head.spi_mode, std::chrono::nanoseconds(wire.head.wire_ns)});
    memcpy(wire.answer.data(), &head, sizeof(head));
    return write(wire.fd, wire.answer.data(), wire.answer.size()) ==
           static_cast<ssize_t>(wire.answer.size());
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 4) {
        fputs(USAGE, stderr);
        return 2;
    }
    RunOptions options;
    std::string error = take_arguments(argc, argv, options);
    if (!error.empty()) {
        return fail(error);
    }
    ServedBoard board(options);
    error = board.begin();
    if (!error.empty()) {
        return fail(error);
    }
    Wire wire;
    wire.fd = open(argv[1], O_RDWR | O_CLOEXEC);
    if (wire.fd < 0) {
        return fail(std::string(argv[1]) + ": " + strerror(errno));
    }
    puts("ready");
    fflush(stdout);
    while (read_message(wire) && serve(wire, board) && board.error().empty()) {
    }
    return fail(board.error().empty() ? strerror(errno) : board.error());
}
