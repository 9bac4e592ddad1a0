// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace controllers {

/** What is wrong with a JSON text, and on which line (from 1). */
struct JsonError : std::runtime_error {
    JsonError(int errorLine, const std::string &what)
        : std::runtime_error(what)
        , line(errorLine)
    {
    }
    int line;
};

/** A JSON value that knows its line, so that whoever finds fault with its contents can say where. */
struct JsonValue {
    using Member = std::pair<std::string, JsonValue>;
    using Array = std::vector<JsonValue>;
    using Object = std::vector<Member>; ///< in the order of the text
    /** null, true or false, a whole number, any other number, a text, a list, an object. */
    using Content = std::variant<std::monostate, bool, long long, double, std::string, Array, Object>;

    Content content;
    int line = 0;

    /** Reads a whole text. Throws JsonError, also for a key that an object has twice and for more than 100 levels. */
    static JsonValue parse(const std::string &text);
};

} // namespace controllers
