#include "fault_script.h"

#include <charconv>
#include <stdexcept>

namespace quorda_fault {
namespace {

[[noreturn]] void Malformed(std::string_view rule, std::string_view why) {
    throw std::invalid_argument("fault script: " + std::string(why) + " in rule '" + std::string(rule) + "'");
}

long long ToNumber(std::string_view text, std::string_view rule) {
    long long value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        Malformed(rule, "'" + std::string(text) + "' is not a number");
    }
    return value;
}

// "~" is NULL, "^<n>:<text>" repeats text to n bytes, anything else is the unescaped text.
Value ParseValue(std::string_view text, std::string_view rule) {
    if (text == "~") {
        return std::nullopt;
    }
    if (!text.empty() && text[0] == '^') {
        auto colon = text.find(':');
        if (colon == std::string_view::npos) {
            Malformed(rule, "repeat value without ':'");
        }
        auto length = ToNumber(text.substr(1, colon - 1), rule);
        std::string unit = Unescape(text.substr(colon + 1));
        if (unit.empty() || length < 0) {
            Malformed(rule, "empty repeat value");
        }
        std::string out;
        out.reserve(static_cast<size_t>(length));
        while (out.size() < static_cast<size_t>(length)) {
            out += unit;
        }
        out.resize(static_cast<size_t>(length));
        return out;
    }
    return Unescape(text);
}

// Character and binary types: their generated values are text.
bool IsTextType(int sqlType) {
    return (sqlType >= -10 && sqlType <= -8) || (sqlType >= -4 && sqlType <= -1) || sqlType == 1 ||
           sqlType == 12;
}

// The size of a column the script gives none: what matters to the library is that long text and
// binary columns are long.
long long DefaultSize(int sqlType) {
    return sqlType == -1 || sqlType == -4 || sqlType == -10 ? 65535 : 255;
}

} // namespace

bool CallSelector::Matches(std::string_view call, long count) const {
    if (call != Call) {
        return false;
    }
    if (First == 0) {
        return true;
    }
    return AndLater ? count >= First : count == First;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    size_t start = 0;
    while (true) {
        auto at = text.find(separator, start);
        parts.push_back(
            text.substr(start, at == std::string_view::npos ? std::string_view::npos : at - start));
        if (at == std::string_view::npos) {
            return parts;
        }
        start = at + 1;
    }
}

std::string Unescape(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char* digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            out += static_cast<char>(byte);
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string EscapeForLog(std::string_view bytes) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : bytes) {
        if (c < 0x20 || c >= 0x7f || c == '%') {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 15];
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

Script Script::Parse(std::string_view text) {
    Script script;
    for (auto rule : Split(text, '|')) {
        const auto begin = rule.find_first_not_of(" \r\n");
        if (begin != std::string_view::npos) {
            script.AddRule(rule.substr(begin, rule.find_last_not_of(" \r\n") - begin + 1));
        }
    }
    if (script.FGeneratedRows >= 0) {
        script.GenerateRows(script.FGeneratedRows);
    }
    return script;
}

void Script::AddRule(std::string_view rule) {
    auto colon = rule.find(':');
    if (colon == std::string_view::npos) {
        Malformed(rule, "missing ':'");
    }
    std::string verb(rule.substr(0, colon));
    std::string_view args = rule.substr(colon + 1);

    if (verb == "fail" || verb == "info" || verb == "nodata" || verb == "diag" || verb == "nototal") {
        auto end = args.find(':');
        std::string_view selector = args.substr(0, end);
        CallRule call{
            verb, {}, end == std::string_view::npos ? std::string() : std::string(args.substr(end + 1))};
        auto at = selector.find('@');
        call.Selector.Call = std::string(selector.substr(0, at));
        if (at != std::string_view::npos) {
            std::string_view count = selector.substr(at + 1);
            if (!count.empty() && count.back() == '+') {
                call.Selector.AndLater = true;
                count.remove_suffix(1);
            }
            call.Selector.First = static_cast<long>(ToNumber(count, rule));
            if (call.Selector.First < 1) {
                Malformed(rule, "call numbers start at 1");
            }
        }
        if (call.Selector.Call.empty()) {
            Malformed(rule, "no call named");
        }
        if (verb == "diag" && Split(call.Argument, '/').size() < 3) {
            Malformed(rule, "diagnostic is not <state>/<native>/<message>");
        }
        FCallRules.push_back(std::move(call));
    } else if (verb == "result") {
        FHasResult = true;
        FColumns.clear();
        for (auto text : Split(args, ',')) {
            auto parts = Split(text, '/');
            if (parts.size() < 2) {
                Malformed(rule, "column is not name/sqltype");
            }
            ScriptColumn column;
            column.Name = Unescape(parts[0]);
            column.SqlType = static_cast<int>(ToNumber(parts[1], rule));
            column.Size = parts.size() > 2 && !parts[2].empty() ? ToNumber(parts[2], rule)
                                                                : DefaultSize(column.SqlType);
            column.Digits =
                parts.size() > 3 && !parts[3].empty() ? static_cast<int>(ToNumber(parts[3], rule)) : 0;
            column.Table = parts.size() > 4 ? Unescape(parts[4]) : std::string();
            FColumns.push_back(std::move(column));
        }
    } else if (verb == "row") {
        std::vector<Value> row;
        for (auto value : Split(args, ',')) {
            row.push_back(ParseValue(value, rule));
        }
        FRows.push_back(std::move(row));
    } else if (verb == "rows") {
        FGeneratedRows = static_cast<long>(ToNumber(args, rule));
    } else if (verb == "rowset") {
        auto value = ToNumber(args, rule);
        if (value < 1) {
            Malformed(rule, "rowset below 1");
        }
        FMaxRowset = static_cast<unsigned long>(value);
    } else if (verb == "connout") {
        FConnOut = Unescape(args);
    } else if (verb == "table") {
        auto parts = Split(args, '/');
        parts.resize(4, std::string_view("~"));
        FTables.push_back({ParseValue(parts[0], rule), ParseValue(parts[1], rule), ParseValue(parts[2], rule),
                           ParseValue(parts[3], rule)});
    } else if (verb == "column") {
        auto parts = Split(args, '/');
        if (parts.size() != 3) {
            Malformed(rule, "column is <table>/<name>/<sqltype>");
        }
        FCatalogColumns.push_back(
            {Unescape(parts[0]), Unescape(parts[1]), static_cast<int>(ToNumber(parts[2], rule))});
    } else {
        Malformed(rule, "unknown verb '" + verb + "'");
    }
}

void Script::GenerateRows(long count) {
    for (long i = 1; i <= count; ++i) {
        std::vector<Value> row;
        for (const auto& column : FColumns) {
            if (IsTextType(column.SqlType)) {
                row.emplace_back("r" + std::to_string(i));
            } else if (column.SqlType == 9) {
                row.emplace_back("2001-02-03");
            } else if (column.SqlType == 10) {
                row.emplace_back("04:05:06");
            } else if (column.SqlType == 11) {
                row.emplace_back("2001-02-03 04:05:06");
            } else {
                row.emplace_back(std::to_string(i));
            }
        }
        FRows.push_back(std::move(row));
    }
}

CallOutcome Script::Decide(std::string_view call) {
    auto counter = FCounts.find(call);
    if (counter == FCounts.end()) {
        counter = FCounts.emplace(std::string(call), 0).first;
    }
    long count = ++counter->second;

    CallOutcome outcome;
    bool diagRuleSeen = false;
    for (const auto& rule : FCallRules) {
        if (!rule.Selector.Matches(call, count)) {
            continue;
        }
        if (rule.Verb == "diag") {
            diagRuleSeen = true;
            auto parts = Split(rule.Argument, '/');
            DiagRecord record{Unescape(parts[0]), 0, {}};
            record.Native = static_cast<long>(ToNumber(parts[1], rule.Argument));
            // The message is everything after the second '/', slashes included.
            auto second = rule.Argument.find('/', rule.Argument.find('/') + 1);
            record.Message = Unescape(std::string_view(rule.Argument).substr(second + 1));
            outcome.Diags.push_back(std::move(record));
        } else if (rule.Verb == "nototal") {
            outcome.NoTotal = true;
        } else if (outcome.What == Effect::None) {
            outcome.What = rule.Verb == "fail"   ? Effect::Fail
                           : rule.Verb == "info" ? Effect::Info
                                                 : Effect::NoData;
        }
    }
    if (!diagRuleSeen && (outcome.What == Effect::Fail || outcome.What == Effect::Info)) {
        bool fail = outcome.What == Effect::Fail;
        outcome.Diags.push_back(
            {fail ? "HY000" : "01000", 0,
             "[Quorda][Fault] " + std::string(call) + (fail ? " failed" : " returned info")});
    }
    return outcome;
}

} // namespace quorda_fault
