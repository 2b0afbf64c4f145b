#include "records/json_tree.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <type_traits>

namespace tarno2 {

namespace {

using Json = nlohmann::json;

constexpr size_t kDeepest = 32;
constexpr size_t kMostMembers = 256;        // of an object, which are looked through one by one
constexpr size_t kMostValues = 10'000'000;  // of a text: the memory that they take is many times as long

class Writer {
public:
    explicit Writer(bool inLines) : inLines_(inLines) {}

    void add(const JsonTree& tree, size_t depth) {
        if (const auto* list = tree.get<JsonTree::List>()) {
            addAll(list->size(), '[', ']', depth, [&](size_t i) { add((*list)[i], depth + 1); });
        } else if (const auto* object = tree.get<JsonTree::Object>()) {
            addAll(object->keys().size(), '{', '}', depth, [&](size_t i) {
                addSingle(object->keys()[i]);
                text_ += inLines_ ? ": " : ":";
                add(object->values()[i], depth + 1);
            });
        } else {
            addSingleOf(tree);
        }
    }
    std::string take() { return std::move(text_); }

private:
    template <typename Add>
    void addAll(size_t count, char open, char close, size_t depth, Add addEntry) {
        text_ += open;
        for (size_t i = 0; i < count; ++i) {
            if (i > 0) {
                text_ += ',';
            }
            beginLine(depth + 1);
            addEntry(i);
        }
        if (count > 0) {
            beginLine(depth);
        }
        text_ += close;
    }

    void beginLine(size_t depth) {
        if (inLines_) {
            text_ += '\n';
            text_.append(depth, ' ');
        }
    }

    void addSingleOf(const JsonTree& tree) {
        if (const auto* text = tree.get<std::string>()) {
            addSingle(*text);
        } else if (const auto* flag = tree.get<bool>()) {
            addSingle(*flag);
        } else if (const auto* whole = tree.get<uint64_t>()) {
            addSingle(*whole);
        } else if (const auto* negative = tree.get<int64_t>()) {
            addSingle(*negative);
        } else if (const auto* real = tree.get<double>()) {
            addSingle(*real);
        } else {
            text_ += "null";
        }
    }

    template <typename Value>
    void addSingle(const Value& value) {
        text_ += Json(value).dump(-1, ' ', false, Json::error_handler_t::replace);
    }

    bool inLines_;
    std::string text_;
};

/// Gathers what the library's reader tells, value by value.
class Reader : public nlohmann::json_sax<Json> {
public:
    explicit Reader(std::string& problem) : problem_(problem) {}

    bool null() override { return add(JsonTree()); }
    bool boolean(bool value) override { return add(JsonTree(value)); }
    bool number_integer(number_integer_t value) override { return add(JsonTree(int64_t{value})); }
    bool number_unsigned(number_unsigned_t value) override { return add(JsonTree(uint64_t{value})); }
    bool number_float(number_float_t value, const string_t& /*text*/) override { return add(JsonTree(value)); }
    bool string(string_t& value) override { return add(JsonTree(std::move(value))); }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(size_t /*count*/) override { return open(JsonTree(JsonTree::Object())); }
    bool start_array(size_t /*count*/) override { return open(JsonTree(JsonTree::List())); }
    bool key(string_t& name) override {
        JsonTree::Object& object = *open_.back()->get<JsonTree::Object>();
        if (object.keys().size() >= kMostMembers) {
            problem_ = "an object of it has too many members";
            return false;
        }
        member_ = &object.put(std::move(name));
        return true;
    }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(size_t /*place*/, const std::string& /*token*/, const Json::exception& error) override {
        problem_ = error.what();
        return false;
    }

    JsonTree take() { return std::move(root_); }

private:
    JsonTree* place(JsonTree tree) {
        JsonTree* at = &root_;
        if (!open_.empty()) {
            auto* list = open_.back()->get<JsonTree::List>();
            at = list != nullptr ? &list->emplace_back() : member_;
        }
        *at = std::move(tree);
        return at;
    }
    bool add(JsonTree tree) {
        if (++count_ > kMostValues) {
            problem_ = "it is too long";
            return false;
        }
        place(std::move(tree));
        return true;
    }
    bool open(JsonTree tree) {
        if (open_.size() >= kDeepest || ++count_ > kMostValues) {
            problem_ = open_.size() >= kDeepest ? "it is too deep" : "it is too long";
            return false;
        }
        open_.push_back(place(std::move(tree)));
        return true;
    }
    bool close() {
        open_.pop_back();
        return true;
    }

    std::string& problem_;
    JsonTree root_;
    /// The lists and objects that are not at their end yet, the outermost first. Each is the last entry of the one
    /// before, which gets no other until then, so that none of them moves.
    std::vector<JsonTree*> open_;
    JsonTree* member_ = nullptr;  ///< whose name was read last
    size_t count_ = 0;
};

}  // namespace

JsonTree& JsonTree::Object::put(std::string key) {
    if (const auto earlier = std::ranges::find(keys_, key); earlier != keys_.end()) {
        values_.erase(values_.begin() + (earlier - keys_.begin()));
        keys_.erase(earlier);
    }
    keys_.push_back(std::move(key));
    return values_.emplace_back();
}

JsonTree::JsonTree(int64_t number) {
    if (number < 0) {
        value_ = number;
    } else {
        value_ = static_cast<uint64_t>(number);
    }
}

std::optional<double> JsonTree::number() const {
    return std::visit(
        [](const auto& value) -> std::optional<double> {
            using Type = std::decay_t<decltype(value)>;
            if constexpr (std::is_arithmetic_v<Type> && !std::is_same_v<Type, bool>) {
                return static_cast<double>(value);
            } else {
                return std::nullopt;
            }
        },
        value_);
}

const JsonTree* JsonTree::find(std::string_view key) const {
    const auto* object = get<Object>();
    if (object == nullptr) {
        return nullptr;
    }
    const auto& keys = object->keys();
    const auto found = std::ranges::find(keys, key);
    return found == keys.end() ? nullptr : &object->values()[static_cast<size_t>(found - keys.begin())];
}

std::string jsonText(const JsonTree& tree, bool inLines) {
    Writer writer(inLines);
    writer.add(tree, 0);
    return writer.take();
}

std::optional<JsonTree> parseJson(std::string_view text, std::string& problem) {
    Reader reader(problem);
    return Json::sax_parse(text, &reader) ? std::optional(reader.take()) : std::nullopt;
}

}  // namespace tarno2
