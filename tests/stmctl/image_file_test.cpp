// Goal: a download sends the image as it was when it was checked.
#include "stmctl/flash/image_file.hpp"
#include "stmctl/process/failure.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace stmctl;

namespace
{

class Image : public testing::Test
{
  protected:
    Image() : path_(testing::TempDir() + "image-" + std::to_string(getpid())) {}
    ~Image() override { std::filesystem::remove(path_); }

    const std::string &path() const { return path_; }
    void write(const std::string &content) const { std::ofstream(path_) << content; }

    static std::string sent(ImageFile &image)
    {
        std::string content(image.size() + 1, '?');
        content.resize(fread(content.data(), 1, content.size(), image.rewound()));
        return content;
    }

  private:
    std::string path_;
};

TEST_F(Image, is_sent_as_it_was_even_if_the_file_changes)
{
    write(std::string(5000, 'a'));
    ImageFile image(path(), 5000);
    write(std::string(5000, 'b'));
    EXPECT_EQ(sent(image), std::string(5000, 'a'));
    std::filesystem::remove(path());
    EXPECT_EQ(sent(image), std::string(5000, 'a')) << "for another attempt";
}

TEST_F(Image, has_every_size_up_to_its_limit)
{
    for (const size_t size :
         {size_t{1}, size_t{4095}, size_t{4096}, size_t{4097}, size_t{507904}}) {
        write(std::string(size, 'x'));
        ImageFile image(path(), static_cast<uint32_t>(size));
        EXPECT_EQ(image.size(), size);
        EXPECT_EQ(sent(image), std::string(size, 'x'));
        if (size > 1) {
            EXPECT_THROW(ImageFile(path(), static_cast<uint32_t>(size - 1)), Failure);
        }
    }
}

TEST_F(Image, that_is_too_long_is_told_with_its_size)
{
    for (const auto &[size, words] : {std::pair(1, "1 byte"), std::pair(2, "2 bytes")}) {
        write(std::string(static_cast<size_t>(size), 'x'));
        try {
            ImageFile(path(), static_cast<uint32_t>(size - 1));
            FAIL() << "not refused";
        } catch (const Failure &failure) {
            EXPECT_EQ(std::string(failure.what()),
                      path() + ": " + words + ", but at most " + std::to_string(size - 1) + " fit");
        }
    }
}

// Some files of the kernel claim the size of a page but hold a few bytes.
TEST_F(Image, that_holds_less_than_its_size_is_refused)
{
    const std::string file = "/sys/class/net/lo/mtu";
    std::error_code error;
    if (std::filesystem::file_size(file, error) < 1000 || error) {
        GTEST_SKIP() << "there is no such file here";
    }
    try {
        ImageFile(file, 100000);
        FAIL() << "not refused";
    } catch (const Failure &failure) {
        EXPECT_EQ(std::string(failure.what()), file + ": the file changed while it was being read");
    }
}

} // namespace
