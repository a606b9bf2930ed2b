// Goal: lines of settings are read in each of their forms, and mistakes in them with their lines.
#include "stmctl/settings/settings_file.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

using Texts = std::vector<std::string>;

// "NAME CHANNEL NUMBER" of each setting.
Texts settings_in(const std::string &text)
{
    const SettingsFile file = read_settings("file", text);
    EXPECT_EQ(file.mistakes, Texts());
    Texts all;
    for (const Setting &setting : file.settings) {
        all.push_back(setting.name() + " " + std::to_string(setting.values.number));
    }
    return all;
}

Texts mistakes_in(const std::string &text)
{
    return read_settings("file", text).mistakes;
}

TEST(SettingsFile, may_have_comments_blanks_and_a_sign_of_equality)
{
    EXPECT_EQ(settings_in("# all of it\n"
                          "\n"
                          "  sampletime\t100   # milliseconds\n"
                          "adc-word-54 3 = 40000\n"
                          "adc-word-55 3=7\n"
                          "#interpolation 1\n"
                          "sampleskip 3"),
              (Texts{"sampletime 100", "adc-word-54 3 40000", "adc-word-55 3 7", "sampleskip 3"}));
    EXPECT_EQ(settings_in(""), Texts());
}

TEST(SettingsFile, may_have_values_with_a_sign_as_queries_answer_them)
{
    EXPECT_EQ(settings_in("adc-word-54 3 -25536\nbe-long 0 -1\n"),
              (Texts{"adc-word-54 3 40000", "be-long 0 4294967295"}));
    EXPECT_EQ(settings_in("adc-word-54 0 -32768\n"), Texts{"adc-word-54 0 32768"});
}

TEST(SettingsFile, may_have_values_with_decimals_which_have_no_sign)
{
    const SettingsFile file = read_settings("file", "adc-value 1 12.5\nadc-value-pair 7 2 0.25\n");
    ASSERT_EQ(file.settings.size(), 2U);
    EXPECT_EQ(file.settings[0].values.channel, 1);
    EXPECT_EQ(file.settings[0].values.first, 12.5F);
    EXPECT_EQ(file.settings[1].values.first, 2.0F);
    EXPECT_EQ(file.settings[1].values.second, 0.25F);
    EXPECT_EQ(mistakes_in("adc-value 1 -1\n").size(), 1U);
}

TEST(SettingsFile, tells_what_can_only_be_asked_for)
{
    const SettingsFile file = read_settings("file", "byte-73 5\nbe-long 2 5\nbe-long 7\n"
                                                    "be-long 1 5\n");
    EXPECT_EQ(file.only_asked, (Texts{"byte-73", "be-long 2", "be-long 7"}));
    EXPECT_EQ(file.settings.size(), 1U) << "channel 1 can be set";
    EXPECT_EQ(file.mistakes, Texts());
}

TEST(SettingsFile, tells_each_mistake_with_its_line)
{
    const Texts mistakes = mistakes_in("\n# comment\nnonsense 1\nsampletime 100\nsampletime 200\n"
                                       "be-long 8 1\nbe-long\nadc-word-54 3 -32769\n"
                                       "sampletime -1x\n");
    ASSERT_EQ(mistakes.size(), 6U);
    EXPECT_EQ(mistakes[0], "file:3: unknown setting 'nonsense'; see stmctl list");
    EXPECT_EQ(mistakes[1], "file:5: sampletime is already set in line 4");
    EXPECT_TRUE(mistakes[2].starts_with("file:6: ")) << mistakes[2];
    EXPECT_TRUE(mistakes[3].starts_with("file:7: ")) << mistakes[3];
    EXPECT_NE(mistakes[4].find("-32769"), std::string::npos) << mistakes[4];
    EXPECT_NE(mistakes[5].find("-1x"), std::string::npos) << mistakes[5];
}

TEST(SettingsFile, may_set_each_channel_once)
{
    EXPECT_EQ(settings_in("be-long 0 1\nbe-long 1 1\n"), (Texts{"be-long 0 1", "be-long 1 1"}));
    EXPECT_EQ(mistakes_in("be-long 1 1\nbe-long 0 1\nbe-long 1 2\n"),
              Texts{"file:3: be-long 1 is already set in line 1"});
}

} // namespace
