// A folder for a board, which is there as long as the test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace simulator
{

class BoardFolder : public testing::Test
{
  protected:
    BoardFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "board-XXXXXX";
        parent = mkdtemp(name.data());
        path = parent / "board";
    }
    ~BoardFolder() override { std::filesystem::remove_all(parent); }

    std::string content(const char *name) const
    {
        std::ifstream file(path + '/' + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    std::filesystem::path parent;
    std::string path;
};

} // namespace simulator
