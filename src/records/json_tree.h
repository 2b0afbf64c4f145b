#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tarno2 {

/// A value of JSON with all that it holds; texts are UTF-8. The library that reads and writes the single values has a
/// tree of its own, but allocates when it gives one back: a recording that runs out of memory would end there.
class JsonTree {
public:
    using List = std::vector<JsonTree>;

    /// Members in their order.
    class Object {
    public:
        /// Puts a member at the end, and takes out an earlier one of that name.
        template <typename Value>
        Object& add(std::string key, Value&& value) {
            put(std::move(key)) = JsonTree(std::forward<Value>(value));
            return *this;
        }
        /// The same with null for a value, which may be changed until the next call.
        JsonTree& put(std::string key);
        [[nodiscard]] const std::vector<std::string>& keys() const { return keys_; }
        [[nodiscard]] const List& values() const { return values_; }  ///< in the order of `keys`
        friend bool operator==(const Object&, const Object&) = default;

    private:
        std::vector<std::string> keys_;
        List values_;
    };

    JsonTree() = default;
    explicit JsonTree(bool flag) : value_(flag) {}
    explicit JsonTree(double number) : value_(number) {}
    explicit JsonTree(int32_t number) : JsonTree(int64_t{number}) {}
    explicit JsonTree(uint32_t number) : value_(uint64_t{number}) {}
    explicit JsonTree(uint64_t number) : value_(number) {}
    /// What is not negative is kept without a sign, as it is read.
    explicit JsonTree(int64_t number);
    explicit JsonTree(std::string text) : value_(std::move(text)) {}
    explicit JsonTree(const char* text) : value_(std::string(text)) {}
    explicit JsonTree(List list) : value_(std::move(list)) {}
    explicit JsonTree(Object object) : value_(std::move(object)) {}

    template <typename Type>
    [[nodiscard]] const Type* get() const {
        return std::get_if<Type>(&value_);
    }
    template <typename Type>
    [[nodiscard]] Type* get() {
        return std::get_if<Type>(&value_);
    }
    /// The value of a number of any kind; nothing of another value.
    [[nodiscard]] std::optional<double> number() const;
    /// The member of that name; null when there is none, or this is no object.
    [[nodiscard]] const JsonTree* find(std::string_view key) const;

    friend bool operator==(const JsonTree&, const JsonTree&) = default;

private:
    std::variant<std::nullptr_t, bool, int64_t, uint64_t, double, std::string, List, Object> value_;
};

/// The value as text: in lines, each deeper one indented by a blank more, or on one line. Letters that are no UTF-8
/// become U+FFFD. Throws std::bad_alloc.
[[nodiscard]] std::string jsonText(const JsonTree& tree, bool inLines);

/// A text of JSON. Nothing when it is none, too deep or too long, with the reason in English. Of members of one name
/// the last one counts. Throws std::bad_alloc.
[[nodiscard]] std::optional<JsonTree> parseJson(std::string_view text, std::string& problem);

}  // namespace tarno2
