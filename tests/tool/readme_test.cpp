// What README.md promises: its program in C, and how a script learns whether a download succeeded.
#include "tests/tool/workbench.hpp"

namespace
{

class Readme : public Workbench
{
  protected:
    // The script of README.md, with update replaced by the words that run it here.
    int script_says(const Words &options)
    {
        std::string update;
        for (const std::string &word : on_board(options, {update_program()})) {
            update += "'" + word + "' ";
        }
        const std::string script =
            "size=$(stat -c %s image.bin)\n" + update +
            "-firmware image.bin | tee log | tail -n 1 | grep -qx \"Transmitted data: $size Byte\"";
        return run({"sh", "-c", script}).status;
    }
};

TEST_F(Readme, its_program_shows_the_running_mode)
{
    const Result result = run(on_board({}, {probe_program("readme_example")}));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "2\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(Readme, its_script_tells_a_good_download_from_a_failed_one)
{
    write_file("image.bin", noise(3000, 4));
    EXPECT_EQ(script_says({}), 0);
    EXPECT_EQ(script_says({"--fault", "late=700"}), 0);
    for (const char *fault : {"silence", "bus-inactive@2", "checksum-error@1",
                              "address-error@header", "exchange@8", "no-device", "late@2=1500"}) {
        EXPECT_EQ(script_says({"--fault", fault}), 1) << fault;
    }
    write_file("image.bin", noise(600000, 4));
    EXPECT_EQ(script_says({}), 1);
}

} // namespace
