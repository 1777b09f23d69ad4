#include "core/odbc_dataset_p.h"
#include "quorda/rtl/exception.h"
#include "tools_test_support.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorda::testing {
namespace {

using namespace std::string_literals;

// The driver's own choice (arrays on PostgreSQL, single executes on SQLite) and single executes
// forced, as on a driver without arrays.
const std::vector<std::pair<std::string, std::optional<TDriverQuirks>>> kPaths{
    {"driver's choice", std::nullopt},
    {"single executes", TDriverQuirks{false, false}},
};

class Batch : public ToolsTest {
protected:
    std::unique_ptr<TODBCQuery> Query(const std::string& SQL, const std::optional<TDriverQuirks>& Path) {
        auto query = CreateQuery();
        query->SQL().SetText(SQL);
        // Left to itself the batch makes its own forward-only statement; a path is forced on a
        // statement prepared beforehand.
        if (Path) {
            query->Prepare();
            EngineOf(*query).Quirks = Path;
        }
        return query;
    }
};

TEST_P(Batch, RowsNullsAndMixedTypesArriveOnEveryPath) {
    // Arrays only where they gain: PostgreSQL saves a round trip per row, SQLite ODBC does not.
    EXPECT_EQ(ProbeDriverQuirks(DataBase->GetDBC()).UseParamArrays(), Profile.Name != "sqlite");
    constexpr int kRows = 2500; // three chunks, the last one short
    std::vector<std::vector<Variant>> rows;
    std::vector<quorda_test::Row> expected;
    for (int i = 0; i < kRows; ++i) {
        const std::int64_t big = 9007199254740993LL + i;
        // Text from strings and numbers; the first value is null, so the first string sets the type.
        const Variant text = i % 3 == 0   ? Variant::Null()
                             : i % 3 == 1 ? Variant("t" + std::to_string(i))
                                          : Variant(i);
        // A floating-point column that also receives integers.
        const Variant number = i == 0 ? Variant::Null() : i % 2 == 0 ? Variant(i) : Variant(i + 0.25);
        const std::string bytes = "\0x\xff"s + std::string(static_cast<std::size_t>(i % 5), ',');
        const Variant blob = i % 7 == 0 ? Variant::Null() : Variant(bytes);
        rows.push_back({i, big, text, number, blob});
        expected.push_back({std::to_string(i), std::to_string(big),
                            i % 3 == 0 ? std::nullopt : std::optional(text.AsString()),
                            i == 0 ? std::nullopt : std::optional(std::to_string(4 * i + (i % 2))),
                            i % 7 == 0 ? std::nullopt : std::optional(std::to_string(bytes.size()))});
    }
    for (const auto& [path, quirks] : kPaths) {
        const std::string t =
            Table("id integer, n bigint, t varchar(50), f double precision, b " + Profile.Sql.BlobType);
        const auto query = Query("insert into " + t + " values (:id, :n, :t, :f, :b)", quirks);
        // A parameter's own type wins over its values'.
        query->ParamByName("b")->SetDataType(ftBlob);
        DataBase->StartTransaction();
        EXPECT_EQ(query->ExecSQLBatch(rows), kRows) << path;
        DataBase->Commit();
        EXPECT_EQ(
            Raw.QueryStrings("select id, n, t, cast(f * 4 as integer), length(b) from " + t + " order by id"),
            expected)
            << path;
        // The dataset runs single statements again afterwards.
        const std::vector<Variant> single{-1, 1, "x", 1.5, "z"};
        for (std::size_t i = 0; i < single.size(); ++i) {
            query->Params()[static_cast<int>(i)]->SetAsVariant(single[i]);
        }
        query->ExecSQL();
        EXPECT_EQ(Raw.Scalar("select count(*) from " + t), std::to_string(kRows + 1)) << path;
    }
    const std::string t = Table("id integer, d " + Profile.Sql.TimestampType);
    EXPECT_EQ(ExecQueryBatch("insert into " + t + " values (:id, :d)",
                             {{1, Variant::FromDateTime(EncodeDateTime(2024, 2, 29, 23, 59, 58, 125))},
                              {2, Variant::Null()}}),
              2);
    EXPECT_EQ(Raw.QueryStrings("select d from " + t + " order by id"),
              (std::vector<quorda_test::Row>{{"2024-02-29 23:59:58.125"}, {std::nullopt}}));
}

TEST_P(Batch, AFailingRowIsNamedAndATransactionLeavesNothing) {
    struct Case {
        std::string Name;
        std::size_t Row;
        Variant Bad;
    };
    // A duplicate key in the second chunk, a value the column's type cannot take.
    const std::vector<Case> cases{{"duplicate key", 1700, Variant(5)}, {"conversion", 3, Variant("x1")}};
    for (const auto& [path, quirks] : kPaths) {
        for (const Case& c : cases) {
            const std::string t = Table("id integer primary key, name varchar(20)");
            Raw.Exec("insert into " + t + " values (5, 'kept')");
            std::vector<std::vector<Variant>> rows;
            for (int i = 0; i < 2500; ++i) {
                rows.push_back({i + 10, "row"});
            }
            rows[c.Row][0] = c.Bad;
            const auto query = Query("insert into " + t + " values (:id, :name)", quirks);
            DataBase->StartTransaction();
            try {
                query->ExecSQLBatch(rows);
                ADD_FAILURE() << path << ", " << c.Name << ": no error";
            } catch (const EODBCBatchError& e) {
                EXPECT_EQ(e.RowIndex(), c.Row) << path << ", " << c.Name;
                EXPECT_NE(e.Message().find("Row " + std::to_string(c.Row) + " of the batch failed: "),
                          std::string::npos)
                    << e.Message();
            }
            DataBase->Rollback();
            EXPECT_EQ(Raw.QueryStrings("select id, name from " + t),
                      (std::vector<quorda_test::Row>{{"5", "kept"}}))
                << path << ", " << c.Name;
        }
    }
    // A row with too few values is refused before anything runs.
    const std::string t = Table("id integer, name varchar(20)");
    try {
        ExecQueryBatch("insert into " + t + " values (:id, :name)", {{1, "a"}, {2}});
        ADD_FAILURE() << "a short row ran";
    } catch (const EODBCBatchError& e) {
        EXPECT_EQ(e.RowIndex(), 1u);
    }
    EXPECT_EQ(Raw.Scalar("select count(*) from " + t), "0");
}

// A statement executed again keeps the bindings its new values fit and binds again where they do
// not: each execution must still send exactly its own values.
TEST_P(Batch, RepeatedExecutesSendEachExecutionsOwnValues) {
    const std::string t = Table("id integer, t varchar(300), b " + Profile.Sql.BlobType);
    const auto query = Query("insert into " + t + " values (:id, :t, :b)", std::nullopt);
    // Longer and shorter texts and blobs (empty: NULL), NULLs in between, a number into the text column.
    const std::vector<std::pair<Variant, std::string>> steps{{"abc", "\0\1"s},
                                                             {std::string(200, 'x'), "\2"s},
                                                             {"", ""},
                                                             {Variant::Null(), "\3\0\3\0"s},
                                                             {"de", std::string(100, 'y')},
                                                             {42, "z"}};
    std::vector<quorda_test::Row> expected;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto& [text, bytes] = steps[i];
        query->Params()[0]->SetAsInteger(static_cast<std::int32_t>(i));
        query->Params()[1]->SetAsVariant(text);
        if (VarIsNull(text)) {
            query->Params()[1]->SetAsString("");
            query->Params()[1]->Clear();
        }
        query->Params()[2]->SetBlobData(bytes.data(), bytes.size());
        if (bytes.empty()) {
            query->Params()[2]->Clear();
        }
        query->ExecSQL();
        expected.push_back({std::to_string(i),
                            VarIsNull(text) ? std::nullopt : std::optional(text.AsString()),
                            bytes.empty() ? std::nullopt : std::optional(std::to_string(bytes.size()))});
    }
    EXPECT_EQ(Raw.QueryStrings("select id, t, length(b) from " + t + " order by id"), expected);
}

INSTANTIATE_TEST_SUITE_P(Drivers, Batch, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::testing
