// Reading ODBC connection strings: "key=value" attributes separated by ";", a value either plain or
// braced ("{...}", where "}}" stands for one "}" and ";" is part of the value).
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace quorda {

struct TConnectionAttribute {
    // The key without surrounding blanks, as written.
    std::string_view Key;
    // The value as written (braces and escapes included) and where it starts in the string.
    std::string_view RawValue;
    std::size_t ValueOffset = 0;
};

// Calls OnAttribute for every attribute of Text, in order.
void ForEachConnectionAttribute(std::string_view Text,
                                const std::function<void(const TConnectionAttribute&)>& OnAttribute);

// The value of an attribute with its braces and "}}" escapes resolved.
std::string ConnectionAttributeValue(std::string_view RawValue);

// Keys compare case-insensitively (ASCII), as the driver manager compares them.
bool SameConnectionKey(std::string_view A, std::string_view B);

// True when Text names a driver or a data source (DRIVER, DSN or FILEDSN with a non-blank value).
bool NamesDataSource(std::string_view Text);

// The first DRIVER or DSN attribute whose value is empty or blank, as its key is written; empty when
// there is none.
std::string_view BlankDataSourceKey(std::string_view Text);

} // namespace quorda
