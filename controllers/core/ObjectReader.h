// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/JsonTree.h"

#include "device/moverRecords.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace controllers {

constexpr double maxNumber = std::numeric_limits<double>::max();

/** `text` between quotes. */
std::string inQuotes(const std::string &text);
/** `number` as a reader of the file would write it. */
std::string numberText(double number);

/** The members of one JSON object, taken one by one. Every complaint is thrown as a JsonError. */
class ObjectReader
{
public:
    ObjectReader(const JsonValue &value, const std::string &what)
        : m_value(value)
        , m_what(what)
    {
        if (!std::holds_alternative<JsonValue::Object>(value.content))
            throw JsonError(value.line, what + " has to be an object {…}");
    }

    /** The member of this name, or null. Names that nobody has asked for are unknown ones, see finish(). */
    const JsonValue *find(const std::string &name)
    {
        m_asked.push_back(name);
        for (const JsonValue::Member &member : members()) {
            if (member.first == name)
                return &member.second;
        }
        return nullptr;
    }
    const JsonValue &require(const std::string &name)
    {
        const JsonValue *value = find(name);
        if (!value)
            throw JsonError(m_value.line, m_what + " lacks " + inQuotes(name));
        return *value;
    }

    /** Replaces `target` if the member is there. `lowest` and `highest` are the ends of the range, both allowed. */
    template <typename Number>
    bool number(const std::string &name, Number *target, double lowest, double highest)
    {
        const JsonValue *value = find(name);
        if (!value)
            return false;
        double read = 0;
        if (const auto *whole = std::get_if<long long>(&value->content))
            read = static_cast<double>(*whole);
        else if (const auto *real = std::get_if<double>(&value->content); real && std::is_floating_point_v<Number>)
            read = *real;
        else
            throw JsonError(
                value->line, inQuotes(name) + (std::is_floating_point_v<Number> ? " has to be a number"
                                                                                : " has to be a whole number"));
        if (read < lowest || read > highest) {
            const bool open = highest == maxNumber;
            const std::string range =
                open ? "at least " + numberText(lowest) : numberText(lowest) + " to " + numberText(highest);
            throw JsonError(value->line, inQuotes(name) + " has to be " + range + ", not " + numberText(read));
        }
        *target = static_cast<Number>(read);
        return true;
    }
    /** As number(), for a number above 0. */
    void positive(const std::string &name, double *target)
    {
        if (number(name, target, -maxNumber, maxNumber) && *target <= 0)
            throw JsonError(find(name)->line, inQuotes(name) + " has to be above 0, not " + numberText(*target));
    }
    bool flag(const std::string &name, bool *target)
    {
        const JsonValue *value = find(name);
        if (!value)
            return false;
        const auto *read = std::get_if<bool>(&value->content);
        if (!read)
            throw JsonError(value->line, inQuotes(name) + " has to be true or false");
        *target = *read;
        return true;
    }
    /** `longest`: bytes. */
    bool text(const std::string &name, std::string *target, std::size_t longest)
    {
        const JsonValue *value = find(name);
        if (!value)
            return false;
        const auto *read = std::get_if<std::string>(&value->content);
        if (!read)
            throw JsonError(value->line, inQuotes(name) + " has to be a text");
        if (read->size() > longest)
            throw JsonError(value->line, inQuotes(name) + " has more than " + std::to_string(longest) + " bytes");
        *target = *read;
        return true;
    }
    /** As text(), into a zero-padded field that keeps its last byte zero. */
    template <std::size_t Size>
    void text(const std::string &name, char (&field)[Size])
    {
        std::string read;
        if (!text(name, &read, Size - 1))
            return;
        std::memset(field, 0, Size);
        std::memcpy(field, read.data(), read.size());
    }
    /** One of a few words; each stands for the value beside it. */
    template <typename Choice>
    bool choice(const std::string &name, Choice *target, const std::vector<std::pair<const char *, Choice>> &words)
    {
        std::string read;
        if (!text(name, &read, std::string::npos))
            return false;
        std::string allowed;
        for (const auto &[word, value] : words) {
            if (read == word) {
                *target = value;
                return true;
            }
            allowed += (allowed.empty() ? "" : ", ") + inQuotes(word);
        }
        throw JsonError(find(name)->line, inQuotes(name) + " has to be one of " + allowed);
    }
    /** The elements of a list; none if the member is not there. */
    const JsonValue::Array &list(const std::string &name)
    {
        static const JsonValue::Array none;
        const JsonValue *value = find(name);
        if (!value)
            return none;
        const auto *read = std::get_if<JsonValue::Array>(&value->content);
        if (!read)
            throw JsonError(value->line, inQuotes(name) + " has to be a list […]");
        return *read;
    }

    /** To be called after everything has been taken. */
    void finish()
    {
        for (const JsonValue::Member &member : members()) {
            if (std::find(m_asked.begin(), m_asked.end(), member.first) == m_asked.end())
                throw JsonError(member.second.line, m_what + " has no " + inQuotes(member.first));
        }
    }

private:
    const JsonValue::Object &members() const { return std::get<JsonValue::Object>(m_value.content); }

    const JsonValue &m_value;
    std::string m_what;
    std::vector<std::string> m_asked;
};

/** Replaces the members of `stage` that stand in the object `value`, by their names in MotorParams. */
void readStage(const JsonValue &value, MotorParams *stage);

} // namespace controllers
