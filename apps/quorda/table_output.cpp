#include "table_output.h"

#include <algorithm>

namespace quorda::cli {

void PrintAligned(std::ostream& Out, const std::vector<std::string>& Header, const std::vector<Row>& Rows) {
    std::vector<std::size_t> widths;
    for (const auto& name : Header) {
        widths.push_back(name.size());
    }
    for (const auto& row : Rows) {
        for (std::size_t i = 0; i < row.size() && i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], row[i] ? row[i]->size() : 4);
        }
    }
    const auto line = [&](const std::vector<std::string>& values) {
        std::string text;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            std::string value = i < values.size() ? values[i] : "";
            if (i + 1 < widths.size()) {
                value.resize(std::max(widths[i], value.size()), ' ');
                value += "  ";
            }
            text += value;
        }
        Out << text << '\n';
    };
    line(Header);
    std::vector<std::string> rule;
    for (const std::size_t width : widths) {
        rule.emplace_back(width, '-');
    }
    line(rule);
    for (const auto& row : Rows) {
        std::vector<std::string> values;
        for (const auto& cell : row) {
            values.push_back(cell ? *cell : "NULL");
        }
        line(values);
    }
}

void PrintCsvLine(std::ostream& Out, const Row& Values) {
    for (std::size_t i = 0; i < Values.size(); ++i) {
        if (i > 0) {
            Out << ',';
        }
        if (!Values[i]) {
            continue;
        }
        const std::string& value = *Values[i];
        if (value.find_first_of(",\"\r\n") == std::string::npos) {
            Out << value;
            continue;
        }
        Out << '"';
        for (const char c : value) {
            Out << c;
            if (c == '"') {
                Out << '"';
            }
        }
        Out << '"';
    }
    Out << "\r\n";
}

} // namespace quorda::cli
