// The records with a rotation time, written out: bytes, labelled text and CSV line.
#include "tests/readout/golden_records.hpp"

const char GOLDEN_OMEGA_HEADER[] =
    "\"nr\";\"omega_t\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
    "\"BE1\";\"BE2\";\"BE\";\"BE32_01_ext\";\"buffered\";\"checksum\";\n";

const std::vector<GoldenRecord> GOLDEN_OMEGA = {
    {"ordinary",
     {0x55, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B, 0x1C,
      0x1D, 0x1E, 0x1F, 0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29,
      0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F, 0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36,
      0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C, 0x3D, 0x3E, 0x3F, 0x40, 0x41, 0xAA, 0x9C},
     "stm_uint8_t  nr   : 17\n"
     "stm_uint16_t  omega_t : 4882\n"
     "stm_int32_t  rel_t: 387323156\n\n"
     "stm_int32_t  U1e  : 522067228\n"
     "stm_int32_t  U2e  : 589439264\n"
     "stm_int32_t  U3e  : 656811300\n"
     "stm_int32_t  Uen  : 454695192\n\n"
     "stm_int32_t  I1   : 791555372\n"
     "stm_int32_t  I2   : 858927408\n"
     "stm_int32_t  I3   : 926299444\n"
     "stm_int32_t  -Ie  : 724183336\n\n"
     "stm_int16_t  BE1  : 14648\n"
     "stm_int16_t  BE2  : 15162\n"
     "stm_int8_t   BE   : 60\n"
     "stm_uint32_t   BE32_01_ext   : 1077886525\n"
     "stm_uint8    buffered  : 65\n"
     "stm_int8_t   checksum  : 40106\n\n",
     "17;4882;387323156;522067228;589439264;656811300;454695192;791555372;858927408;926299444;"
     "724183336;14648;15162;60;1077886525;65;40106;\n"},
    {"with the sign in every byte",
     {0x55, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9, 0xCA, 0xCB, 0xCC,
      0xCD, 0xCE, 0xCF, 0xD0, 0xD1, 0xD2, 0xD3, 0xD4, 0xD5, 0xD6, 0xD7, 0xD8, 0xD9,
      0xDA, 0xDB, 0xDC, 0xDD, 0xDE, 0xDF, 0xE0, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6,
      0xE7, 0xE8, 0xE9, 0xEA, 0xEB, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0x4D, 0x91},
     "stm_uint8_t  nr   : 193\n"
     "stm_uint16_t  omega_t : 50114\n"
     "stm_int32_t  rel_t: -943274556\n\n"
     "stm_int32_t  U1e  : -808530484\n"
     "stm_int32_t  U2e  : -741158448\n"
     "stm_int32_t  U3e  : -673786412\n"
     "stm_int32_t  Uen  : -875902520\n\n"
     "stm_int32_t  I1   : -539042340\n"
     "stm_int32_t  I2   : -471670304\n"
     "stm_int32_t  I3   : -404298268\n"
     "stm_int32_t  -Ie  : -606414376\n\n"
     "stm_int16_t  BE1  : -5656\n"
     "stm_int16_t  BE2  : -5142\n"
     "stm_int8_t   BE   : -20\n"
     "stm_uint32_t   BE32_01_ext   : -252711187\n"
     "stm_uint8    buffered  : 241\n"
     "stm_int8_t   checksum  : 37197\n\n",
     "193;50114;3351692740;-808530484;-741158448;-673786412;-875902520;-539042340;-471670304;-"
     "404298268;-606414376;-5656;-5142;-20;4042256109;241;37197;\n"},
    {"of the greatest values",
     {0x55, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF,
      0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF,
      0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF,
      0x7F, 0xFF, 0x7F, 0xFF, 0x7F, 0x7F, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0x3A, 0xE9},
     "stm_uint8_t  nr   : 255\n"
     "stm_uint16_t  omega_t : 65535\n"
     "stm_int32_t  rel_t: 2147483647\n\n"
     "stm_int32_t  U1e  : 2147483647\n"
     "stm_int32_t  U2e  : 2147483647\n"
     "stm_int32_t  U3e  : 2147483647\n"
     "stm_int32_t  Uen  : 2147483647\n\n"
     "stm_int32_t  I1   : 2147483647\n"
     "stm_int32_t  I2   : 2147483647\n"
     "stm_int32_t  I3   : 2147483647\n"
     "stm_int32_t  -Ie  : 2147483647\n\n"
     "stm_int16_t  BE1  : 32767\n"
     "stm_int16_t  BE2  : 32767\n"
     "stm_int8_t   BE   : 127\n"
     "stm_uint32_t   BE32_01_ext   : 2147483647\n"
     "stm_uint8    buffered  : 255\n"
     "stm_int8_t   checksum  : 59706\n\n",
     "255;65535;2147483647;2147483647;2147483647;2147483647;2147483647;2147483647;2147483647;"
     "2147483647;2147483647;32767;32767;127;2147483647;255;59706;\n"},
    {"of the least values",
     {0x55, 0x80, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00,
      0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00,
      0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00,
      0x80, 0x00, 0x80, 0x00, 0x80, 0x80, 0x00, 0x00, 0x00, 0x80, 0x80, 0x24, 0x8D},
     "stm_uint8_t  nr   : 128\n"
     "stm_uint16_t  omega_t : 32768\n"
     "stm_int32_t  rel_t: -2147483648\n\n"
     "stm_int32_t  U1e  : -2147483648\n"
     "stm_int32_t  U2e  : -2147483648\n"
     "stm_int32_t  U3e  : -2147483648\n"
     "stm_int32_t  Uen  : -2147483648\n\n"
     "stm_int32_t  I1   : -2147483648\n"
     "stm_int32_t  I2   : -2147483648\n"
     "stm_int32_t  I3   : -2147483648\n"
     "stm_int32_t  -Ie  : -2147483648\n\n"
     "stm_int16_t  BE1  : -32768\n"
     "stm_int16_t  BE2  : -32768\n"
     "stm_int8_t   BE   : -128\n"
     "stm_uint32_t   BE32_01_ext   : -2147483648\n"
     "stm_uint8    buffered  : 128\n"
     "stm_int8_t   checksum  : 36132\n\n",
     "128;32768;2147483648;-2147483648;-2147483648;-2147483648;-2147483648;-2147483648;-2147483648;"
     "-2147483648;-2147483648;-32768;-32768;-128;2147483648;128;36132;\n"},
    {"of ones",
     {0x55, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
      0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xD4, 0x18},
     "stm_uint8_t  nr   : 255\n"
     "stm_uint16_t  omega_t : 65535\n"
     "stm_int32_t  rel_t: -1\n\n"
     "stm_int32_t  U1e  : -1\n"
     "stm_int32_t  U2e  : -1\n"
     "stm_int32_t  U3e  : -1\n"
     "stm_int32_t  Uen  : -1\n\n"
     "stm_int32_t  I1   : -1\n"
     "stm_int32_t  I2   : -1\n"
     "stm_int32_t  I3   : -1\n"
     "stm_int32_t  -Ie  : -1\n\n"
     "stm_int16_t  BE1  : -1\n"
     "stm_int16_t  BE2  : -1\n"
     "stm_int8_t   BE   : -1\n"
     "stm_uint32_t   BE32_01_ext   : -1\n"
     "stm_uint8    buffered  : 255\n"
     "stm_int8_t   checksum  : 6356\n\n",
     "255;65535;4294967295;-1;-1;-1;-1;-1;-1;-1;-1;-1;-1;-1;4294967295;255;6356;\n"},
    {"of zeros",
     {0x55, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x19, 0x19},
     "stm_uint8_t  nr   : 0\n"
     "stm_uint16_t  omega_t : 0\n"
     "stm_int32_t  rel_t: 0\n\n"
     "stm_int32_t  U1e  : 0\n"
     "stm_int32_t  U2e  : 0\n"
     "stm_int32_t  U3e  : 0\n"
     "stm_int32_t  Uen  : 0\n\n"
     "stm_int32_t  I1   : 0\n"
     "stm_int32_t  I2   : 0\n"
     "stm_int32_t  I3   : 0\n"
     "stm_int32_t  -Ie  : 0\n\n"
     "stm_int16_t  BE1  : 0\n"
     "stm_int16_t  BE2  : 0\n"
     "stm_int8_t   BE   : 0\n"
     "stm_uint32_t   BE32_01_ext   : 0\n"
     "stm_uint8    buffered  : 0\n"
     "stm_int8_t   checksum  : 6425\n\n",
     "0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;6425;\n"},
};
