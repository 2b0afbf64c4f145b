#include "records/key_value_text.h"

#include <algorithm>
#include <utility>

namespace tarno2 {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

/// One pass over a text; `run` may be called once.
class Normaliser {
public:
    explicit Normaliser(std::string_view text)
        : text_(text), lineEnd_(text.find('\r') == std::string_view::npos ? "\n" : kLineEnd) {
        result_.reserve(text.size());
    }

    std::string run() {
        while (position_ < text_.size()) {
            step();
        }
        return std::move(result_);
    }

private:
    void step() {
        const char c = text_[position_];
        if (lineEndsAt(position_)) {
            position_ += lineEnd_.size();
            endLine();
            return;
        }
        ++position_;
        if (comment_ || c == '\r') {
            return;
        }
        if (c == '\\') {
            takeBackslash();
        } else if (isBlank(c)) {
            addBlank();
        } else if (c == ';' && !quoted_) {
            comment_ = true;
        } else {
            quoted_ = quoted_ != (c == '"');
            add(c);
        }
    }

    [[nodiscard]] bool lineEndsAt(size_t position) const { return text_.substr(position, lineEnd_.size()) == lineEnd_; }

    void endLine() {
        result_ += kLineEnd;
        quoted_ = false;
        comment_ = false;
        dropBlanks_ = true;
    }

    void takeBackslash() {
        if (position_ < text_.size() && lineEndsAt(position_)) {
            position_ += lineEnd_.size();
            addBlank();
            return;
        }
        add('\\');
        if (position_ < text_.size()) {
            add(text_[position_++]);
        }
    }

    void add(char c) {
        result_ += c;
        dropBlanks_ = false;
    }

    void addBlank() {
        if (quoted_ || !dropBlanks_) {
            result_ += ' ';
        }
        dropBlanks_ = true;
    }

    std::string_view text_;
    std::string_view lineEnd_;
    std::string result_;
    size_t position_ = 0;
    bool quoted_ = false;
    bool comment_ = false;
    bool dropBlanks_ = true;  ///< at a line's start, or a blank was the last character outside quotes
};

}  // namespace

std::string normaliseKeyValueText(std::string_view text) {
    return Normaliser(text).run();
}

std::optional<std::string_view> findKeyValue(std::string_view normalised, std::string_view key) {
    for (std::string_view rest = normalised; !rest.empty();) {
        if (rest.starts_with(key) && rest.size() > key.size() &&
            std::string_view("= \t\r").find(rest[key.size()]) != std::string_view::npos) {
            rest.remove_prefix(key.size());
            const size_t equals = rest.find_first_not_of(" \t\n");
            if (equals == std::string_view::npos || rest[equals] != '=') {
                return std::nullopt;
            }
            rest.remove_prefix(equals + 1);
            return rest.substr(0, rest.find('\r'));
        }
        const size_t end = rest.find(kLineEnd);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + kLineEnd.size());
    }
    return std::nullopt;
}

std::vector<std::string> keysOf(std::string_view normalised) {
    std::vector<std::string> keys;
    while (!normalised.empty()) {
        const size_t end = std::min(normalised.find(kLineEnd), normalised.size());
        const std::string_view line = normalised.substr(0, end);
        const std::string_view key = line.substr(0, line.find('='));
        if (key.size() < line.size() && std::none_of(key.begin(), key.end(), isControl)) {
            keys.emplace_back(key.substr(0, key.find_last_not_of(' ') + 1));
        }
        normalised.remove_prefix(std::min(end + kLineEnd.size(), normalised.size()));
    }
    return keys;
}

std::optional<std::string> unquoteValue(std::string_view value) {
    const size_t open = value.find_first_not_of(" \t");
    if (open == std::string_view::npos || value[open] != '"') {
        return std::nullopt;
    }
    std::string result;
    for (size_t i = open + 1; i < value.size(); ++i) {
        if (value[i] == '"') {
            return result;
        }
        if (value[i] == '\\' && ++i == value.size()) {
            break;
        }
        result += value[i];
    }
    return std::nullopt;
}

}  // namespace tarno2
