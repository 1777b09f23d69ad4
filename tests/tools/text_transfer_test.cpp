#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/in_out_error.h"
#include "quorda/rtl/numbers.h"
#include "quorda/tools/text_transfer.h"
#include "tools_test_support.h"

#include <string>
#include <vector>

namespace quorda::testing {
namespace {

using namespace std::string_literals;

class TextTransfer : public ToolsTest {
protected:
    // Every column type the file format distinguishes.
    std::string AllTypes() const {
        return "id bigint primary key, i integer, s smallint, f double precision, t varchar(200), m text, "
               "b " +
               Profile.Sql.BlobType + ", d date, ts timestamp, n numeric(12,2)";
    }
    std::vector<quorda_test::Row> Contents(const std::string& Table) {
        return Raw.QueryStrings("select * from " + Table + " order by 1");
    }
    void Export(const std::string& Table, const std::filesystem::path& File) {
        const auto query = OpenQuery("select * from " + Table + " order by 1");
        ExportDataSet(query.get(), File.string());
    }
};

TEST_P(TextTransfer, ExportWritesTheByteExactFormatFileErrorsAreClearAndRoundTripsKeepEveryValue) {
    const std::string t = Table("id integer, name varchar(40), amount double precision, note varchar(40)");
    Raw.Exec("insert into " + t + " values (1, 'O''Brien', 2.5, 'a,b')");
    Raw.Exec("insert into " + t + " values (2, " + Profile.Sql.Text("D:\\data") + ", -0.125, " +
             Profile.Sql.Text("x\r\n") + ")");
    Raw.Exec("insert into " + t + " values (3, NULL, NULL, '')");
    Raw.Exec("insert into " + t + " values (4, 'four', 4, 'Grüße')");
    const auto file = TempPath();
    Export(t, file);
    EXPECT_EQ(ReadFile(file), "id,name,amount,note\r\n"
                              "1,'O''Brien',2.5,'a,b'\r\n"
                              "2,'D:\\\\data',-0.125,'x\\x0D\\x0A'\r\n"
                              "3,'',,''\r\n"
                              "4,'four',4,'Grüße'\r\n");

    // From the current record on; SaveQryToFile appends lead text and fields by position.
    const auto query = OpenQuery("select id, name, note from " + t + " order by id");
    query->MoveBy(2);
    ExportDataSet(query.get(), file.string());
    EXPECT_EQ(ReadFile(file), "id,name,note\r\n3,'',''\r\n4,'four','Grüße'\r\n");
    query->First();
    query->MoveBy(3);
    SaveQryToFile(file.string(), "X", query.get(), {"ignored", "names"});
    EXPECT_EQ(ReadFile(file), "id,name,note\r\n3,'',''\r\n4,'four','Grüße'\r\nX,4,'four'\r\n");
    SaveQryToFile(file.string(), "X", query.get(), {"at the end"}); // nothing left: untouched
    EXPECT_EQ(ReadFile(file), "id,name,note\r\n3,'',''\r\n4,'four','Grüße'\r\nX,4,'four'\r\n");
    // File errors are clear.
    EXPECT_THROW(ImportDataSet("/nonexistent/quorda/in.txt", t, "", itIgnoreExists), EInOutError);
    EXPECT_EQ(testing_support::MessageOf<EInOutError>(
                  [&] { ExportDataSet(query.get(), "/nonexistent/quorda/out.txt"); }),
              "Cannot write file \"/nonexistent/quorda/out.txt\": No such file or directory");
    query->First();
    EXPECT_THROW(SaveQryToFile("/nonexistent/quorda/out.txt", "", query.get(), {"id"}), EInOutError);
    // Every type and awkward value round trips.
    const std::string source = Table(AllTypes());
    const std::string target = Table(AllTypes());
    // A value with every escaped character, a comma after an odd number of quotes and UTF-8.
    const std::string text = "it's, a \\ \"test\"\r\n\tΩ";
    // Values go in through the library's own parameters, so NUL bytes reach the blob.
    // 64-bit keys as literals: a variant parameter is a 32-bit integer.
    ExecQueryLong("insert into " + source +
                      " values (9007199254740993, :i, :s, :f, :t, :m, :b, "
                      "'2024-02-29', '1999-12-31 23:59:58', :n)",
                  {-2147483647 - 1, -32768, 1.25, text, text + "\n2nd line", "x", "12345.67"});
    const auto blob = CreateQuery();
    blob->SQL().SetText("update " + source + " set b = :b where id = 9007199254740993");
    const std::string bytes = "\0\x01'\\,\r\n\xff"s;
    blob->Prepare();
    blob->Params()[0]->SetBlobData(bytes.data(), bytes.size());
    ExecQry(blob.get());
    ExecuteQuery("insert into " + source + " (id) values (-9223372036854775807)");
    Export(source, file);
    ImportDataSet(file.string(), target, "where id = :id", itIgnoreExists);
    EXPECT_EQ(Contents(target), Contents(source));
    EXPECT_EQ(Contents(target).size(), 2u);
    // Appended in batches, the same values arrive.
    const std::string appended = Table(AllTypes());
    AppendDataSet(file.string(), appended);
    EXPECT_EQ(Contents(appended), Contents(source));
}

TEST_P(TextTransfer, ABadLineLeavesTheTableAsItWasAndEveryShapeOfFileImportsOrIsRefusedWhole) {
    const std::string t = Table("id integer primary key, amount double precision, name varchar(20)");
    Raw.Exec("insert into " + t + " values (1, 1.5, 'kept')");
    std::string text = "id,amount,name\r\n";
    for (int line = 2; line < 5000; ++line) {
        text += std::to_string(line) + "," + std::to_string(line) + ".5,'n'\r\n";
    }
    text += "5000,12x,'bad'\r\n";
    const auto file = TempPath();
    WriteFile(file, text);
    for (const bool append : {false, true}) {
        try {
            if (append) {
                AppendDataSet(file.string(), t);
            } else {
                ImportDataSet(file.string(), t, "where id = :id", itUpdateExists);
            }
            ADD_FAILURE() << "imported";
        } catch (const EConvertError& e) {
            const auto* info = dynamic_cast<const TImportLineInfo*>(&e);
            ASSERT_NE(info, nullptr);
            EXPECT_EQ(info->Line(), 5000);
            EXPECT_EQ(e.Message(), "\"12x\" is an invalid float");
        }
        EXPECT_EQ(Contents(t), (std::vector<quorda_test::Row>{{"1", "1.5", "kept"}})) << append;
        EXPECT_FALSE(DataBase->InTransaction());
    }
    // A key already in the table stops an append at its line, in a later batch.
    WriteFile(file, text.substr(0, text.rfind("5000,")) + "1,2,'dup'\r\n");
    try {
        AppendDataSet(file.string(), t);
        ADD_FAILURE() << "duplicate appended";
    } catch (const EODBCError& e) {
        EXPECT_EQ(dynamic_cast<const TImportLineInfo&>(e).Line(), 5000);
    }
    EXPECT_EQ(Contents(t).size(), 1u);

    // An empty condition counts the whole table: every line is skipped.
    WriteFile(file, "id,amount,name\r\n7,1,'a'\r\n7,2,'b'\r\n");
    ImportDataSet(file.string(), t, "", itIgnoreExists);
    EXPECT_EQ(Contents(t).size(), 1u);
    // A statement error is passed on as the driver reported it, with its line.
    try {
        ImportDataSet(file.string(), t, "where id = :id and amount = :amount", itIgnoreExists);
        FAIL() << "duplicate key imported";
    } catch (const EODBCError& e) {
        EXPECT_EQ(dynamic_cast<const TImportLineInfo&>(e).Line(), 3);
    }
    EXPECT_EQ(Contents(t).size(), 1u);
    // Every shape of file, into a table that holds row 1: a key already there is skipped or replaced by
    // the import type; a damaged file is refused whole.
    struct Case {
        std::string Text;
        std::vector<quorda_test::Row> Rows; // after the import
        TImportType Type = itIgnoreExists;
        bool Refused = false;
    };
    const quorda_test::Row one{"1", "one"};
    const std::vector<Case> cases{
        {"", {one}},
        {"id,name\r\n", {one}},
        {"id,name\n3,'unix'\n4,''\r\n5,'no end'", {one, {"3", "unix"}, {"4", std::nullopt}, {"5", "no end"}}},
        {"id,name\r\n1,'new'\r\n3,'three'\r\n", {one, {"3", "three"}}},
        {"id,name\r\n1,'new'\r\n3,'three'\r\n", {{"1", "new"}, {"3", "three"}}, itUpdateExists},
        {"id,name\r\n6,'a',7\r\n", {one}, itIgnoreExists, true},
        {"id,name\r\n6,'a'\r\n7,'b\r\n", {one}, itIgnoreExists, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.Text + " " + std::to_string(c.Type));
        const std::string target = Table("id integer primary key, name varchar(20)");
        Raw.Exec("insert into " + target + " values (1, 'one')");
        WriteFile(file, c.Text);
        if (c.Refused) {
            EXPECT_THROW(ImportDataSet(file.string(), target, "where id = :id", c.Type), Exception);
        } else {
            ImportDataSet(file.string(), target, "where id = :id", c.Type);
        }
        EXPECT_EQ(Contents(target), c.Rows);
        EXPECT_FALSE(DataBase->InTransaction());
    }
}

// Each escaped form decodes back to the same bytes; a backslash before x stays distinguishable from
// an escape it resembles, and backslash sequences outside the table are kept when decoding.
TEST(ConverString, EscapesAndUnescapesBackToTheSameBytes) {
    const std::pair<std::string, std::string> pairs[] = {
        {"O'Brien", "O''Brien"},        {"D:\\data", "D:\\\\data"},
        {"a\r\nb", "a\\x0D\\x0Ab"},     {"\0z\0"s, "\\x00z\\x00"},
        {"\\x0D", "\\\\x0D"},           {"''", "''''"},
        {"Grüße, 東京", "Grüße, 東京"}, {"", ""}};
    for (const auto& [plain, escaped] : pairs) {
        EXPECT_EQ(ConverString(plain, true), escaped) << plain;
        EXPECT_EQ(ConverString(escaped, false), plain) << escaped;
    }
    for (const std::string text : {"\\x41", "\\x0d", "\\n", "\\", "'", "\\x0"}) {
        EXPECT_EQ(ConverString(text, false), text) << text;
    }
    EXPECT_EQ(ConverString("'''", false), "''");
}

INSTANTIATE_TEST_SUITE_P(Drivers, TextTransfer, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

} // namespace
} // namespace quorda::testing
