// What the co-processor has to say to a command: an answer, and perhaps a reply after it.
#pragma once

#include "simulator/board/board.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

enum class ResponseKind : uint8_t {
    result, // an answer and nothing else
    reply,  // its length is the answer
    values, // of the converter, as a block
    raw,    // the reply comes at once
    block,  // of records, whose length has its high byte first
};

// Where the bytes of a reply are until they are fetched. Between a command and its reply nothing can
// change them, for any other command would end the matter.
enum class ReplyAt : uint8_t {
    buffer, // in the state
    text,   // the answer text of the command
    memory, // from an address on
};

struct Response {
    Block block;          // of records
    uint16_t answer = 0;  // a result, or the length of the reply
    uint16_t size = 0;    // of the reply; LARGEST_BLOCK at most if it is in the buffer
    uint16_t address = 0; // of a reply in the memory
    ResponseKind kind = ResponseKind::result;
    ReplyAt at = ReplyAt::buffer;
    uint8_t code = 0; // of the command
    uint8_t unused[3] = {};
};

// Whether there is an answer before the reply, and in which order its bytes come.
bool has_answer(const Response &response);
bool is_big_endian(const Response &response);

// The bytes that a host fetches after the answer.
size_t fetched_size(const Response &response);

// The words of people who read the dialogue for both exchanges.
std::string answer_note(const Response &response);
std::string reply_note(const Board &board, const Response &response);

// Copies the reply, or as much of it as has room.
void copy_reply(const Board &board, const Response &response, std::span<const uint8_t> buffer,
                std::span<uint8_t> miso);

} // namespace simulator
