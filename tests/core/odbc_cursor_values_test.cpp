// Values of every mapped column type read back exactly, through the classic accessors and through the
// views that copy nothing (text into the record buffer, numbers and time stamps from their slots),
// in single rows, a rowset at a time and in the filter, where the record is not the active one.

#include "odbc_cursor_fixture.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string_view>

namespace quorda {
namespace {

using testing::CurrentRow;
using testing::CursorTest;
using testing::IsSqlite;
using testing::RowTexts;
using testing::SameRows;

constexpr int kRows = 1000;

struct ColumnCase {
    std::string Name;
    // The declaration on SQLite, PostgreSQL and MariaDB; empty: the column is not part of that table.
    std::array<std::string, 3> Decls;
    TFieldType Type;
    std::function<std::string(int i)> Expected; // the value of row i as it must read back
    bool Quoted = false;                        // the SQL text of the value is Expected quoted
    // The SQL text of the value where it is neither of the above.
    std::function<std::string(int i, const quorda_test::DataSourceProfile&)> Literal = nullptr;

    std::string LiteralOf(int i, const quorda_test::DataSourceProfile& Profile) const {
        return Literal ? Literal(i, Profile) : Quoted ? "'" + Expected(i) + "'" : Expected(i);
    }
};

std::string Clock(int Seconds) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", Seconds / 3600, Seconds / 60 % 60, Seconds % 60);
    return text;
}

std::string DateText(int i) {
    return FormatDateTime("yyyy-mm-dd", EncodeDate(1850, 1, 1) + i * 37);
}

std::string StampText(int i) {
    char fraction[8];
    std::snprintf(fraction, sizeof fraction, ".%03d", (i * 7) % 1000);
    return FormatDateTime("yyyy-mm-dd ", EncodeDate(1890, 1, 1) + i * 13) + Clock((i * 3661) % 86400) +
           fraction;
}

std::int64_t BigValue(int i) {
    if (i == 1 || i == 2) {
        return i == 1 ? INT64_MAX : INT64_MIN;
    }
    const std::int64_t magnitude = 3000000000LL + i * 1000003LL;
    return i % 2 ? -magnitude : magnitude;
}

std::string TextValue(int i) {
    static const char* const kPatterns[] = {"héllo wörld %d", "日本語テキスト%d", "plain %d", "Ελληνικά %d"};
    if (i % 100 == 10) {
        return ""; // empty, not NULL
    }
    if (i == 6) {
        return "漢字漢字漢字漢字漢字漢字漢字漢字漢字漢字"; // 20 characters, 60 bytes
    }
    if (i == 8) {
        std::string emoji;
        for (int k = 0; k < 20; ++k) {
            emoji += "😀"; // 4 bytes each: the column's whole capacity
        }
        return emoji;
    }
    char text[64];
    std::snprintf(text, sizeof text, kPatterns[i % 4], i);
    return text;
}

std::string BlobHex(int i) {
    std::string bytes;
    for (int k = 0; k < i % 10; ++k) {
        bytes += static_cast<char>((i * 31 + k * 97) % 256);
    }
    return testing::Hex(bytes);
}

std::string BlobLiteral(int i, const quorda_test::DataSourceProfile& Profile) {
    return Profile.Sql.BinaryLiteral(BlobHex(i));
}

// MariaDB drops the trailing blanks of a CHAR value when it reads it.
std::string FixedText(const quorda_test::DataSourceProfile& Profile) {
    return Profile.Traits.PaddedChar ? "ab        " : "ab";
}

std::vector<ColumnCase> Columns(const quorda_test::DataSourceProfile& Profile) {
    auto number = [](auto f) { return [f](int i) { return std::to_string(f(i)); }; };
    return {
        {"id", {"integer", "integer", "integer"}, ftInteger, number([](int i) { return i; })},
        {"flag",
         {"bit", "boolean", "bit(1)"},
         ftBoolean,
         [](int i) { return std::string(i % 2 ? "1" : "0"); },
         false,
         [](int i, const quorda_test::DataSourceProfile& P) {
             return std::string(IsSqlite(P) ? (i % 2 ? "1" : "0") : (i % 2 ? "true" : "false"));
         }},
        {"tiny", {"tinyint", "", "tinyint"}, ftSmallint, number([](int i) { return i % 200 - 100; })},
        {"big", {"bigint", "bigint", "bigint"}, ftLargeint, number(BigValue)},
        {"sm", {"smallint", "smallint", "smallint"}, ftSmallint, number([](int i) {
             return (i * 37) % 65536 - 32768;
         })},
        {"dbl",
         {"double", "double precision", "double"},
         ftFloat,
         [](int i) {
             return testing::DoubleText(i == 3 ? 0.1 : i == 4 ? 1e300 : i * 1.5 + 0.25);
         }},
        // PostgreSQL's REAL arrives as the text the server prints, so 0.1 reads as the double 0.1;
        // MariaDB's FLOAT arrives as the binary float, widened.
        {"rl",
         {"", "real", "float"},
         ftFloat,
         [&Profile](int i) {
             return testing::DoubleText(i == 3 ? (Profile.Name == "mariadb" ? static_cast<double>(0.1F) : 0.1)
                                               : i + 0.5);
         }},
        // MariaDB's BOOLEAN is TINYINT(1), reported as TINYINT like any other.
        {"bool",
         {"", "", "boolean"},
         ftSmallint,
         [](int i) { return std::string(i % 3 ? "1" : "0"); },
         false,
         [](int i, const quorda_test::DataSourceProfile&) { return std::string(i % 3 ? "true" : "false"); }},
        {"num",
         {"numeric(12,2)", "numeric(12,2)", "numeric(12,2)"},
         ftFloat,
         [](int i) { return testing::DoubleText(i + 0.25); }},
        {"txt", {"varchar(20)", "varchar(20)", "varchar(20)"}, ftString, TextValue, true},
        {"chr", {"", "char(10)", "char(10)"}, ftString, [&Profile](int) { return FixedText(Profile); }, true},
        {"memo",
         {"text", "text", "text"},
         ftMemo,
         [](int i) { return "memo " + std::to_string(i) + " " + TextValue(i); },
         true},
        {"d", {"date", "date", "date"}, ftDate, DateText, true},
        {"t", {"time", "time", "time"}, ftTime, [](int i) { return Clock((i * 3671) % 86400); }, true},
        {"ts", {"timestamp", "timestamp", Profile.Sql.TimestampType}, ftDateTime, StampText, true},
        {"bin", {"blob", "bytea", "blob"}, ftBlob, BlobHex, false, BlobLiteral},
        {"lbin", {"longvarbinary", "", "longblob"}, ftBlob, BlobHex, false, BlobLiteral},
        // Unsigned columns read in full: as the next wider type, BIGINT UNSIGNED as its digits.
        {"usm", {"", "", "smallint unsigned"}, ftInteger, number([](int i) {
             return i == 1 ? 65535 : i * 60;
         })},
        {"uint", {"", "", "int unsigned"}, ftLargeint, number([](int i) {
             return i == 1 ? 4294967295LL : 3000000000LL + i;
         })},
        {"ubig", {"", "", "bigint unsigned"}, ftString, number([](int i) {
             return i == 1 ? UINT64_MAX : (1ULL << 63) + static_cast<unsigned>(i);
         })},
    };
}

// Column c of row i is NULL on a diagonal pattern (never the id).
bool IsNullCell(std::size_t Column, int Row) {
    return Column > 0 && (Row + static_cast<int>(Column)) % 13 == 0;
}

class CursorValues : public CursorTest {
protected:
    void SetUp() override {
        CursorTest::SetUp();
        const std::size_t family = IsSqlite(Profile) ? 0 : Profile.Name == "mariadb" ? 2 : 1;
        std::string columns;
        for (const ColumnCase& column : Columns(Profile)) {
            if (!column.Decls[family].empty()) {
                columns += (Used.empty() ? "" : ", ") + column.Name + " " + column.Decls[family];
                Used.push_back(column);
            }
        }
        Table = MakeTable("cursor_values", columns);
        Raw->SetAutoCommit(false);
        for (int start = 0; start < kRows; start += 100) {
            std::string sql = "insert into " + Table + " values ";
            for (int i = start; i < start + 100; ++i) {
                sql += i == start ? "(" : ",(";
                for (std::size_t c = 0; c < Used.size(); ++c) {
                    sql += (c ? "," : "") +
                           (IsNullCell(c, i) ? std::string("NULL") : Used[c].LiteralOf(i, Profile));
                }
                sql += ")";
            }
            Raw->Exec(sql);
        }
        Raw->Commit();
        Raw->SetAutoCommit(true);
    }

    RowTexts ExpectedRow(int i) const {
        RowTexts row;
        for (std::size_t c = 0; c < Used.size(); ++c) {
            row.push_back(IsNullCell(c, i) ? std::nullopt : std::optional(Used[c].Expected(i)));
        }
        return row;
    }

    std::vector<RowTexts> ExpectedRows(const std::function<bool(int)>& Accept = nullptr) const {
        std::vector<RowTexts> rows;
        for (int i = 0; i < kRows; ++i) {
            if (!Accept || Accept(i)) {
                rows.push_back(ExpectedRow(i));
            }
        }
        return rows;
    }

    std::vector<ColumnCase> Used;
    std::string Table;
};

template <typename T, typename Format>
std::optional<std::string> Shown(const std::optional<T>& Value, Format&& Text) {
    return Value ? std::optional<std::string>(Text(*Value)) : std::nullopt;
}

// A local time as ValueText shows a field of Type: a date must stand at midnight, a time of day on
// 1899-12-30 in whole seconds.
std::string StampText(TLocalMSecs Stamp, TFieldType Type) {
    const auto day = std::chrono::floor<std::chrono::days>(Stamp);
    const std::chrono::year_month_day ymd{day};
    const std::chrono::hh_mm_ss clock{Stamp - day};
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d.%03d", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
    const std::string all = text;
    const std::string date = all.substr(0, 10), time = all.substr(11);
    if (Type == ftDate) {
        return time == "00:00:00.000" ? date : all;
    }
    return Type == ftTime && date == "1899-12-30" && time.ends_with(".000") ? time.substr(0, 8) : all;
}

// The value as ValueText shows it, read through the views; the views of other widths must agree.
std::optional<std::string> ViewText(TField* Field) {
    const auto number = [](auto Value) { return std::to_string(Value); };
    switch (Field->DataType()) {
    case ftBoolean:
        return Shown(Field->As<std::optional<bool>>(), [](bool Value) { return Value ? "1" : "0"; });
    case ftSmallint:
    case ftInteger:
    case ftWord:
    case ftLargeint: {
        const auto wide = Field->As<std::optional<std::int64_t>>();
        if (Field->DataType() != ftLargeint) {
            EXPECT_EQ(Field->As<std::optional<std::int32_t>>(), wide) << Field->FieldName();
        }
        const auto text = Shown(wide, number);
        EXPECT_EQ(Field->As<std::optional<std::string_view>>(), text) << Field->FieldName();
        return text;
    }
    case ftFloat:
        return Shown(Field->As<std::optional<double>>(), testing::DoubleText);
    case ftDate:
    case ftTime:
    case ftDateTime:
        EXPECT_EQ(Field->As<std::optional<TDateTime>>(),
                  Field->IsNull() ? std::nullopt : std::optional(Field->AsDateTime()));
        return Shown(Field->As<std::optional<TLocalMSecs>>(),
                     [Field](TLocalMSecs Stamp) { return StampText(Stamp, Field->DataType()); });
    case ftString:
        EXPECT_EQ(Field->As<std::optional<std::string>>(), Field->As<std::optional<std::string_view>>());
        return Shown(Field->As<std::optional<std::string_view>>(),
                     [](std::string_view Text) { return std::string(Text); });
    default:
        return Shown(Field->As<std::optional<std::string>>(), std::identity());
    }
}

// The value as ValueText shows it; the views must read the same. Memos and blobs have no view of
// their own: a second read must give the value again (a driver hands their data over once per row).
std::optional<std::string> ReadBothWays(TField* Field) {
    const std::optional<std::string> classic = testing::ValueText(Field);
    if (Field->DataType() != ftMemo && Field->DataType() != ftBlob) {
        EXPECT_EQ(ViewText(Field), classic) << Field->FieldName();
    } else {
        EXPECT_EQ(testing::ValueText(Field), classic) << Field->FieldName() << " read again";
    }
    return classic;
}

// The field definitions first, then every value of the table in each cursor mode, by range-for: a
// scrollable cursor walked again from its end, a parameter that selects nothing visiting no row.
TEST_P(CursorValues, EveryValueReadsBackExactlyInSingleRowsAndInRowsets) {
    TODBCQuery& described = Opened("select * from " + Table);
    ASSERT_EQ(described.FieldDefs().Count(), static_cast<int>(Used.size()));
    for (std::size_t c = 0; c < Used.size(); ++c) {
        const TFieldDef* def = described.FieldDefs()[static_cast<int>(c)];
        EXPECT_EQ(def->Name(), Used[c].Name);
        EXPECT_EQ(def->DataType(), Used[c].Type) << Used[c].Name;
        EXPECT_EQ(def->FieldNo(), static_cast<int>(c) + 1);
        EXPECT_TRUE(def->InternalCalcField());
        EXPECT_FALSE(def->Required());
    }
    // Text columns hold their declared characters in UTF-8; everything else carries no size.
    EXPECT_EQ(described.FieldDefs().Find("txt")->Size(), 80);
    EXPECT_EQ(described.FieldDefs().Find("memo")->Size(), 8192);
    EXPECT_EQ(described.FieldDefs().Find("big")->Size(), 0);
    EXPECT_EQ(described.FieldDefs().Find("ts")->Size(), 0);
    if (!IsSqlite(Profile)) {
        EXPECT_EQ(described.FieldDefs().Find("chr")->Size(), 40);
    }
    described.Close();

    const std::vector<RowTexts> expected = ExpectedRows();
    struct Mode {
        const char* Name;
        bool UniDirectional, Block;
        int RowSetSize;
    };
    for (const Mode& mode : {Mode{"scrollable", false, false, 100}, Mode{"forward-only", true, false, 100},
                             Mode{"rowsets of 1", true, true, 1}, Mode{"rowsets of 7", true, true, 7},
                             Mode{"rowsets of 100", true, true, 100}}) {
        SCOPED_TRACE(mode.Name);
        TODBCQuery& query = Query("select * from " + Table + " where id >= :low order by id");
        query.SetUniDirectional(mode.UniDirectional);
        query.SetBlockCursor(mode.Block);
        query.SetRowSetSize(mode.RowSetSize);
        query.ParamByName("low")->SetAsInteger(0);
        for (int pass = 1; pass <= (mode.UniDirectional ? 1 : 2); ++pass) {
            std::vector<RowTexts> rows;
            for (TDataSet& row : query.Rows()) {
                rows.push_back(CurrentRow(row, ReadBothWays));
            }
            EXPECT_TRUE(SameRows(rows, expected)) << "pass " << pass;
            if (!mode.UniDirectional) {
                query.Last();
            }
        }
        query.Close();
        query.ParamByName("low")->SetAsInteger(kRows);
        int visits = 0;
        for ([[maybe_unused]] TDataSet& row : query.Rows()) {
            ++visits;
        }
        EXPECT_EQ(visits, 0);
    }
}

TEST_P(CursorValues, TheFilterReadsEveryCandidateAndSkipsInBothDirections) {
    TODBCQuery& query = Query("select * from " + Table + " order by id");
    const auto accept = [](int i) { return i % 7 == 3; };
    query.OnFilterRecord = [&](TDataSet* DataSet, bool& Accept) {
        const int i = DataSet->FieldByName("id")->AsInteger();
        EXPECT_TRUE(SameRows({CurrentRow(*DataSet, ReadBothWays)}, {ExpectedRow(i)}));
        Accept = accept(i);
    };
    query.SetFiltered(true);
    query.Open();
    EXPECT_TRUE(SameRows(testing::ReadToEnd(query), ExpectedRows(accept)));
    query.Prior();
    EXPECT_EQ(query.FieldByName("id")->AsInteger(), 990);

    query.OnFilterRecord = [](TDataSet*, bool& Accept) { Accept = false; };
    query.First();
    EXPECT_TRUE(query.Eof());
    EXPECT_TRUE(query.IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Drivers, CursorValues, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
