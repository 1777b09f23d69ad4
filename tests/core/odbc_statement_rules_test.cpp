// Rules of the dataset's statement side that need no data: settings bounds, refusals, the type
// maps, and what a change of the SQL text does to the parameters.
#include "core/odbc_dataset_p.h"
#include "core_test_support.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/stream.h"
#include "quorda/rtl/strings.h"

#include <functional>
#include <gtest/gtest.h>

namespace quorda {
namespace {

using testing::DatabaseErrorOf;
using testing::TestQuery;

TEST(StatementSettings, BufferSizesAcceptOnlyTheirRanges) {
    TODBCQuery query(nullptr);
    query.SetBlobBufferSize(8192);
    query.SetBlobBufferSize(1);
    EXPECT_EQ(DatabaseErrorOf([&] { query.SetBlobBufferSize(8193); }),
              "ODBC Not correct BlobBufferSize=8193 (0 < BlobBufferSize <= 8192)");
    EXPECT_EQ(DatabaseErrorOf([&] { query.SetBlobBufferSize(0); }),
              "ODBC Not correct BlobBufferSize=0 (0 < BlobBufferSize <= 8192)");
    EXPECT_EQ(query.BlobBufferSize(), 1); // a refused value leaves the setting alone

    query.SetMaxBlobBuffer(1);
    EXPECT_EQ(DatabaseErrorOf([&] { query.SetMaxBlobBuffer(0); }),
              "ODBC Not correct MaxBlobBuffer=0 (0 < BlobBufferSize)");
    EXPECT_EQ(DatabaseErrorOf([&] { query.SetMaxBlobBuffer(-5); }),
              "ODBC Not correct MaxBlobBuffer=-5 (0 < BlobBufferSize)");
    EXPECT_EQ(query.MaxBlobBuffer(), 1);

    // A negative row-set size is ignored; on a closed dataset any other value is taken.
    query.SetRowSetSize(-3);
    EXPECT_EQ(query.RowSetSize(), 100);
    query.SetRowSetSize(0);
    EXPECT_EQ(query.RowSetSize(), 0);
}

TEST(StatementRules, NoOpenDatabaseMeansNoStatement) {
    const std::string closed = "ODBC This operation is not allowed on closed database";
    TODBCQuery query(nullptr);
    query.SQL().SetText("delete from t");
    TODBCDatabase db(nullptr); // never connected
    for (TODBCDatabase* database : {static_cast<TODBCDatabase*>(nullptr), &db}) {
        query.SetODBCDatabase(database);
        EXPECT_EQ(DatabaseErrorOf([&] { query.ExecSQL(); }), closed);
        EXPECT_EQ(DatabaseErrorOf([&] { query.Prepare(); }), closed);
    }
    EXPECT_EQ(query.StatementHandle(), nullptr);
    EXPECT_FALSE(query.Prepared());
    EXPECT_EQ(query.State(), dsInactive);
    // Without a statement the driver cannot tell a row count.
    EXPECT_EQ(query.GetRowsAffected(), -1);
}

TEST(StatementRules, EditingOperationsRefuseWithTheirOwnPrefixes) {
    TestQuery query(nullptr);
    const std::string tail = LoadStr(SODBCNotImplemented);
    std::byte buffer[16] = {};
    const std::vector<std::pair<std::string, std::function<void()>>> cases = {
        {"TODBCDataSet.GetRecordSize: ", [&] { query.GetRecordSize(); }},
        {"TODBCDataSet.InternalAddRecord:", [&] { query.InternalAddRecord(buffer, true); }},
        {"TODBCDataSet.InternalDelete: ", [&] { query.InternalDelete(); }},
        {"TODBCDataSet.InternalInitRecord: ", [&] { query.InternalInitRecord(buffer); }},
        {"TODBCDataSet.InternalPost :", [&] { query.InternalPost(); }},
        {"TODBCDataSet.SetBookmarkFlag: ", [&] { query.SetBookmarkFlag(buffer, bfEOF); }},
        {"TODBCDataSet.SetBookmarkData: ", [&] { query.SetBookmarkData(buffer, buffer); }},
        {"TODBCDataSet.SetFieldData: ", [&] { query.SetFieldData(nullptr, buffer); }},
    };
    for (const auto& [prefix, action] : cases) {
        EXPECT_EQ(DatabaseErrorOf(action), prefix + tail);
    }
    EXPECT_FALSE(query.CanModify());
}

TEST(FieldTypeMap, ColumnTypesAndTheirBindingTypes) {
    struct Case {
        int sqlType;
        TFieldType field;
        SQLSMALLINT cType;
    };
    // The rows where the binding differs from the plain one-to-one reading of the table.
    for (const Case& c :
         {Case{SQL_BIGINT, ftLargeint, SQL_C_SBIGINT}, Case{SQL_REAL, ftFloat, SQL_C_DOUBLE},
          Case{SQL_TINYINT, ftSmallint, SQL_C_SHORT}, Case{SQL_BIT, ftBoolean, SQL_C_SHORT},
          Case{SQL_WCHAR, ftString, SQL_C_CHAR}, Case{SQL_WVARCHAR, ftString, SQL_C_CHAR},
          Case{SQL_WLONGVARCHAR, ftMemo, SQL_C_CHAR}, Case{SQL_VARBINARY, ftUnknown, SQL_C_BINARY},
          Case{SQL_BINARY, ftBlob, SQL_C_BINARY}, Case{SQL_DECIMAL, ftFloat, SQL_C_DOUBLE},
          Case{SQL_TIMESTAMP, ftDateTime, SQL_C_TIMESTAMP}, Case{0, ftUnknown, SQL_C_DEFAULT},
          Case{13, ftUnknown, SQL_C_DEFAULT}, Case{SQL_GUID, ftUnknown, SQL_C_DEFAULT}}) {
        EXPECT_EQ(ConvertSQLToBDE(c.sqlType), c.field) << c.sqlType;
        EXPECT_EQ(BindCTypeFor(c.sqlType), c.cType) << c.sqlType;
    }
}

TEST(FieldTypeMap, ParameterTypesOutsideTheTableRaiseAPlainException) {
    EXPECT_EQ(ConvertBDEToSQL(ftBCD), SQL_CHAR);
    EXPECT_EQ(ConvertBDEToSQL(ftTypedBinary), SQL_CHAR);
    EXPECT_EQ(ConvertBDEToSQL(ftWord), SQL_INTEGER);
    EXPECT_EQ(ConvertBDEToSQL(ftCurrency), SQL_DOUBLE);
    for (TFieldType type : {ftAutoInc, ftParadoxOle, ftDBaseOle, ftCursor, ftLargeint}) {
        try {
            ConvertBDEToSQL(type);
            ADD_FAILURE() << "type " << int(type) << " was mapped";
        } catch (const EDatabaseError&) {
            ADD_FAILURE() << "a database error, not the plain exception";
        } catch (const EODBCDatabaseError& e) {
            EXPECT_EQ(e.Message(), "Parameter type not supported");
        }
    }
}

TEST(QueryText, ParametersAreRebuiltAndValuesFollowTheirNames) {
    TestQuery query(nullptr);
    query.SQL().SetText("select * from t where a = :a and b = :b and b3 = :b");
    ASSERT_EQ(query.GetParamsCount(), 3);
    query.ParamByName("a")->SetAsInteger(1);
    query.ParamByName("b")->SetAsString("bee");
    query.Params().Items(2)->SetAsInteger(3); // a second namesake is never used
    TODBCParam* oldB = query.ParamByName("b");

    query.Events.clear();
    query.SQL().SetText("select * from t where b = :b or c = :c or b2 = :b");
    ASSERT_EQ(query.GetParamsCount(), 3);
    EXPECT_NE(query.Params().Items(0), oldB); // the collection is replaced, not edited
    EXPECT_EQ(query.Params().Items(0)->AsString(), "bee");
    EXPECT_EQ(query.Params().Items(2)->Name(), "b");
    EXPECT_EQ(query.Params().Items(2)->AsString(), "bee");
    EXPECT_FALSE(query.Params().Items(1)->Bound()); // c has no namesake
    EXPECT_EQ(query.FindParam("a"), nullptr);
    EXPECT_EQ(DatabaseErrorOf([&] { query.ParamByName("a"); }), "ODBC Parameter a not found");

    // The change is announced once, as a property change, to whatever edits the dataset.
    const std::vector<std::pair<TDataEvent, std::intptr_t>> propertyChange{{dePropertyChange, 0}};
    EXPECT_EQ(query.Events, propertyChange);

    // The same text again through SetQuery changes nothing and says nothing.
    query.Events.clear();
    TStringList same;
    same.SetText(query.SQL().Text());
    query.SetQuery(same);
    EXPECT_TRUE(query.Events.empty());
    // Values are matched by exact name: "B" is not "b".
    TStringList other;
    other.SetText("select :B, :b");
    query.SetQuery(other);
    EXPECT_EQ(query.Events, propertyChange);
    EXPECT_FALSE(query.Params().Items(0)->Bound());
    EXPECT_EQ(query.Params().Items(1)->AsString(), "bee");
}

TEST(QueryText, StoredQueryLoadsItsParametersFromTheStream) {
    TODBCQuery saved(nullptr);
    saved.SQL().SetText("update t set a = :a\nwhere id = :id");
    saved.ParamByName("a")->SetAsFloat(2.5);
    saved.ParamByName("id")->SetAsInteger(42);
    TMemoryStream stream;
    TWriter(stream).WriteProperties(&saved);

    TODBCQuery loaded(nullptr);
    stream.SetPosition(0);
    loaded.BeginLoading();
    TReader(stream).ReadProperties(&loaded);
    loaded.EndLoading();
    EXPECT_EQ(loaded.SQL().Text(), saved.SQL().Text());
    ASSERT_EQ(loaded.GetParamsCount(), 2);
    EXPECT_DOUBLE_EQ(loaded.ParamByName("a")->AsFloat(), 2.5);
    EXPECT_EQ(loaded.ParamByName("id")->DataType(), ftInteger);
    EXPECT_EQ(loaded.ParamByName("id")->AsInteger(), 42);

    // An empty query stores nothing at all.
    TODBCQuery empty(nullptr);
    TMemoryStream nothing;
    TWriter(nothing).WriteProperties(&empty);
    EXPECT_EQ(nothing.Size(), 1); // the end-of-list marker only
}

} // namespace
} // namespace quorda
