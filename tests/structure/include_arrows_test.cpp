// Goal: the folders include each other only along their arrows, and always from the root.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

// What a folder may include besides itself: folders, or single files of them.
using Arrows = std::map<std::string, std::vector<std::string>>;

const std::vector<std::string> EVERYTHING = {"app",         "link",    "download",
                                             "acquisition", "readout", "simulator",
                                             "ringbuffer",  "stmctl",  "tests"};
// The rooms of stmctl, from the ground up: each may include those below it that it needs.
const std::vector<std::string> STMCTL_GROUND = {"stmctl/process", "link/stm_com_funcs.h"};
const std::vector<std::string> STMCTL_BASE = {"stmctl/module", "stmctl/command_line",
                                              "stmctl/output", "stmctl/process",
                                              "link/stm_com_funcs.h"};

// What every room of the virtual board may use, and what those above the board itself do.
const std::vector<std::string> SIMULATOR_GROUND = {"simulator/words", "simulator/wire"};
const std::vector<std::string> SIMULATOR_BOARD = {"simulator/board", "simulator/commands",
                                                  "simulator/faults", "simulator/words",
                                                  "simulator/wire"};

std::vector<std::string> on(std::vector<std::string> folders,
                            const std::vector<std::string> &others)
{
    folders.insert(folders.end(), others.begin(), others.end());
    return folders;
}

const Arrows ARROWS = {
    {"link", {}},
    {"download", {"link"}},
    {"acquisition", {"link"}},
    {"readout", {"link"}},
    {"ringbuffer", {"readout", "link"}},
    {"app", {"link/stm_com_funcs.h"}},
    {"stmctl", on(STMCTL_BASE, {"stmctl/settings", "stmctl/mode", "stmctl/memory", "stmctl/flash",
                                "stmctl/records", "stmctl/ring", "stmctl/plot", "stmctl/doctor"})},
    {"stmctl/process", {"link/stm_com_funcs.h"}},
    {"stmctl/output", STMCTL_GROUND},
    {"stmctl/command_line", on(STMCTL_GROUND, {"stmctl/output"})},
    {"stmctl/module", on(STMCTL_GROUND, {"stmctl/output", "stmctl/command_line"})},
    {"stmctl/record", STMCTL_BASE},
    {"stmctl/stream", on(STMCTL_BASE, {"stmctl/record"})},
    {"stmctl/settings", STMCTL_BASE},
    {"stmctl/mode", STMCTL_BASE},
    {"stmctl/memory", STMCTL_BASE},
    {"stmctl/flash", STMCTL_BASE},
    {"stmctl/records", on(STMCTL_BASE, {"stmctl/record", "stmctl/stream"})},
    {"stmctl/ring", on(STMCTL_BASE, {"stmctl/record", "stmctl/stream"})},
    {"stmctl/plot", on(STMCTL_BASE, {"stmctl/record"})},
    {"stmctl/doctor", on(STMCTL_BASE, {"stmctl/mode", "stmctl/plot", "stmctl/ring"})},
    {"examples", {"link/stm_com_funcs.h"}},
    {"simulator/words", {}},
    {"simulator/wire", {}},
    {"simulator/commands", SIMULATOR_GROUND},
    {"simulator/faults", SIMULATOR_GROUND},
    {"simulator/measuring", on(SIMULATOR_GROUND, {"simulator/faults"})},
    {"simulator/board",
     on(SIMULATOR_GROUND, {"simulator/measuring", "simulator/faults", "simulator/commands"})},
    {"simulator/driver", SIMULATOR_BOARD},
    {"simulator/store", on(SIMULATOR_BOARD, {"simulator/driver"})},
    {"simulator/run", SIMULATOR_BOARD},
    {"simulator/preload",
     on(SIMULATOR_BOARD, {"simulator/driver", "simulator/store", "simulator/run"})},
    {"simulator/kernel",
     on(SIMULATOR_BOARD, {"simulator/driver", "simulator/store", "simulator/run"})},
    {"simulator/launcher",
     on(SIMULATOR_BOARD, {"simulator/driver", "simulator/store", "simulator/run"})},
    {"tests", EVERYTHING},
    {"fuzz", EVERYTHING},
    {"bench", EVERYTHING},
};

std::string top_folder(const std::string &path)
{
    return path.substr(0, path.find('/'));
}

// The folder that has arrows of its own: one at the top, or a room.
std::string folder_of(const std::string &path)
{
    const std::string folder = fs::path(path).parent_path().generic_string();
    return ARROWS.count(folder) != 0 ? folder : top_folder(path);
}

bool is_allowed(const std::string &folder, const std::string &target)
{
    const std::vector<std::string> &allowed = ARROWS.at(folder);
    return folder_of(target) == folder ||
           std::any_of(allowed.begin(), allowed.end(), [&target](const std::string &one) {
               return target == one || folder_of(target) == one || top_folder(target) == one;
           });
}

// The complaint about one line of a source file; existing tells whether a path from the root is a
// file of the tree.
using Exists = bool (*)(const std::string &path);

std::optional<std::string> complaint(const std::string &file, const std::string &line,
                                     Exists exists)
{
    const size_t hash = line.find_first_not_of(" \t");
    if (hash == std::string::npos || line[hash] != '#') {
        return std::nullopt;
    }
    const size_t word = line.find_first_not_of(" \t", hash + 1);
    if (word == std::string::npos || line.compare(word, 7, "include") != 0) {
        return std::nullopt;
    }
    const size_t begin = line.find_first_of("\"<", word);
    const size_t end = line.find_first_of("\">", begin + 1);
    if (begin == std::string::npos || end == std::string::npos) {
        return "names no file plainly";
    }
    const std::string target = line.substr(begin + 1, end - begin - 1);
    if (line[begin] == '<') {
        return exists(target) ? std::optional<std::string>("takes a file of ours for the system's")
                              : std::nullopt;
    }
    if (!exists(target) || fs::path(target).lexically_normal() != target) {
        return "is not written from the root";
    }
    if (ARROWS.count(folder_of(file)) == 0) {
        return "stands in a folder without arrows";
    }
    return is_allowed(folder_of(file), target)
               ? std::nullopt
               : std::optional<std::string>("goes against the arrows");
}

const fs::path ROOT = STRUCTURE_SOURCE_ROOT;

bool exists_in_tree(const std::string &path)
{
    return fs::is_regular_file(ROOT / path);
}

bool is_source(const fs::path &path)
{
    static const std::set<std::string> endings = {".c", ".cc", ".cpp", ".h", ".hh", ".hpp"};
    return endings.count(path.extension().string()) != 0;
}

// Build folders hold sources that are not ours.
bool is_walked(const fs::path &folder)
{
    const std::string name = folder.filename().string();
    return fs::is_directory(folder) && name[0] != '.' && name != "build" &&
           !fs::exists(folder / "CMakeCache.txt");
}

// All source files of the tree, by their paths from the root.
std::vector<std::string> source_files()
{
    std::vector<std::string> files;
    for (const fs::directory_entry &folder : fs::directory_iterator(ROOT)) {
        if (!is_walked(folder.path())) {
            continue;
        }
        for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder.path())) {
            if (entry.is_regular_file() && is_source(entry.path())) {
                files.push_back(entry.path().lexically_relative(ROOT).generic_string());
            }
        }
    }
    return files;
}

struct Example {
    const char *file;
    const char *line;
    const char *complaint; // null where there is none
};

class IncludeExample : public testing::TestWithParam<Example>
{
};

// The tree of the examples.
bool exists_in_example(const std::string &path)
{
    static const std::set<std::string> files = {
        "link/link.hpp",
        "link/stm_com_funcs.h",
        "download/image_frame.hpp",
        "app/update_options.hpp",
        "readout/render.hpp",
        "ringbuffer/ring.hpp",
        "simulator/driver/spi_device.hpp",
        "simulator/wire/crc.hpp",
        "simulator/board/flash.hpp",
        "tests/platform/dialogue.hpp",
        "stmctl/module/operation.hpp",
        "stmctl/ring/segment.hpp",
        "stmctl/commands.hpp",
    };
    return files.count(fs::path(path).lexically_normal().string()) != 0;
}

constexpr char ARROW[] = "goes against the arrows";
constexpr char FROM_ROOT[] = "is not written from the root";

} // namespace

TEST(IncludeArrows, all_sources_keep_to_them)
{
    for (const std::string &file : source_files()) {
        std::ifstream source(ROOT / file);
        std::string line;
        for (int number = 1; std::getline(source, line); ++number) {
            const std::optional<std::string> found = complaint(file, line, exists_in_tree);
            EXPECT_FALSE(found.has_value())
                << file << ":" << number << ": " << line << " " << *found;
        }
    }
}

TEST(IncludeArrows, the_walk_reaches_every_folder_of_the_product)
{
    const std::vector<std::string> files = source_files();
    for (const char *file :
         {"link/link.cpp", "link/stm_com_funcs.h", "download/download.cpp",
          "acquisition/settings.cpp", "readout/block_readout.cpp", "app/update.cpp",
          "examples/front_end.c", "tests/platform/dialogue.hpp", "stmctl/output/output.cpp"}) {
        EXPECT_NE(std::find(files.begin(), files.end(), file), files.end()) << file;
    }
}

TEST(IncludeArrows, every_folder_with_sources_has_its_arrows)
{
    for (const std::string &file : source_files()) {
        EXPECT_EQ(ARROWS.count(folder_of(file)), 1U) << file;
    }
}

// Following the arrows from a folder, nobody comes back to it.
TEST(IncludeArrows, no_arrows_form_a_circle)
{
    for (const auto &row : ARROWS) {
        std::set<std::string> reached;
        std::vector<std::string> to_walk = row.second;
        while (!to_walk.empty()) {
            const std::string at = to_walk.back();
            to_walk.pop_back();
            if (ARROWS.count(at) != 0 && row.first != "tests" && reached.insert(at).second) {
                to_walk.insert(to_walk.end(), ARROWS.at(at).begin(), ARROWS.at(at).end());
            }
        }
        EXPECT_EQ(reached.count(row.first), 0U) << row.first;
    }
}

TEST_P(IncludeExample, is_judged)
{
    const std::optional<std::string> found =
        complaint(GetParam().file, GetParam().line, exists_in_example);
    EXPECT_EQ(found.value_or("none"),
              GetParam().complaint == nullptr ? "none" : GetParam().complaint);
}

INSTANTIATE_TEST_SUITE_P(
    Good, IncludeExample,
    testing::Values(
        Example{"link/crc16.cpp", "#include \"link/stm_com_funcs.h\"", nullptr},
        Example{"link/link.cpp", "#include <fcntl.h>", nullptr},
        Example{"link/link.cpp", "#define INCLUDED \"app/update_options.hpp\"", nullptr},
        Example{"link/link.cpp", "// #include \"app/update_options.hpp\"", nullptr},
        Example{"link/link.cpp", "", nullptr}, Example{"link/link.cpp", "#", nullptr},
        Example{"download/download.cpp", "#include \"link/link.hpp\"", nullptr},
        Example{"download/download.cpp", "#include \"download/image_frame.hpp\"", nullptr},
        Example{"acquisition/queries.cpp", "#include \"link/link.hpp\"", nullptr},
        Example{"readout/render.cpp", "#include \"link/link.hpp\"", nullptr},
        Example{"ringbuffer/reader.cpp", "#include \"readout/render.hpp\"", nullptr},
        Example{"ringbuffer/ring.cpp", "#include \"link/link.hpp\"", nullptr},
        Example{"app/update.cpp", "#include \"link/stm_com_funcs.h\"", nullptr},
        Example{"app/update.cpp", "#include \"app/update_options.hpp\"", nullptr},
        Example{"stmctl/main.cpp", "#include \"link/stm_com_funcs.h\"", nullptr},
        Example{"stmctl/main.cpp", "#include \"stmctl/commands.hpp\"", nullptr},
        Example{"stmctl/commands.cpp", "#include \"stmctl/ring/segment.hpp\"", nullptr},
        Example{"stmctl/ring/read.cpp", "#include \"stmctl/module/operation.hpp\"", nullptr},
        Example{"examples/version.c", "#include \"link/stm_com_funcs.h\"", nullptr},
        Example{"simulator/preload/workbench.cpp", "#include \"simulator/board/flash.hpp\"",
                nullptr},
        Example{"tests/link/link_test.cpp", "#include \"link/link.hpp\"", nullptr},
        Example{"tests/link/link_test.cpp", "#include \"tests/platform/dialogue.hpp\"", nullptr},
        Example{"fuzz/reply.cpp", "#include \"simulator/board/flash.hpp\"", nullptr},
        Example{"bench/crc16.cpp", "#include \"link/link.hpp\"", nullptr}));

INSTANTIATE_TEST_SUITE_P(
    Bad, IncludeExample,
    testing::Values(
        Example{"link/link.cpp", "#include \"download/image_frame.hpp\"", ARROW},
        Example{"link/link.cpp", "#include \"simulator/wire/crc.hpp\"", ARROW},
        Example{"link/link.cpp", "  #  include   \"app/update_options.hpp\"", ARROW},
        Example{"download/download.cpp", "#include \"readout/render.hpp\"", ARROW},
        Example{"download/download.cpp", "#include \"app/update_options.hpp\"", ARROW},
        Example{"acquisition/queries.cpp", "#include \"download/image_frame.hpp\"", ARROW},
        Example{"readout/render.cpp", "#include \"ringbuffer/ring.hpp\"", ARROW},
        Example{"ringbuffer/ring.cpp", "#include \"download/image_frame.hpp\"", ARROW},
        Example{"app/update.cpp", "#include \"link/link.hpp\"", ARROW},
        Example{"app/update.cpp", "#include \"download/image_frame.hpp\"", ARROW},
        Example{"stmctl/main.cpp", "#include \"link/link.hpp\"", ARROW},
        Example{"stmctl/main.cpp", "#include \"app/update_options.hpp\"", ARROW},
        Example{"stmctl/module/device.cpp", "#include \"stmctl/ring/segment.hpp\"", ARROW},
        Example{"stmctl/flash/flash.cpp", "#include \"stmctl/ring/segment.hpp\"", ARROW},
        Example{"stmctl/ring/read.cpp", "#include \"stmctl/commands.hpp\"", ARROW},
        Example{"examples/version.c", "#include \"link/link.hpp\"", ARROW},
        Example{"simulator/board/coprocessor.cpp", "#include \"simulator/driver/spi_device.hpp\"",
                ARROW},
        Example{"simulator/wire/crc.cpp", "#include \"simulator/board/flash.hpp\"", ARROW},
        Example{"simulator/odd/crc.cpp", "#include \"simulator/board/flash.hpp\"",
                "stands in a folder without arrows"},
        Example{"simulator/board/coprocessor.cpp", "#include \"link/stm_com_funcs.h\"", ARROW},
        Example{"simulator/board/coprocessor.cpp", "#include \"tests/platform/dialogue.hpp\"",
                ARROW},
        Example{"download/download.cpp", "#include \"image_frame.hpp\"", FROM_ROOT},
        Example{"download/download.cpp", "#include \"../link/link.hpp\"", FROM_ROOT},
        Example{"download/download.cpp", "#include \"./link/link.hpp\"", FROM_ROOT},
        Example{"download/download.cpp", "#include \"link/../link/link.hpp\"", FROM_ROOT},
        Example{"link/link.cpp", "#include \"fcntl.h\"", FROM_ROOT},
        Example{"app/update.cpp", "#include <link/link.hpp>",
                "takes a file of ours for the system's"},
        Example{"link/link.cpp", "#include LINK_HEADER", "names no file plainly"},
        Example{"gadgets/box.cpp", "#include \"link/link.hpp\"",
                "stands in a folder without arrows"}));
