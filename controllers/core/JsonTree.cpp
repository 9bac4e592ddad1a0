// SPDX-License-Identifier: MIT
#include "controllers/core/JsonTree.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <limits>

namespace controllers {

namespace {

/** A tree is destroyed level by level on the stack, which a file must not be able to use up. */
constexpr std::size_t deepest = 100;

/** Walks over a text and counts the line ends that it has passed. The parser copies it, hence the shared counters. */
struct CountingIterator {
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    const char *position;
    int *lineEnds;
    char *last;

    const char &operator*() const { return *position; }
    CountingIterator &operator++()
    {
        *last = *position++;
        *lineEnds += *last == '\n';
        return *this;
    }
    CountingIterator operator++(int)
    {
        const CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator &other) const { return position == other.position; }
    bool operator!=(const CountingIterator &other) const { return position != other.position; }
};

/** Builds the tree from the parser's events. The tree that the parser itself would build knows no lines. */
class TreeBuilder : public nlohmann::json_sax<nlohmann::json>
{
public:
    TreeBuilder(const int *lineEnds, const char *last)
        : m_lineEnds(lineEnds)
        , m_last(last)
    {
    }

    JsonValue takeRoot() { return std::move(m_root); }

    bool null() override { return add(std::monostate()); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(static_cast<long long>(value)); }
    bool number_unsigned(number_unsigned_t value) override
    {
        if (value > static_cast<unsigned long long>(std::numeric_limits<long long>::max()))
            return add(static_cast<double>(value));
        return add(static_cast<long long>(value));
    }
    bool number_float(number_float_t value, const string_t &) override { return add(value); }
    bool string(string_t &value) override { return add(value); }
    bool binary(binary_t &) override { return false; } // not in JSON texts
    bool start_object(std::size_t) override { return open<JsonValue::Object>(); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open<JsonValue::Array>(); }
    bool end_array() override { return close(); }

    bool key(string_t &name) override
    {
        auto &members = std::get<JsonValue::Object>(m_open.back()->content);
        for (const JsonValue::Member &member : members) {
            if (member.first == name)
                throw JsonError(line(), "\"" + name + "\" stands here twice");
        }
        members.emplace_back(name, JsonValue());
        return true;
    }

    bool parse_error(std::size_t, const std::string &, const nlohmann::detail::exception &error) override
    {
        // The parser's text begins with its own name and position: "[json.…] parse error at line 3, column 5: …".
        const std::string text = error.what();
        const std::size_t start = text.find(": ");
        throw JsonError(line(), start == std::string::npos ? text : text.substr(start + 2));
    }

private:
    /** The line of the token just read. A number is only over at the character behind it, which may end the line. */
    int line() const { return 1 + *m_lineEnds - (*m_last == '\n' ? 1 : 0); }

    /** The value that belongs where the parser is. */
    JsonValue *place()
    {
        JsonValue *value = &m_root;
        if (!m_open.empty()) {
            JsonValue::Content &parent = m_open.back()->content;
            if (auto *array = std::get_if<JsonValue::Array>(&parent))
                value = &array->emplace_back();
            else
                value = &std::get<JsonValue::Object>(parent).back().second;
        }
        value->line = line();
        return value;
    }
    template <typename Content>
    bool add(const Content &content)
    {
        place()->content.emplace<Content>(content);
        return true;
    }
    template <typename Container>
    bool open()
    {
        if (m_open.size() == deepest)
            throw JsonError(line(), "more than " + std::to_string(deepest) + " objects and lists within each other");
        m_open.push_back(place());
        m_open.back()->content.emplace<Container>();
        return true;
    }
    bool close()
    {
        m_open.pop_back();
        return true;
    }

    const int *m_lineEnds;
    const char *m_last;
    JsonValue m_root;
    // The objects and lists that are not over yet, outermost first. A list grows only while none inside it is open, so
    // that these pointers hold.
    std::vector<JsonValue *> m_open;
};

} // namespace

JsonValue JsonValue::parse(const std::string &text)
{
    int lineEnds = 0;
    char last = 0;
    const CountingIterator begin{text.data(), &lineEnds, &last};
    const CountingIterator end{text.data() + text.size(), &lineEnds, &last};
    TreeBuilder builder(&lineEnds, &last);
    nlohmann::json::sax_parse(begin, end, &builder);
    return builder.takeRoot();
}

} // namespace controllers
