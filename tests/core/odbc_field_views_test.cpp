// The reads that copy nothing (text as a view into the record buffer, numbers and time stamps from
// their slots, NULL as std::nullopt) give the values that were stored, on every driver, in every
// cursor mode and in the filter state, where the record is not the active one.

#include "odbc_cursor_fixture.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace quorda {
namespace {

using testing::CursorTest;
using testing::IsSqlite;

constexpr int kRows = 120;
constexpr const char* kColumns[] = {"id", "sm", "big", "dbl", "txt", "d", "t", "ts", "flag"};

// Column c (never the id) of row i is NULL on a diagonal.
bool IsNullCell(int Column, int Row) {
    return Column > 0 && (Row + Column) % 5 == 0;
}

// Every third text is empty (not NULL), every third fills the column's eight characters.
std::string Text(int i) {
    return i % 3 == 0 ? "" : i % 3 == 1 ? "v" + std::to_string(i) : "abcdefg" + std::to_string(i % 10);
}

// Row i's date is 1999-12-31 plus i days, its time i * 1001 seconds past midnight plus i milliseconds.
std::chrono::local_days Day(int i) {
    return std::chrono::local_days{std::chrono::year(1999) / 12 / 31} + std::chrono::days(i);
}
std::chrono::milliseconds Clock(int i) {
    return std::chrono::seconds(i * 1001 % 86400) + std::chrono::milliseconds(i);
}

std::string Quoted(const std::string& Text) {
    return "'" + Text + "'";
}

// "yyyy-mm-dd", "hh:nn:ss" or both of a local time, to the second.
std::string Text(TLocalMSecs Stamp, bool Date, bool Time) {
    const auto day = std::chrono::floor<std::chrono::days>(Stamp);
    const std::chrono::year_month_day ymd{day};
    const std::chrono::hh_mm_ss clock{std::chrono::floor<std::chrono::seconds>(Stamp - day)};
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    const std::string all = text;
    return Date && Time ? all : Date ? all.substr(0, 10) : all.substr(11);
}

class FieldViews : public CursorTest {
protected:
    void SetUp() override {
        CursorTest::SetUp();
        const bool sqlite = IsSqlite(Profile);
        const bool mariadb = Profile.Name == "mariadb";
        Table = MakeTable("field_views", std::string("id integer, sm smallint, big bigint, dbl ") +
                                             (sqlite || mariadb ? "double" : "double precision") +
                                             ", txt varchar(8), d date, t time, ts " +
                                             Profile.Sql.TimestampType + ", flag " +
                                             (sqlite    ? "bit"
                                              : mariadb ? "bit(1)"
                                                        : "boolean"));
        Raw->SetAutoCommit(false);
        std::string sql = "insert into " + Table + " values ";
        for (int i = 0; i < kRows; ++i) {
            const std::array<std::string, 9> cells{
                std::to_string(i),
                std::to_string(i * 257 % 65536 - 32768),
                std::to_string((std::int64_t(1) << 40) * (i - kRows / 2)),
                std::to_string(i) + ".25",
                Quoted(Text(i)),
                Quoted(Text(TLocalMSecs(Day(i)), true, false)),
                Quoted(Text(Stamp(i), false, true)),
                Quoted(Text(Stamp(i), true, true) + "." + std::to_string(1000 + i).substr(1)),
                sqlite  ? std::to_string(i % 2)
                : i % 2 ? "true"
                        : "false"};
            sql += i == 0 ? "(" : ",(";
            for (int c = 0; c < 9; ++c) {
                sql += (c ? "," : "") + (IsNullCell(c, i) ? std::string("NULL") : cells[c]);
            }
            sql += ")";
        }
        Raw->Exec(sql);
        Raw->Commit();
        Raw->SetAutoCommit(true);
    }

    static TLocalMSecs Stamp(int i) { return Day(i) + std::chrono::floor<std::chrono::seconds>(Clock(i)); }

    // Every view of the current record against what row i holds.
    void ExpectRow(TDataSet& DataSet, int i) {
        SCOPED_TRACE("row " + std::to_string(i));
        const auto field = [&](int c) { return DataSet.FieldByName(kColumns[c]); };
        const auto expect = [&](int c, auto Value) {
            using T = decltype(Value);
            EXPECT_EQ(field(c)->As<std::optional<T>>(),
                      IsNullCell(c, i) ? std::nullopt : std::optional<T>(Value))
                << kColumns[c];
        };
        EXPECT_EQ(field(0)->As<std::int32_t>(), i);
        expect(1, std::int32_t(i * 257 % 65536 - 32768));
        expect(1, std::int64_t(i * 257 % 65536 - 32768));
        expect(2, (std::int64_t(1) << 40) * (i - kRows / 2));
        expect(3, i + 0.25);
        expect(4, std::string_view(Text(i)));
        expect(4, Text(i));
        expect(5, TLocalMSecs(Day(i)));
        expect(6, TLocalMSecs(std::chrono::local_days{std::chrono::year(1899) / 12 / 30}) +
                      std::chrono::floor<std::chrono::seconds>(Clock(i)));
        expect(7, Stamp(i) + std::chrono::milliseconds(i));
        expect(8, i % 2 == 1);
        // A date-time as its TDateTime, exactly as the classic accessor reads it.
        if (!IsNullCell(7, i)) {
            EXPECT_EQ(field(7)->As<TDateTime>(), field(7)->AsDateTime());
        }
        // A value without text of its own reads as its text.
        EXPECT_EQ(field(0)->As<std::string_view>(), std::to_string(i));
    }

    void ReadAll(bool UniDirectional, bool Block) {
        TODBCQuery& query = Query("select * from " + Table + " order by id");
        query.SetUniDirectional(UniDirectional);
        query.SetBlockCursor(Block);
        query.SetRowSetSize(7);
        query.Open();
        int i = 0;
        for (; !query.Eof(); query.Next(), ++i) {
            ExpectRow(query, i);
        }
        EXPECT_EQ(i, kRows);
    }

    std::string Table;
};

TEST_P(FieldViews, ReadStoredValuesInEveryCursorMode) {
    for (const auto& [uniDirectional, block] : {std::pair{false, false}, {true, false}, {true, true}}) {
        SCOPED_TRACE(uniDirectional ? (block ? "rowsets" : "forward-only") : "scrollable");
        ReadAll(uniDirectional, block);
    }
}

TEST_P(FieldViews, ReadTheFilteredRecordInsideTheFilter) {
    TODBCQuery& query = Query("select * from " + Table + " order by id");
    // The filter sees each candidate record before it becomes the active one.
    query.OnFilterRecord = [&](TDataSet* DataSet, bool& Accept) {
        const int i = DataSet->FieldByName("id")->As<std::int32_t>();
        ExpectRow(*DataSet, i);
        Accept = DataSet->FieldByName("txt")->As<std::optional<std::string_view>>() == std::string_view();
    };
    query.SetFiltered(true);
    query.Open();
    int rows = 0;
    for (; !query.Eof(); query.Next(), ++rows) {
        EXPECT_EQ(query.FieldByName("txt")->As<std::string_view>(), "");
    }
    int expected = 0;
    for (int i = 0; i < kRows; ++i) {
        expected += !IsNullCell(4, i) && Text(i).empty();
    }
    EXPECT_EQ(rows, expected);
}

INSTANTIATE_TEST_SUITE_P(Drivers, FieldViews, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda
