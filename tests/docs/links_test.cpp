// What the documents point to is there: files, folders, and headings.
#include "tests/docs/document.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace
{

namespace fs = std::filesystem;

const fs::path ROOT = DOCS_ROOT;

// A link as it stands in a document: relative to the document's folder, with or without a heading.
struct Target {
    std::string file; // from the project's root on; the document itself where the link names none
    std::string heading;
};

Target target_of(const std::string &link, const std::string &document)
{
    const size_t hash = link.find('#');
    const std::string file = link.substr(0, hash);
    const std::string heading = hash == std::string::npos ? "" : link.substr(hash + 1);
    if (file.empty()) {
        return {document, heading};
    }
    return {(fs::path(document).parent_path() / file).lexically_normal().string(), heading};
}

bool has_heading(const Target &target)
{
    return std::ranges::count(anchors_of(read_document(target.file)), target.heading) == 1;
}

// A name in backticks that begins as a path of the project does, and is no pattern.
bool names_a_path(const std::string &code)
{
    constexpr const char *FOLDERS[] = {"acquisition/", "app/",      "bench/", "docs/",
                                       "download/",    "examples/", "link/",  "readout/",
                                       "ringbuffer/",  "script/",   ".ci/",   "cmake/",
                                       "simulator/",   "stmctl/",   "tests/"};
    return code.find_first_of(" *<{") == std::string::npos &&
           std::ranges::any_of(FOLDERS, [&](const char *name) { return code.starts_with(name); });
}

// A test's name in ctest has no ending: its source is meant.
bool is_there(const std::string &path)
{
    return fs::exists(ROOT / path) || fs::exists(ROOT / "tests" / (path + "_test.cpp"));
}

TEST(Documents, link_only_to_files_and_headings_that_exist)
{
    int links = 0;
    for (const std::string &name : document_names()) {
        for (const std::string &link : between(read_document(name), "](", ")")) {
            if (link.starts_with("https://")) {
                continue;
            }
            ++links;
            const Target target = target_of(link, name);
            ASSERT_TRUE(fs::exists(ROOT / target.file)) << name << ": " << link;
            EXPECT_TRUE(target.heading.empty() || has_heading(target)) << name << ": " << link;
        }
    }
    EXPECT_GT(links, 5);
}

TEST(Documents, name_only_files_that_exist)
{
    std::vector<std::string> paths;
    for (const std::string &name : document_names()) {
        std::ranges::copy_if(between(read_document(name), "`", "`"), std::back_inserter(paths),
                             names_a_path);
    }
    for (const std::string &path : paths) {
        EXPECT_TRUE(is_there(path)) << path;
    }
    EXPECT_GT(paths.size(), 40U);
}

TEST(Documents, of_a_subject_have_each_heading_once)
{
    for (const std::string &name : document_names()) {
        std::vector<std::string> anchors = anchors_of(read_document(name));
        if (name == "CHANGELOG.md") {
            continue; // each version has the same ones
        }
        std::ranges::sort(anchors);
        EXPECT_EQ(std::ranges::adjacent_find(anchors), anchors.end()) << name;
    }
}

} // namespace
