// A CSV as JSON.
#include "bench/yardstick/json_lines.hpp"

#include <sstream>
#include <vector>

namespace bench
{

namespace
{

std::vector<std::string> fields_of(const std::string &line)
{
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, ';');) {
        fields.push_back(field);
    }
    return fields;
}

} // namespace

std::string json_lines(const std::string &csv)
{
    std::istringstream lines(csv);
    std::string line;
    std::getline(lines, line);
    const std::vector<std::string> names = fields_of(line);
    std::string json;
    while (std::getline(lines, line)) {
        const std::vector<std::string> values = fields_of(line);
        char before = '{';
        for (size_t i = 0; i < values.size(); ++i) {
            json += before + names.at(i) + ':' + values[i];
            before = ',';
        }
        json += "}\n";
    }
    return json;
}

} // namespace bench
