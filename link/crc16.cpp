// CRC-16/GENIBUS: polynomial P = x^16 + x^12 + x^5 + 1, most significant bit first.
//
// Short inputs take one table look-up per byte. Longer ones are reduced a machine word at a time,
// without a table: squaring a polynomial over GF(2) only doubles its exponents, so that P^K is
// x^16K + x^12K + x^5K + 1 for every K that is a power of two. Hence, modulo P, bits at a distance
// of 16K may be removed and added again 4K, 11K and 16K bits further on:
//
//     K = a quarter of a word's bits:     1, 2.75 and 4 words further on    (fold)
//     K = a sixteenth of a word's bits:   all within the next word         (reduce)
//
// The relation is that of arXiv 2412.16398.
#include "link/bytes.hpp"
#include "link/stm_com_funcs.h"

#include <limits>

using namespace stm;

namespace
{

// Entry i is i shifted left by eight bits and divided by the CCITT polynomial 0x1021.
// clang-format off
constexpr uint16_t STM_CRC16_TABLE[256] = {
    0x0000, 0x1021, 0x2042, 0x3063, 0x4084, 0x50A5, 0x60C6, 0x70E7,
    0x8108, 0x9129, 0xA14A, 0xB16B, 0xC18C, 0xD1AD, 0xE1CE, 0xF1EF,
    0x1231, 0x0210, 0x3273, 0x2252, 0x52B5, 0x4294, 0x72F7, 0x62D6,
    0x9339, 0x8318, 0xB37B, 0xA35A, 0xD3BD, 0xC39C, 0xF3FF, 0xE3DE,
    0x2462, 0x3443, 0x0420, 0x1401, 0x64E6, 0x74C7, 0x44A4, 0x5485,
    0xA56A, 0xB54B, 0x8528, 0x9509, 0xE5EE, 0xF5CF, 0xC5AC, 0xD58D,
    0x3653, 0x2672, 0x1611, 0x0630, 0x76D7, 0x66F6, 0x5695, 0x46B4,
    0xB75B, 0xA77A, 0x9719, 0x8738, 0xF7DF, 0xE7FE, 0xD79D, 0xC7BC,
    0x48C4, 0x58E5, 0x6886, 0x78A7, 0x0840, 0x1861, 0x2802, 0x3823,
    0xC9CC, 0xD9ED, 0xE98E, 0xF9AF, 0x8948, 0x9969, 0xA90A, 0xB92B,
    0x5AF5, 0x4AD4, 0x7AB7, 0x6A96, 0x1A71, 0x0A50, 0x3A33, 0x2A12,
    0xDBFD, 0xCBDC, 0xFBBF, 0xEB9E, 0x9B79, 0x8B58, 0xBB3B, 0xAB1A,
    0x6CA6, 0x7C87, 0x4CE4, 0x5CC5, 0x2C22, 0x3C03, 0x0C60, 0x1C41,
    0xEDAE, 0xFD8F, 0xCDEC, 0xDDCD, 0xAD2A, 0xBD0B, 0x8D68, 0x9D49,
    0x7E97, 0x6EB6, 0x5ED5, 0x4EF4, 0x3E13, 0x2E32, 0x1E51, 0x0E70,
    0xFF9F, 0xEFBE, 0xDFDD, 0xCFFC, 0xBF1B, 0xAF3A, 0x9F59, 0x8F78,
    0x9188, 0x81A9, 0xB1CA, 0xA1EB, 0xD10C, 0xC12D, 0xF14E, 0xE16F,
    0x1080, 0x00A1, 0x30C2, 0x20E3, 0x5004, 0x4025, 0x7046, 0x6067,
    0x83B9, 0x9398, 0xA3FB, 0xB3DA, 0xC33D, 0xD31C, 0xE37F, 0xF35E,
    0x02B1, 0x1290, 0x22F3, 0x32D2, 0x4235, 0x5214, 0x6277, 0x7256,
    0xB5EA, 0xA5CB, 0x95A8, 0x8589, 0xF56E, 0xE54F, 0xD52C, 0xC50D,
    0x34E2, 0x24C3, 0x14A0, 0x0481, 0x7466, 0x6447, 0x5424, 0x4405,
    0xA7DB, 0xB7FA, 0x8799, 0x97B8, 0xE75F, 0xF77E, 0xC71D, 0xD73C,
    0x26D3, 0x36F2, 0x0691, 0x16B0, 0x6657, 0x7676, 0x4615, 0x5634,
    0xD94C, 0xC96D, 0xF90E, 0xE92F, 0x99C8, 0x89E9, 0xB98A, 0xA9AB,
    0x5844, 0x4865, 0x7806, 0x6827, 0x18C0, 0x08E1, 0x3882, 0x28A3,
    0xCB7D, 0xDB5C, 0xEB3F, 0xFB1E, 0x8BF9, 0x9BD8, 0xABBB, 0xBB9A,
    0x4A75, 0x5A54, 0x6A37, 0x7A16, 0x0AF1, 0x1AD0, 0x2AB3, 0x3A92,
    0xFD2E, 0xED0F, 0xDD6C, 0xCD4D, 0xBDAA, 0xAD8B, 0x9DE8, 0x8DC9,
    0x7C26, 0x6C07, 0x5C64, 0x4C45, 0x3CA2, 0x2C83, 0x1CE0, 0x0CC1,
    0xEF1F, 0xFF3E, 0xCF5D, 0xDF7C, 0xAF9B, 0xBFBA, 0x8FD9, 0x9FF8,
    0x6E17, 0x7E36, 0x4E55, 0x5E74, 0x2E93, 0x3EB2, 0x0ED1, 0x1EF0,
};
// clang-format on

consteval bool table_is_ccitt()
{
    for (uint32_t i = 0; i < 256; ++i) {
        uint32_t remainder = i << 8;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder << 1) ^ ((remainder & 0x8000) != 0 ? 0x11021 : 0);
        }
        if (STM_CRC16_TABLE[i] != remainder) {
            return false;
        }
    }
    return true;
}
static_assert(table_is_ccitt());

// What must be added to the next word when this one, T of 16K bits, is removed: T * x^16K modulo P.
// With the exponents above, that is S + S * x^5K + S * x^12K, where S is T plus what the shifts
// carry out of the word.
template <typename Word>
constexpr Word reduce(Word t)
{
    constexpr int K = std::numeric_limits<Word>::digits / 16;
    const auto s =
        static_cast<Word>(t ^ (t >> 4 * K) ^ (t >> 8 * K) ^ (t >> 12 * K) ^ (t >> 11 * K));
    return static_cast<Word>(s ^ (s << 5 * K) ^ (s << 12 * K));
}

constexpr uint16_t narrow(uint32_t word)
{
    return static_cast<uint16_t>(reduce(static_cast<uint16_t>(word >> 16)) ^ word);
}

constexpr uint16_t narrow(uint64_t word)
{
    return narrow(reduce(static_cast<uint32_t>(word >> 32)) ^ static_cast<uint32_t>(word));
}

constexpr uint16_t add_byte(uint16_t crc, uint8_t byte)
{
    return static_cast<uint16_t>(STM_CRC16_TABLE[byte ^ (crc >> 8)] ^ (crc << 8));
}

using Word = uintptr_t; // 32 bits on the board
constexpr int32_t WORD_BYTES = sizeof(Word);
constexpr int WORD_BITS = std::numeric_limits<Word>::digits;
constexpr int32_t SHORTEST_FOLDED = 2 * WORD_BYTES;

// The register's start value advanced by n bytes: it is added to the first n bytes.
struct Beginnings {
    uint16_t after[WORD_BYTES + 1];
};

consteval Beginnings beginnings()
{
    Beginnings all = {};
    uint16_t crc = 0; // the value that two zero bytes turn into 0xFFFF
    while (add_byte(add_byte(crc, 0), 0) != 0xFFFF) {
        ++crc;
    }
    for (uint16_t &value : all.after) {
        value = crc;
        crc = add_byte(crc, 0);
    }
    return all;
}
constexpr Beginnings BEGINNINGS = beginnings();

// Folds a word into the next one, which is loaded here, and into the two words that a distance of
// 2.75 words straddles; for the distance of four words it stays where it is. one, two and three
// collect what is to be added one, two and three words ahead. In the next step the four have
// rotated: one is then the word to be folded.
void fold(Word word, Word &one, Word &two, Word &three, const uint8_t *&data)
{
    one ^= get_be<Word>(data) ^ word;
    two ^= word >> 3 * WORD_BITS / 4;
    three ^= word << WORD_BITS / 4;
    data += WORD_BYTES;
}

// Starts with as many bytes as leave whole words, and continues word by word. The last words are
// reduced, because there is nothing further on to fold them into.
uint16_t folded_crc(const uint8_t *data, int32_t length)
{
    const int32_t head = (length - 1) % WORD_BYTES + 1;
    int32_t words = (length - head) / WORD_BYTES;
    Word word = get_be<Word>(data) >> (WORD_BITS - 8 * head) ^ BEGINNINGS.after[head];
    Word a = 0;
    Word b = 0;
    Word c = 0;
    data += head;
    for (; words >= 7; words -= 4) {
        fold(word, a, b, c, data);
        fold(a, b, c, word, data);
        fold(b, c, word, a, data);
        fold(c, word, a, b, data);
    }
    for (; words > 0; --words, data += WORD_BYTES) {
        word = get_be<Word>(data) ^ a ^ reduce(word);
        a = b;
        b = c;
        c = 0;
    }
    return reduce(narrow(word));
}

uint16_t table_crc(const uint8_t *data, int32_t length)
{
    uint16_t crc = 0xFFFF;
    for (int32_t i = 0; i < length; ++i) {
        crc = add_byte(crc, data[i]);
    }
    return crc;
}

} // namespace

uint16_t stm_crc16(const uint8_t *data, uint16_t length)
{
    const uint16_t crc =
        length < SHORTEST_FOLDED ? table_crc(data, length) : folded_crc(data, length);
    return static_cast<uint16_t>(~crc);
}
