// The string literals of a source file, as far as its lines tell them: those of includes and
// comments are left out, and those that stand side by side are one.
#pragma once

#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

struct SourceLiteral {
    std::string text;   // a \n is a newline; other escapes stay as they are written
    std::string before; // the code in front of it, since the end of the statement before
};

class SourceLiterals
{
  public:
    explicit SourceLiterals(const std::filesystem::path &file)
    {
        std::ifstream stream(file);
        source_ = {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    std::vector<SourceLiteral> all()
    {
        while (at_ < source_.size()) {
            step();
        }
        return std::move(found_);
    }

  private:
    bool is_here(const char *words) const
    {
        return source_.compare(at_, strlen(words), words) == 0;
    }

    void skip_to(const char *end)
    {
        const size_t found = source_.find(end, at_ + 1);
        at_ = found == std::string::npos ? source_.size() : found + strlen(end);
    }

    void step()
    {
        const bool line_begins = at_ == 0 || source_[at_ - 1] == '\n';
        if (is_here("//") || (line_begins && is_here("#"))) {
            skip_to("\n");
            --at_; // the next line begins behind it
        } else if (is_here("/*")) {
            skip_to("*/");
        } else if (is_here("R\"(")) {
            skip_to(")\"");
        } else if (is_here("'") && (at_ == 0 || isalnum(source_[at_ - 1]) == 0)) {
            at_ += source_[at_ + 1] == '\\' ? 1 : 0;
            skip_to("'");
        } else if (is_here("\"")) {
            take();
        } else {
            take_code(source_[at_++]);
        }
    }

    void take_code(char c)
    {
        if (c == ';' || c == '{' || c == '}') {
            before_.clear();
        } else if (isspace(c) == 0) {
            before_ += c;
            follows_literal_ = false;
        }
    }

    void take()
    {
        std::string text;
        for (++at_; at_ < source_.size() && source_[at_] != '"'; ++at_) {
            if (is_here("\\n")) {
                text += '\n';
                ++at_;
                continue;
            }
            if (source_[at_] == '\\') {
                text += source_[at_++];
            }
            text += source_[at_];
        }
        ++at_;
        if (follows_literal_) {
            found_.back().text += text;
        } else {
            found_.push_back({text, before_});
        }
        follows_literal_ = true;
    }

    std::string source_;
    size_t at_ = 0;
    std::string before_;
    bool follows_literal_ = false;
    std::vector<SourceLiteral> found_;
};
