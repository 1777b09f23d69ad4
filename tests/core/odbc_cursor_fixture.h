// Shared ground of the cursor tests: a database connected to one driver profile, queries on it, a
// plain ODBC connection for setting up tables, and the text a field's value reads as.
#pragma once

#include "core_test_support.h"
#include "quorda/db/blob_field.h"
#include "quorda/db/data_link.h"
#include "quorda/db/data_source.h"
#include "quorda/rtl/datetime.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <quorda_test/environment.h>
#include <quorda_test/fault_driver.h>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>
#include <string>
#include <vector>

namespace quorda::testing {

// psqlODBC options that let PostgreSQL report the SQL types a table declares: booleans as BIT and
// long VARCHAR columns as VARCHAR rather than text.
inline std::string ConnectionFor(const quorda_test::DataSourceProfile& Profile) {
    if (Profile.Name.rfind("pgsql", 0) != 0) {
        return Profile.ConnectionString;
    }
    return Profile.ConnectionString + ";BoolsAsChar=0;MaxVarcharSize=20000;MaxLongVarcharSize=65536";
}

inline bool IsSqlite(const quorda_test::DataSourceProfile& Profile) {
    return Profile.Name == "sqlite";
}

// The query with the cursor's inner operations in reach, for tests of the numbering rules.
class TProbeQuery : public TODBCQuery {
public:
    using TODBCDataSet::AllocRecordBuffer;
    using TODBCDataSet::FCrack;
    using TODBCDataSet::FCurrentRow;
    using TODBCDataSet::FFieldValues;
    using TODBCDataSet::FOrigin;
    using TODBCDataSet::FreeRecordBuffer;
    using TODBCDataSet::GetBookmarkFlag;
    using TODBCDataSet::GetRecord;
    using TODBCDataSet::InternalExecSQL;
    using TODBCDataSet::InternalInitFieldDefs;
    using TODBCQuery::TODBCQuery;

    // The bookmark of the active record as (origin, row number).
    std::pair<std::int32_t, std::int32_t> BookmarkPair() {
        TBookmark bookmark = GetBookmark();
        TODBCBookmark data{0, 0};
        if (bookmark.Size() == sizeof data) {
            std::memcpy(&data, bookmark.Data(), sizeof data);
        }
        return {data.Origin, data.RowNumber};
    }
    // The row number stored in a record buffer.
    static std::int32_t RowNumber(const std::byte* Buffer) {
        std::int32_t row = 0;
        std::memcpy(&row, Buffer + kRecordRowNumberOffset, sizeof row);
        return row;
    }
};

// Value-parameterised over the real drivers: Db is connected, Raw is a second, plain connection.
class CursorTest : public quorda_test::ProfileTest {
protected:
    void SetUp() override {
        Db.SetDriverConnectOption(dcoDriverNoPrompt);
        Db.SetConnectStr(ConnectionFor(Profile));
        Db.Open();
        Raw = std::make_unique<quorda_test::RawOdbc>(ConnectionFor(Profile));
    }

    // A query on Db; it is freed before Db.
    TProbeQuery& Query(const std::string& Sql) {
        Queries.push_back(MakeQuery<TProbeQuery>(&Db, Sql));
        return *Queries.back();
    }
    TProbeQuery& Opened(const std::string& Sql) {
        TProbeQuery& query = Query(Sql);
        query.Open();
        return query;
    }

    // A table "<prefix>_..." with the column declarations and, when given, the rows of one insert.
    std::string MakeTable(const std::string& Prefix, const std::string& Columns,
                          const std::string& Rows = "") {
        const std::string table = quorda_test::UniqueTableName(Prefix);
        Raw->Exec("create table " + table + " (" + Columns + ")");
        if (!Rows.empty()) {
            Raw->Exec("insert into " + table + " values " + Rows);
        }
        return table;
    }

    // A table of n rows (i, 'row<i>') for i in 1..n, inserted in one statement per 500 rows.
    std::string NumberTable(const std::string& Prefix, int Rows) {
        const std::string table = MakeTable(Prefix, "id integer primary key, name varchar(20)");
        Raw->SetAutoCommit(false);
        for (int start = 1; start <= Rows; start += 500) {
            std::string sql = "insert into " + table + " values ";
            for (int i = start; i < start + 500 && i <= Rows; ++i) {
                sql += (i == start ? "(" : ",(") + std::to_string(i) + ",'row" + std::to_string(i) + "')";
            }
            Raw->Exec(sql);
        }
        Raw->Commit();
        Raw->SetAutoCommit(true);
        return table;
    }

    TODBCDatabase Db{nullptr};
    std::unique_ptr<quorda_test::RawOdbc> Raw;
    std::vector<std::unique_ptr<TProbeQuery>> Queries;

    void TearDown() override { Queries.clear(); }
};

// A data link holding a ring of Buffers records of DataSet, as a grid does.
struct LinkedRing {
    LinkedRing(TDataSet& DataSet, int Buffers) {
        Source.SetDataSet(&DataSet);
        Link.SetDataSource(&Source);
        Link.SetBufferCount(Buffers);
    }
    ~LinkedRing() { Link.SetDataSource(nullptr); }

    TDataSource Source{nullptr};
    TDataLink Link;
};

// A database on the fault driver, following Script, with a query on Sql (freed first).
struct FaultDatabase {
    explicit FaultDatabase(const std::string& Script = {}, const std::string& Sql = "select * from t")
        : Fault(Script), Db(OpenDatabase(Fault.ConnectionString())),
          Query(MakeQuery<TProbeQuery>(Db.get(), Sql)) {}

    quorda_test::FaultDriver Fault;
    std::unique_ptr<TODBCDatabase> Db;
    std::unique_ptr<TProbeQuery> Query;
};

inline std::string Hex(const std::string& Bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    for (unsigned char c : Bytes) {
        text += {kDigits[c >> 4], kDigits[c & 15]};
    }
    return text;
}

// A megabyte of text whose multi-byte characters straddle any piece boundary, and of binary data.
inline std::string LargeText() {
    std::string text;
    for (int i = 0; text.size() < (1 << 20); ++i) {
        text += "Grüße 日本 " + std::to_string(i) + " ";
    }
    return text;
}

inline std::string LargeBinary() {
    std::string bytes(1 << 20, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>((i * 7 + i / 256) % 256);
    }
    return bytes;
}

inline std::string DoubleText(double Value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", Value);
    return text;
}

// The value of a field as exact text: integers in decimal, doubles with 17 significant digits,
// dates and times to the millisecond, binary data in hexadecimal; nullopt for NULL.
inline std::optional<std::string> ValueText(TField* Field) {
    if (Field->IsNull()) {
        return std::nullopt;
    }
    switch (Field->DataType()) {
    case ftBoolean:
        return Field->AsBoolean() ? "1" : "0";
    case ftSmallint:
    case ftInteger:
    case ftWord:
    case ftLargeint:
        return std::to_string(Field->AsLargeInt());
    case ftFloat:
        return DoubleText(Field->AsFloat());
    case ftDate:
        return FormatDateTime("yyyy-mm-dd", Field->AsDateTime());
    case ftTime:
        return FormatDateTime("hh:nn:ss", Field->AsDateTime());
    case ftDateTime:
        return FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", Field->AsDateTime());
    case ftBlob:
        return Hex(Field->AsString());
    default:
        return Field->AsString();
    }
}

using RowTexts = std::vector<std::optional<std::string>>;

// The current record, every field read by Reader.
inline RowTexts CurrentRow(TDataSet& DataSet, std::optional<std::string> (*Reader)(TField*) = ValueText) {
    RowTexts row;
    for (int i = 0; i < DataSet.FieldCount(); ++i) {
        row.push_back(Reader(DataSet.Fields()[i]));
    }
    return row;
}

// Every row from the current one to the end.
inline std::vector<RowTexts> ReadToEnd(TDataSet& DataSet) {
    std::vector<RowTexts> rows;
    for (; !DataSet.Eof(); DataSet.Next()) {
        rows.push_back(CurrentRow(DataSet));
    }
    return rows;
}

inline std::string RowText(const RowTexts& Row) {
    std::string text;
    for (const auto& cell : Row) {
        text += (text.empty() ? "" : ", ") + (cell ? "'" + *cell + "'" : std::string("NULL"));
    }
    return text;
}

// Compares row by row and names the first row that differs, instead of printing both tables.
inline ::testing::AssertionResult SameRows(const std::vector<RowTexts>& Actual,
                                           const std::vector<RowTexts>& Expected) {
    if (Actual.size() != Expected.size()) {
        return ::testing::AssertionFailure() << Actual.size() << " rows instead of " << Expected.size();
    }
    for (std::size_t r = 0; r < Actual.size(); ++r) {
        if (Actual[r] != Expected[r]) {
            return ::testing::AssertionFailure()
                   << "row " << r << ": " << RowText(Actual[r]) << "\n instead of " << RowText(Expected[r]);
        }
    }
    return ::testing::AssertionSuccess();
}

} // namespace quorda::testing
