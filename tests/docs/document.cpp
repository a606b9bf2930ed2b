// A document of the project taken apart.
#include "tests/docs/document.hpp"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace
{

namespace fs = std::filesystem;

bool is_fence(const std::string &line)
{
    return line.starts_with("```");
}

bool is_heading(const std::string &line)
{
    return line.starts_with("#");
}

std::string trimmed(const std::string &cell)
{
    const size_t first = cell.find_first_not_of(' ');
    const size_t last = cell.find_last_not_of(' ');
    std::string text = first == std::string::npos ? "" : cell.substr(first, last - first + 1);
    const bool is_code = text.size() > 2 && text.front() == '`' && text.back() == '`' &&
                         std::ranges::count(text, '`') == 2;
    return is_code ? text.substr(1, text.size() - 2) : text;
}

// A bar behind a backslash belongs to its cell.
Row cells_of(const std::string &line)
{
    Row cells;
    std::string cell;
    for (size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '|' && line[i - 1] != '\\') {
            cells.push_back(trimmed(cell));
            cell.clear();
        } else {
            cell += line[i];
        }
    }
    return cells;
}

} // namespace

Document read_document(const std::string &name)
{
    std::ifstream file(fs::path(DOCS_ROOT) / name);
    if (!file) {
        throw std::runtime_error("no document " + name);
    }
    Document document{name, {}};
    for (std::string line; std::getline(file, line);) {
        document.lines.push_back(line);
    }
    return document;
}

std::vector<std::string> document_names()
{
    std::vector<std::string> names = {"README.md", "CONTRIBUTING.md", "CHANGELOG.md"};
    for (const auto &entry : fs::directory_iterator(fs::path(DOCS_ROOT) / "docs")) {
        if (entry.path().extension() == ".md") {
            names.push_back("docs/" + entry.path().filename().string());
        }
    }
    std::ranges::sort(names);
    return names;
}

std::vector<Row> rows_under(const Document &document, const std::string &heading)
{
    const std::vector<std::string> lines = prose_of(document);
    auto line = std::ranges::find(lines, heading);
    if (line == lines.end()) {
        throw std::runtime_error(document.name + " has no heading " + heading);
    }
    std::vector<Row> rows;
    for (++line; line != lines.end() && !is_heading(*line); ++line) {
        if (line->starts_with("|---")) {
            rows.pop_back(); // the line before was the table's heading
        } else if (line->starts_with("|")) {
            rows.push_back(cells_of(*line));
        }
    }
    return rows;
}

std::map<std::string, Row> table_under(const Document &document, const std::string &heading)
{
    std::map<std::string, Row> table;
    for (Row row : rows_under(document, heading)) {
        std::ranges::replace(row, "–", "");
        const std::string key = row.at(0);
        row.erase(row.begin());
        if (!table.emplace(key, row).second) {
            throw std::runtime_error(document.name + " has two rows of " + key);
        }
    }
    return table;
}

std::string flowing_text(const Document &document)
{
    std::string text;
    for (const std::string &line : prose_of(document)) {
        text += line.substr(std::min(line.find_first_not_of(' '), line.size())) + ' ';
    }
    return text;
}

std::vector<Block> blocks_of(const Document &document)
{
    std::vector<Block> blocks;
    bool inside = false;
    for (const std::string &line : document.lines) {
        if (is_fence(line)) {
            inside = !inside;
            if (inside) {
                blocks.push_back({line.substr(3), {}});
            }
        } else if (inside) {
            blocks.back().lines.push_back(line);
        }
    }
    return blocks;
}

std::vector<std::string> prose_of(const Document &document)
{
    std::vector<std::string> prose;
    bool inside = false;
    for (const std::string &line : document.lines) {
        if (is_fence(line)) {
            inside = !inside;
        } else if (!inside && !line.starts_with("    ")) {
            prose.push_back(line);
        }
    }
    return prose;
}

std::vector<std::string> anchors_of(const Document &document)
{
    std::vector<std::string> anchors;
    for (const std::string &line : prose_of(document)) {
        if (!is_heading(line)) {
            continue;
        }
        std::string anchor;
        for (const char c : line.substr(line.find(' ') + 1)) {
            if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_') {
                anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            } else if (c == ' ') {
                anchor += '-';
            }
        }
        anchors.push_back(anchor);
    }
    return anchors;
}

std::vector<std::string> between(const Document &document, const std::string &begin,
                                 const std::string &end)
{
    std::vector<std::string> found;
    for (const std::string &line : prose_of(document)) {
        for (size_t at = line.find(begin); at != std::string::npos;) {
            const size_t from = at + begin.size();
            const size_t to = std::min(line.find(end, from), line.size());
            found.push_back(line.substr(from, to - from));
            at = line.find(begin, std::min(to + end.size(), line.size()));
        }
    }
    return found;
}
