#pragma once

#include "expression/variant.h"

#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// The type letter and the value, as in "I-1"; reals with all their digits.
inline std::string shown(const variant::Variant &value)
{
    std::string digits;
    value.asString(digits, value.getType() == variant::Variant::kReal ? "%.17g" : nullptr);
    return value.getTypeChar() + digits;
}

/// The value that a text such as "I-1", "D7", "B1", "R1.5", "Sabc", "Xabc" (bytes), "P" (null) or "0" (Null) shows;
/// "s" is a String without text.
inline variant::Variant valueOf(const std::string &shown)
{
    using variant::Variant;
    static const std::map<char, void (*)(Variant &, const std::string &)> setters = {
        {'B', [](Variant &value, const std::string &text) { value.setBool(std::stoi(text)); }},
        {'I', [](Variant &value, const std::string &text) { value.setInt(std::stoi(text)); }},
        {'D', [](Variant &value, const std::string &text) { value.setDWORD(std::stoul(text)); }},
        {'R', [](Variant &value, const std::string &text) { value.setReal(std::stod(text)); }},
        {'S', [](Variant &value, const std::string &text) { value.setString(text.c_str()); }},
        {'s', [](Variant &value, const std::string &) { value.setString(nullptr); }},
        {'X', [](Variant &value, const std::string &text) { value.setBinary(text.data(), int(text.size())); }},
        {'P', [](Variant &value, const std::string &) { value.setPtr(nullptr); }},
        {'0', [](Variant &, const std::string &) {}},
    };
    Variant value;
    setters.at(shown.front())(value, shown.substr(1));
    return value;
}

/// What a call writes to its argument, or "fails". Success is 1, and a failure must leave \a left there: what was there
/// before, unless it is told otherwise.
template <typename Call>
std::string written(const Call &call, const std::string &left = "Sstale")
{
    variant::Variant result = valueOf("Sstale");
    const int success = call(result);
    if (success == 0)
        return shown(result) == left ? "fails" : "fails and leaves " + shown(result);
    return success == 1 ? shown(result) : "returns " + std::to_string(success);
}

/// What is asked, and the outcome.
using Rows = std::vector<std::pair<std::string, std::string>>;

/// The rows of a table of "what is asked = outcome", which stand apart by three blanks or more; a comment ends a line.
inline Rows rowsOf(const std::string &table)
{
    static const std::regex row(R"(\s*(\S(?:.*?\S)??) = (.*?)(?:   +|\s*//.*|\n|$))");
    Rows rows;
    for (std::sregex_iterator match(table.begin(), table.end(), row), end; match != end; ++match)
        rows.emplace_back((*match)[1], (*match)[2]);
    return rows;
}

inline std::vector<std::string> wordsOf(const std::string &text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}
