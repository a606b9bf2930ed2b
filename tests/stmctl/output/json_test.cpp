// Goal: what scripts read as JSON is JSON, whatever a text contains.
#include "stmctl/output/json.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

TEST(Json, plain_text_is_unchanged)
{
    EXPECT_EQ(json_string(""), "\"\"");
    EXPECT_EQ(json_string(" board ~ / '"), "\" board ~ / '\"");
}

TEST(Json, what_json_does_not_take_is_escaped)
{
    EXPECT_EQ(json_string("a\"b\\c\n\x1F\x7F"), "\"a\\\"b\\\\c\\n\\u001f\\u007f\"");
    EXPECT_EQ(json_string(std::string_view("a\0b", 3)), "\"a\\u0000b\"");
}

TEST(Json, characters_of_utf8_stay)
{
    for (const char *text : {"\xC2\x80", "\xC3\xA4", "\xDF\xBF", "\xE0\xA0\x80", "\xE2\x82\xAC",
                             "\xED\x9F\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(json_string(text), '"' + std::string(text) + '"');
    }
}

TEST(Json, invalid_bytes_become_the_character_with_their_number)
{
    EXPECT_EQ(json_string("\xFF"), "\"\\u00ff\"");
    EXPECT_EQ(json_string("\xC1\x80"), "\"\\u00c1\\u0080\"");
    EXPECT_EQ(json_string("\xE4pfel"), "\"\\u00e4pfel\"") << "cut off by a letter";
    EXPECT_EQ(json_string("\xE2\x82"), "\"\\u00e2\\u0082\"") << "cut off by the end";
    EXPECT_EQ(json_string("\xE0\x9F\xBF"), "\"\\u00e0\\u009f\\u00bf\"") << "too long a form";
    EXPECT_EQ(json_string("\xED\xA0\x80"), "\"\\u00ed\\u00a0\\u0080\"") << "half of a pair";
    EXPECT_EQ(json_string("\xF0\x8F\xBF\xBF"), "\"\\u00f0\\u008f\\u00bf\\u00bf\"");
    EXPECT_EQ(json_string("\xF4\x90\x80\x80"), "\"\\u00f4\\u0090\\u0080\\u0080\"");
    EXPECT_EQ(json_string("\xF5\x80\x80\x80"), "\"\\u00f5\\u0080\\u0080\\u0080\"");
}

TEST(Json, members_keep_their_order)
{
    JsonObject object;
    EXPECT_EQ(object.json(), "{}");
    object.add("name", "sampletime");
    object.add("code", int64_t{-3});
    object.add("good", true);
    object.add("bad", false);
    object.add("share", 2.0 / 3, 3);
    object.add_null("unit");
    JsonArray list;
    EXPECT_EQ(list.json(), "[]");
    list.add_json("1");
    list.add_json("{}");
    object.add_json("list", list.json());
    EXPECT_EQ(object.json(), "{\"name\":\"sampletime\",\"code\":-3,\"good\":true,\"bad\":false,"
                             "\"share\":0.667,\"unit\":null,\"list\":[1,{}]}");
}

} // namespace
