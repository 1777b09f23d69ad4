// The script language of the fault-injection driver: rules separated by '|', each <verb>:<arguments>,
// with %XX for any byte. The verbs and the call selectors <Call>@N and <Call>@N+ are described in
// docs/testing.md.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorda_fault {

// What a scripted rule makes of one call.
enum class Effect { None, Fail, Info, NoData };

struct DiagRecord {
    std::string State;
    long Native = 0;
    std::string Message;
};

struct ScriptColumn {
    std::string Name;
    int SqlType = 12;
    long long Size = 0;
    int Digits = 0;
    std::string Table;
};

using Value = std::optional<std::string>; // nullopt is NULL

struct CatalogTable {
    Value Name, Owner, Type, Remarks;
};

struct CatalogColumn {
    std::string Table, Name;
    int SqlType = 12;
};

// Which calls of a name a rule applies to.
struct CallSelector {
    std::string Call;
    long First = 0; // 0: every call
    bool AndLater = false;

    bool Matches(std::string_view call, long count) const;
};

// The decision for one call, computed before the driver does its work.
struct CallOutcome {
    Effect What = Effect::None;
    std::vector<DiagRecord> Diags; // for Fail and Info
    bool NoTotal = false;
};

class Script {
public:
    // Parses the text; a malformed rule throws std::invalid_argument naming it.
    static Script Parse(std::string_view text);

    // Counts the call and decides what happens to it.
    CallOutcome Decide(std::string_view call);

    const std::vector<ScriptColumn>& Columns() const { return FColumns; }
    const std::vector<std::vector<Value>>& Rows() const { return FRows; }
    bool HasResult() const { return FHasResult; }
    std::optional<unsigned long> MaxRowsetSize() const { return FMaxRowset; }
    const std::optional<std::string>& ConnectionOut() const { return FConnOut; }
    const std::vector<CatalogTable>& Tables() const { return FTables; }
    const std::vector<CatalogColumn>& CatalogColumns() const { return FCatalogColumns; }

private:
    struct CallRule {
        std::string Verb;
        CallSelector Selector;
        std::string Argument;
    };

    void AddRule(std::string_view rule);
    void GenerateRows(long count);

    std::vector<CallRule> FCallRules;
    std::map<std::string, long, std::less<>> FCounts;
    std::vector<ScriptColumn> FColumns;
    std::vector<std::vector<Value>> FRows;
    long FGeneratedRows = -1;
    bool FHasResult = false;
    std::optional<unsigned long> FMaxRowset;
    std::optional<std::string> FConnOut;
    std::vector<CatalogTable> FTables;
    std::vector<CatalogColumn> FCatalogColumns;
};

// %XX decoding of script text.
std::string Unescape(std::string_view text);
// Escapes bytes that would break a log line or a one-line rendering.
std::string EscapeForLog(std::string_view bytes);
std::vector<std::string_view> Split(std::string_view text, char separator);

} // namespace quorda_fault
