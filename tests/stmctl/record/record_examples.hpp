// Records as the module shows them, written out, for the tests of how stmctl handles them.
#pragma once

inline constexpr char BASE_HEADER[] =
    "\"nr\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
    "\"BE1\";\"BE2\";\"BE\";\"BE32_01_ext\";\"buffered\";\"checksum\";\n";
inline constexpr char OMEGA_HEADER[] =
    "\"nr\";\"omega_t\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
    "\"BE1\";\"BE2\";\"BE\";\"BE32_01_ext\";\"buffered\";\"checksum\";\n";
inline constexpr char TEMP_HEADER[] =
    "\"nr\";\"temp\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
    "\"BE1\";\"BE2\";\"BE\";\"buffered\";\"checksum\";\n";
inline constexpr char LIVE_TEMP_HEADER[] =
    "\"nr\";\"omega_t\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
    "\"BE1\";\"BE2\";\"BE\";\"buffered\";\"checksum\";\n";

inline constexpr char BASE_LINE[] = "7;1234;100;200;300;-600;10;20;30;-60;1;2;-3;4000000000;17;"
                                    "513;\n";
inline constexpr char OMEGA_LINE[] = "7;314;1234;100;200;300;-600;10;20;30;-60;1;2;-3;4000000000;"
                                     "17;513;\n";
inline constexpr char TEMP_LINE[] = "7;2350;1234;100;200;300;-600;10;20;30;-60;1;2;-3;17;513;\n";

inline constexpr char BASE_TEXT[] = "stm_uint8_t  nr   : 7\n"
                                    "stm_int32_t  rel_t: 1234\n\n"
                                    "stm_int32_t  U1e  : 100\n"
                                    "stm_int32_t  U2e  : 200\n"
                                    "stm_int32_t  U3e  : 300\n"
                                    "stm_int32_t  Uen  : -600\n\n"
                                    "stm_int32_t  I1   : 10\n"
                                    "stm_int32_t  I2   : 20\n"
                                    "stm_int32_t  I3   : 30\n"
                                    "stm_int32_t  -Ie  : -60\n\n"
                                    "stm_int16_t  BE1  : 1\n"
                                    "stm_int16_t  BE2  : 2\n"
                                    "stm_int8_t   BE   : -3\n"
                                    "stm_uint32_t   BE32_01_ext   : -294967296\n"
                                    "stm_uint8    buffered  : 17\n"
                                    "stm_int8_t   checksum  : 513\n\n";
inline constexpr char OMEGA_TEXT[] = "stm_uint8_t  nr   : 7\n"
                                     "stm_uint16_t  omega_t : 314\n"
                                     "stm_int32_t  rel_t: 1234\n\n"
                                     "stm_int32_t  U1e  : 100\n"
                                     "stm_int32_t  U2e  : 200\n"
                                     "stm_int32_t  U3e  : 300\n"
                                     "stm_int32_t  Uen  : -600\n\n"
                                     "stm_int32_t  I1   : 10\n"
                                     "stm_int32_t  I2   : 20\n"
                                     "stm_int32_t  I3   : 30\n"
                                     "stm_int32_t  -Ie  : -60\n\n"
                                     "stm_int16_t  BE1  : 1\n"
                                     "stm_int16_t  BE2  : 2\n"
                                     "stm_int8_t   BE   : -3\n"
                                     "stm_uint32_t   BE32_01_ext   : -294967296\n"
                                     "stm_uint8    buffered  : 17\n"
                                     "stm_int8_t   checksum  : 513\n\n";
inline constexpr char TEMP_TEXT[] = "stm_uint8_t  nr   : 7\n"
                                    "stm_uint16_t omega_t : 2350\n"
                                    "stm_int32_t  rel_t: 1234\n\n"
                                    "stm_int32_t  U1e  : 100\n"
                                    "stm_int32_t  U2e  : 200\n"
                                    "stm_int32_t  U3e  : 300\n"
                                    "stm_int32_t  Uen  : -600\n\n"
                                    "stm_int32_t  I1   : 10\n"
                                    "stm_int32_t  I2   : 20\n"
                                    "stm_int32_t  I3   : 30\n"
                                    "stm_int32_t  -Ie  : -60\n\n"
                                    "stm_int16_t  BE1  : 1\n"
                                    "stm_int16_t  BE2  : 2\n"
                                    "stm_int8_t   BE   : -3\n"
                                    "stm_uint8    buffered  : 17\n"
                                    "stm_int8_t   checksum  : 513\n\n";

// The least and the greatest value of each type, in turns.
inline constexpr char EXTREME_LINE[] =
    "255;4294967295;-2147483648;2147483647;-2147483648;2147483647;-2147483648;2147483647;"
    "-2147483648;2147483647;-2147483648;2147483647;-128;4294967295;255;65535;\n";
inline constexpr char EXTREME_TEXT[] = "stm_uint8_t  nr   : 255\n"
                                       "stm_int32_t  rel_t: -1\n\n"
                                       "stm_int32_t  U1e  : -2147483648\n"
                                       "stm_int32_t  U2e  : 2147483647\n"
                                       "stm_int32_t  U3e  : -2147483648\n"
                                       "stm_int32_t  Uen  : 2147483647\n\n"
                                       "stm_int32_t  I1   : -2147483648\n"
                                       "stm_int32_t  I2   : 2147483647\n"
                                       "stm_int32_t  I3   : -2147483648\n"
                                       "stm_int32_t  -Ie  : 2147483647\n\n"
                                       "stm_int16_t  BE1  : -2147483648\n"
                                       "stm_int16_t  BE2  : 2147483647\n"
                                       "stm_int8_t   BE   : -128\n"
                                       "stm_uint32_t   BE32_01_ext   : -1\n"
                                       "stm_uint8    buffered  : 255\n"
                                       "stm_int8_t   checksum  : 65535\n\n";
