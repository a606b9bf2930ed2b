// A document of the project taken apart: its headings, tables, fenced blocks and links.
#pragma once

#include <map>
#include <string>
#include <vector>

struct Document {
    std::string name; // from the project's root on
    std::vector<std::string> lines;
};

// A fenced block, with the word behind its first fence.
struct Block {
    std::string language;
    std::vector<std::string> lines;
};

using Row =
    std::vector<std::string>; // a table's cells, without the blanks and backticks around them

Document read_document(const std::string &name);

// README.md, CONTRIBUTING.md, CHANGELOG.md and all of docs/.
std::vector<std::string> document_names();

// The rows of all tables under a heading, "### Settings", up to the next heading, without their
// headings and rules.
std::vector<Row> rows_under(const Document &document, const std::string &heading);

// The same by their first columns; a dash is an empty cell.
std::map<std::string, Row> table_under(const Document &document, const std::string &heading);

// The prose in one line, however its lines are broken.
std::string flowing_text(const Document &document);

std::vector<Block> blocks_of(const Document &document);

// Lines outside fenced blocks, and outside indented ones.
std::vector<std::string> prose_of(const Document &document);

// The names by which a link reaches the headings: "### The ring's slot" is "the-rings-slot".
std::vector<std::string> anchors_of(const Document &document);

// What stands between two marks on a line of prose, each time: of "](" and ")" the targets of
// links.
std::vector<std::string> between(const Document &document, const std::string &begin,
                                 const std::string &end);
