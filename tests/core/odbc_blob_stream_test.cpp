// Memo and blob values read whole through the blob stream: NULL and empty values, values far beyond
// the bound buffer, rows other than the cursor's, trimmed memos, drivers that cannot tell a
// value's length, and writes refused on the read-only dataset.

#include "odbc_cursor_fixture.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/messages.h"

namespace quorda {
namespace {

using testing::CursorTest;
using testing::ErrorOf;
using testing::FaultDatabase;
using testing::LargeBinary;
using testing::LargeText;

std::string StreamText(TODBCQuery& Query, const std::string& Field) {
    auto stream = Query.CreateBlobStream(Query.FieldByName(Field), bmRead);
    std::string value(static_cast<std::size_t>(stream->Size()), '\0');
    if (!value.empty()) {
        stream->ReadBuffer(value.data(), static_cast<std::int64_t>(value.size()));
    }
    return value;
}

class BlobStream : public CursorTest {
protected:
    void SetUp() override {
        CursorTest::SetUp();
        const auto& sql = Profile.Sql;
        Table =
            MakeTable("blob_values", "id integer, memo " + sql.LongTextType + ", bin " + sql.BlobType,
                      "(1, NULL, NULL), (2, '', " + sql.BinaryLiteral("") + "), (3, '" + LargeText() + "', " +
                          sql.BinaryLiteral(testing::Hex(LargeBinary())) + "), (4, 'tail   ', NULL)");
    }

    std::string Table;
};

TEST_P(BlobStream, ValuesArriveWholeOnEveryRowInEitherDirectionAndInALinksWindow) {
    for (bool uniDirectional : {false, true}) {
        SCOPED_TRACE(uniDirectional ? "forward-only" : "scrollable");
        TODBCQuery& query = Query("select id, memo, bin from " + Table + " order by id");
        query.SetUniDirectional(uniDirectional);
        query.Open();
        EXPECT_EQ(StreamText(query, "memo"), "");
        EXPECT_TRUE(query.FieldByName("memo")->IsNull());
        EXPECT_EQ(StreamText(query, "bin"), "");
        query.Next();
        EXPECT_EQ(StreamText(query, "memo"), "");
        EXPECT_EQ(StreamText(query, "bin"), "");
        query.Next();
        EXPECT_TRUE(StreamText(query, "memo") == LargeText());
        EXPECT_TRUE(query.FieldByName("bin")->AsString() == LargeBinary());
        query.Next();
        EXPECT_EQ(query.FieldByName("memo")->AsString(), "tail   ");
        if (!uniDirectional) {
            // Back to an earlier row: the stream brings the cursor onto it first.
            query.Prior();
            EXPECT_TRUE(StreamText(query, "memo") == LargeText());
            query.First();
            EXPECT_TRUE(query.FieldByName("memo")->IsNull());
        }
        query.Close();
    }

    // Records of a link's window read their own rows.
    TODBCQuery& windowed = Query("select id, memo from " + Table + " order by id");
    testing::LinkedRing ring(windowed, 4);
    windowed.Open();
    const std::string expected[] = {"", "", LargeText(), "tail   "};
    for (int record : {3, 0, 2, 1}) {
        ring.Link.SetActiveRecord(record);
        EXPECT_TRUE(windowed.FieldByName("memo")->AsString() == expected[record]) << "record " << record;
    }
    ring.Link.SetActiveRecord(0);

    // A forward-only cursor stands on its window's last row: an earlier record's value is gone.
    TODBCQuery& forward = Query("select id, memo from " + Table + " order by id");
    forward.SetUniDirectional(true);
    testing::LinkedRing forwardRing(forward, 4);
    forward.Open();
    forwardRing.Link.SetActiveRecord(3);
    EXPECT_EQ(forward.FieldByName("memo")->AsString(), "tail   ");
    forwardRing.Link.SetActiveRecord(2);
    EXPECT_EQ(ErrorOf([&] { forward.FieldByName("memo")->AsString(); }), LoadStr(SODBCBlobRowLeft));
    forwardRing.Link.SetActiveRecord(0);
}

TEST_P(BlobStream, StringFieldsReadAsTextOthersAndWritesAreRefused) {
    const std::string table = MakeTable("blob_strings", "id integer, name varchar(40)", "(1, '  Grüße   ')");
    TODBCQuery& query = Opened("select name, id from " + table);
    ASSERT_EQ(query.Fields()[0]->DataType(), ftString);
    EXPECT_EQ(StreamText(query, "name"), "  Grüße   ");
    Db.SetStringTrimRight(true); // trailing blanks only, for the stream and the fields read after it
    EXPECT_EQ(StreamText(query, "name"), "  Grüße");
    EXPECT_EQ(Opened("select name from " + table).Fields()[0]->AsString(), "  Grüße");
    EXPECT_EQ(ErrorOf([&] { query.CreateBlobStream(query.FieldByName("id"), bmRead); }),
              LoadStr(SODBCInvalidBLOB));
    // Memos are trimmed the same way; no field takes a stream for writing on the read-only dataset.
    TODBCQuery& memo = Opened("select memo from " + Table + " where id = 4");
    EXPECT_EQ(StreamText(memo, "memo"), "tail");
    for (TBlobStreamMode mode : {bmWrite, bmReadWrite}) {
        EXPECT_EQ(ErrorOf([&] { memo.CreateBlobStream(memo.Fields()[0], mode); }),
                  "ODBC Field memo read only");
    }
}

INSTANTIATE_TEST_SUITE_P(Drivers, BlobStream, ::testing::ValuesIn(quorda_test::AllProfiles()),
                         quorda_test::ProfileTestName);

// Drivers that cannot tell a value's length: the first read takes what fits, the rest follows.
TEST(BlobStreamFault, ValuesOfUnknownLengthArriveWhole) {
    const auto repeat = [](const std::string& Piece, std::size_t Size) {
        std::string text;
        while (text.size() < Size) {
            text += Piece;
        }
        return text.substr(0, Size);
    };
    struct Case {
        std::string Script;
        int MaxBlobBuffer; // 0: the default
        std::string Expected;
    };
    for (const Case& c : {Case{"result:memo/-1|row:^150000:ab", 0, repeat("ab", 150000)},
                          Case{"result:bin/-4/10|row:^250000:xyz", 1000, repeat("xyz", 250000)},
                          // one byte longer than the first read: the last character is kept
                          Case{"result:memo/-1|row:0123456789X", 10, "0123456789X"}}) {
        FaultDatabase db(c.Script + "|nototal:SQLGetData@1");
        if (c.MaxBlobBuffer > 0) {
            db.Query->SetMaxBlobBuffer(c.MaxBlobBuffer);
        }
        db.Query->Open();
        EXPECT_TRUE(StreamText(*db.Query, db.Query->Fields()[0]->FieldName()) == c.Expected) << c.Script;
    }
    // Without a length on the second read either, a truncated value cannot be completed.
    FaultDatabase db("result:memo/-1|row:^150000:ab|nototal:SQLGetData");
    db.Query->Open();
    EXPECT_THROW(StreamText(*db.Query, "memo"), EODBCError);
}

} // namespace
} // namespace quorda
