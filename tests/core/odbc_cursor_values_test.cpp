// Values of every mapped column type read back exactly, in single rows and a rowset at a time.

#include "odbc_cursor_fixture.h"

#include <array>
#include <cstdint>
#include <functional>

namespace quorda {
namespace {

using testing::CursorTest;
using testing::IsSqlite;
using testing::ReadToEnd;
using testing::RowTexts;

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

std::string DoubleText(double Value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", Value);
    return text;
}

std::string TextValue(int i) {
    static const char* const kPatterns[] = {"héllo wörld %d", "日本語テキスト%d", "plain %d", "Ελληνικά %d"};
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
             return DoubleText(i == 3 ? 0.1 : i == 4 ? 1e300 : i * 1.5 + 0.25);
         }},
        // PostgreSQL's REAL arrives as the text the server prints, so 0.1 reads as the double 0.1;
        // MariaDB's FLOAT arrives as the binary float, widened.
        {"rl",
         {"", "real", "float"},
         ftFloat,
         [&Profile](int i) {
             return DoubleText(i == 3 ? (Profile.Name == "mariadb" ? static_cast<double>(0.1F) : 0.1)
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
         [](int i) { return DoubleText(i + 0.25); }},
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

    std::vector<RowTexts> ReadAll(bool UniDirectional, bool Block, int RowSetSize) {
        TODBCQuery& query = Query("select * from " + Table + " order by id");
        query.SetUniDirectional(UniDirectional);
        query.SetBlockCursor(Block);
        query.SetRowSetSize(RowSetSize);
        query.Open();
        std::vector<RowTexts> rows = ReadToEnd(query);
        query.Close();
        return rows;
    }

    std::vector<ColumnCase> Used;
    std::string Table;
};

// The field definitions first, then every value of the table in each cursor mode.
TEST_P(CursorValues, EveryValueReadsBackExactlyInSingleRowsAndInRowsets) {
    TODBCQuery& query = Opened("select * from " + Table);
    ASSERT_EQ(query.FieldDefs().Count(), static_cast<int>(Used.size()));
    for (std::size_t c = 0; c < Used.size(); ++c) {
        const TFieldDef* def = query.FieldDefs()[static_cast<int>(c)];
        EXPECT_EQ(def->Name(), Used[c].Name);
        EXPECT_EQ(def->DataType(), Used[c].Type) << Used[c].Name;
        EXPECT_EQ(def->FieldNo(), static_cast<int>(c) + 1);
        EXPECT_TRUE(def->InternalCalcField());
        EXPECT_FALSE(def->Required());
    }
    // Text columns hold their declared characters in UTF-8; everything else carries no size.
    EXPECT_EQ(query.FieldDefs().Find("txt")->Size(), 80);
    EXPECT_EQ(query.FieldDefs().Find("memo")->Size(), 8192);
    EXPECT_EQ(query.FieldDefs().Find("big")->Size(), 0);
    EXPECT_EQ(query.FieldDefs().Find("ts")->Size(), 0);
    if (!IsSqlite(Profile)) {
        EXPECT_EQ(query.FieldDefs().Find("chr")->Size(), 40);
    }
    query.Close();

    std::vector<RowTexts> expected;
    for (int i = 0; i < kRows; ++i) {
        expected.push_back(ExpectedRow(i));
    }
    EXPECT_TRUE(testing::SameRows(ReadAll(false, false, 100), expected)) << "scrollable";
    EXPECT_TRUE(testing::SameRows(ReadAll(true, false, 100), expected)) << "forward-only";
    for (int rowSet : {1, 7, 100}) {
        EXPECT_TRUE(testing::SameRows(ReadAll(true, true, rowSet), expected)) << "rowsets of " << rowSet;
    }
}

INSTANTIATE_TEST_SUITE_P(Drivers, CursorValues, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
