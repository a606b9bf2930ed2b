// Results as JSON, for scripts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace stmctl
{

// In quotation marks; a byte that is not part of a UTF-8 character becomes the character with its
// number.
std::string json_string(std::string_view text);

// Members in the order in which they are added. One without a value is null.
class JsonObject
{
  public:
    void add(std::string_view name, std::string_view text);
    void add(std::string_view name, const char *text) { add(name, std::string_view(text)); }
    void add(std::string_view name, bool value);
    void add(std::string_view name, int64_t number);
    void add(std::string_view name, double number, int decimals);
    void add_null(std::string_view name);
    void add_json(std::string_view name, std::string_view json); // an object or an array

    std::string json() const { return '{' + members_ + '}'; }

  private:
    std::string members_;
};

class JsonArray
{
  public:
    void add_json(std::string_view json);
    std::string json() const { return '[' + elements_ + ']'; }

  private:
    std::string elements_;
};

} // namespace stmctl
