#include "core_test_support.h"
#include "quorda/core/odbc_params.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/stream.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace quorda {
namespace {

using testing::DatabaseErrorOf;

std::string Bytes(std::initializer_list<int> values) {
    std::string result;
    for (int value : values) {
        result += static_cast<char>(value);
    }
    return result;
}

std::string Written(const TODBCParams& params) {
    TStringStream stream;
    params.WriteBinaryData(stream);
    return stream.DataString();
}

void Read(TODBCParams& params, const std::string& data) {
    TStringStream stream(data);
    params.ReadBinaryData(stream);
}

// One parameter of every type with a stored layout, and the bytes each one contributes after its
// name and type: size, data, is-null, bound.
struct Sample {
    TODBCParams params;
    std::string body;

    TODBCParam* Add(const std::string& name, TFieldType type, const std::string& bytes) {
        body += Bytes({int(name.size())}) + name + Bytes({int(type)}) + bytes;
        return params.CreateParam(type, name);
    }

    Sample() {
        TStringStream z("z");
        Add("s", ftString, Bytes({3, 0, 'a', 'b', 0, 0, 1}))->SetAsString("ab");
        Add("m", ftMemo, Bytes({2, 0, 'x', 0, 0, 1}))->SetAsMemo("x");
        Add("bcd", ftBCD, Bytes({5, 0, '1', '2', '.', '5', 0, 0, 1}))->SetAsBCD(Currency(12.5));
        Add("sm", ftSmallint, Bytes({2, 0, 0xFD, 0xFF, 0, 1}))->SetAsSmallInt(-3);
        Add("w", ftWord, Bytes({2, 0, 0xFF, 0xFF, 0, 1}))->SetAsWord(65535);
        Add("t", ftBoolean, Bytes({2, 0, 0xFF, 0xFF, 0, 1}))->SetAsBoolean(true);
        Add("f", ftBoolean, Bytes({2, 0, 0, 0, 0, 1}))->SetAsBoolean(false);
        Add("i", ftInteger, Bytes({4, 0, 0xFE, 0xFF, 0xFF, 0xFF, 0, 1}))->SetAsInteger(-2);
        Add("ai", ftAutoInc, Bytes({4, 0, 0, 0, 0, 0, 0, 0}));
        Add("fl", ftFloat, Bytes({10, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0xFF, 0x3F, 0, 1}))->SetAsFloat(1.0);
        Add("cu", ftCurrency, Bytes({10, 0, 0, 0, 0, 0, 0, 0, 0, 0xA0, 0x00, 0xC0, 0, 1}))
            ->SetAsCurrency(-2.5);
        // 2000-01-01 is day 730120 counted from 0001-01-01; noon is 43200000 ms.
        Add("d", ftDate, Bytes({4, 0, 0x08, 0x24, 0x0B, 0x00, 0, 1}))->SetAsDate(EncodeDate(2000, 1, 1));
        Add("tm", ftTime, Bytes({4, 0, 0x00, 0x2E, 0x93, 0x02, 0, 1}))->SetAsTime(0.5);
        // 730120 days and six hours in milliseconds: 63082389600000.
        Add("dt", ftDateTime, Bytes({10, 0, 0, 0, 0, 0xDC, 0xB1, 0x0D, 0x7E, 0xE5, 0x2C, 0x40, 0, 1}))
            ->SetAsDateTime(EncodeDate(2000, 1, 1) + 0.25);
        Add("bl", ftBlob, Bytes({2, 0, 0, 0xFF, 0, 1}))->SetBlobData("\0\xff", 2);
        Add("ole", ftDBaseOle, Bytes({1, 0, 'z', 0, 1}))->LoadFromStream(z, ftDBaseOle);
        Add("cur", ftCursor, Bytes({0, 0, 0, 1}))->InitValue();
        Add("u", ftUnknown, Bytes({0, 0}));                            // no size and no data
        Add("n", ftInteger, Bytes({4, 0, 0, 0, 0, 0, 1, 0}))->Clear(); // a null still carries its value
    }
};

TEST(ODBCParamsData, EveryLayoutExactlyAndBack) {
    Sample sample;
    const std::string data = Written(sample.params);
    EXPECT_EQ(data, Bytes({1, 0, sample.params.Count(), 0}) + sample.body);

    TODBCParams copy;
    copy.CreateParam(ftString, "stale");
    Read(copy, data);
    ASSERT_EQ(copy.Count(), sample.params.Count());
    for (int i = 0; i < copy.Count(); ++i) {
        EXPECT_TRUE(copy[i]->IsEqual(sample.params[i])) << copy[i]->Name();
    }
    // The record-buffer form holds date-times as milliseconds and BCD as its raw integer, both in 8 bytes.
    double stamp = 0;
    std::int64_t raw = 0;
    ASSERT_EQ(copy.ParamByName("dt")->RecBufDataSize(), 8);
    copy.ParamByName("dt")->RecBufGetData(&stamp);
    EXPECT_EQ(stamp, 63082389600000.0);
    ASSERT_EQ(copy.ParamByName("bcd")->RecBufDataSize(), 8);
    copy.ParamByName("bcd")->RecBufGetData(&raw);
    EXPECT_EQ(raw, 125000);

    // Values a double holds only approximately survive to the millisecond; BCD text is written with
    // a full stop whatever the decimal separator.
    TODBCParams params;
    params.CreateParam(ftUnknown, "dt")->SetAsDateTime(EncodeDateTime(1601, 2, 3, 4, 5, 6, 789));
    params.CreateParam(ftUnknown, "bcd")->SetAsBCD(Currency::FromRaw(-123456789012345));
    const char separator = FormatSettings().DecimalSeparator;
    FormatSettings().DecimalSeparator = ',';
    TODBCParams back;
    Read(back, Written(params));
    FormatSettings().DecimalSeparator = separator;
    EXPECT_EQ(FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", back[0]->AsDateTime()), "1601-02-03 04:05:06.789");
    EXPECT_EQ(back[1]->AsBCD(), Currency::FromRaw(-123456789012345));
}

TEST(ODBCParamsData, WriteFailures) {
    TODBCParams params;
    auto* p = params.CreateParam(ftUnknown, "big");
    p->SetAsString(std::string(2047, 'x')); // 2048 bytes with the terminator: the largest accepted
    EXPECT_EQ(Written(params).size(), 4u + 1 + 3 + 1 + 2 + 2048 + 2);
    p->SetAsString(std::string(2048, 'x'));
    TStringStream stream;
    EXPECT_EQ(DatabaseErrorOf([&] { params.WriteBinaryData(stream); }), "ODBC Parameter big is too big");
    EXPECT_EQ(stream.DataString(), Bytes({1, 0, 1, 0, 3, 'b', 'i', 'g', ftString})); // written so far

    params.Clear();
    params.CreateParam(ftBytes, "b");
    EXPECT_EQ(DatabaseErrorOf([&] { Written(params); }), "ODBC Field unsupported type");
    auto* unknown = params.CreateParam(ftUnknown, "u");
    char buffer[16];
    EXPECT_EQ(DatabaseErrorOf([&] { unknown->GetDataSize(); }), "ODBC Field u undefined type");
    EXPECT_EQ(DatabaseErrorOf([&] { unknown->SetData(buffer, sizeof buffer); }),
              "ODBC Field u undefined type");
}

TEST(ODBCParamsData, ReadsOtherVersions) {
    // Version 2: 32-bit count, name length and size.
    TODBCParams params;
    Read(params, Bytes({2, 0, 2, 0, 0, 0}) +
                     Bytes({1, 0, 0, 0, 'a', ftInteger, 4, 0, 0, 0, 7, 0, 0, 0, 0, 1}) +
                     Bytes({2, 0, 0, 0, 'b', 'c', ftUnknown, 1, 0}));
    ASSERT_EQ(params.Count(), 2);
    EXPECT_EQ(params[0]->AsInteger(), 7);
    EXPECT_TRUE(params[0]->Bound());
    EXPECT_EQ(params[1]->Name(), "bc");
    EXPECT_TRUE(params[1]->IsNull());
    EXPECT_FALSE(params[1]->Bound());

    // Version 0 reads like version 1; flag bytes other than 0 and 1 read as true.
    Read(params, Bytes({0, 0, 1, 0, 1, 'z', ftSmallint, 2, 0, 0xFE, 0xFF, 1, 0x80}));
    ASSERT_EQ(params.Count(), 1);
    EXPECT_EQ(params[0]->AsInteger(), -2);
    EXPECT_TRUE(params[0]->IsNull());
    EXPECT_TRUE(params[0]->Bound());
}

TEST(ODBCParamsData, ReadFailuresAndLongNamesThatDoNotReadBack) {
    TODBCParams params;
    params.CreateParam(ftString, "old");
    // A later version: the message keeps its placeholder; the collection is already empty.
    EXPECT_EQ(DatabaseErrorOf([&] {
                  Read(params, Bytes({3, 0, 0, 0}));
              }),
              "ODBC Parameter %s incorrect version");
    EXPECT_EQ(params.Count(), 0);

    // A data size beyond 2048 is refused before any data is read.
    for (const std::string& data :
         {Bytes({1, 0, 1, 0, 3, 'b', 'i', 'g', ftBlob, 0x01, 0x08}) + std::string(2049, 'd'),
          Bytes({2, 0, 1, 0, 0, 0, 3, 0, 0, 0, 'b', 'i', 'g', ftBlob, 0xFF, 0xFF, 0xFF, 0xFF})}) {
        TStringStream stream(data);
        EXPECT_EQ(DatabaseErrorOf([&] { params.ReadBinaryData(stream); }), "ODBC Parameter big is too big");
        EXPECT_EQ(stream.Position(), data[0] == 1 ? 11 : 18);
    }

    // A short stream raises the read error and keeps what was read.
    const std::string good = Bytes({1, 'a', ftInteger, 4, 0, 5, 0, 0, 0, 0, 1});
    for (std::size_t cut : {0u, 1u, 3u, 7u, 12u}) {
        const std::string partial = Bytes({2, 'b', ftInteger, 4, 0, 6, 0, 0, 0, 0, 1}).substr(0, cut);
        EXPECT_THROW(Read(params, Bytes({1, 0, 2, 0}) + good + partial), EReadError) << cut;
        ASSERT_GE(params.Count(), 1);
        EXPECT_EQ(params[0]->AsInteger(), 5);
    }
    // A huge version-2 name length is not reserved up front.
    EXPECT_THROW(Read(params, Bytes({2, 0, 1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F, 'x'})), EReadError);
    // Types without a layout are refused when their data is read.
    EXPECT_EQ(DatabaseErrorOf([&] {
                  Read(params, Bytes({1, 0, 1, 0, 1, 'q', 200, 0, 0, 0, 0}));
              }),
              "ODBC Field unsupported type");

    // Only the low byte of the length is stored (300 mod 256 = 44), yet all 300 characters follow.
    TODBCParams named;
    named.CreateParam(ftUnknown, std::string(300, 'p'));
    const std::string data = Written(named);
    EXPECT_EQ(data, Bytes({1, 0, 1, 0, 44}) + std::string(300, 'p') + Bytes({0, 0, 0}));

    // Reading takes 44 characters as the name and the 45th ('p' = 112) as the type; its size
    // ("pp" = 28784) is refused.
    TODBCParams back;
    EXPECT_EQ(DatabaseErrorOf([&] { Read(back, data); }),
              "ODBC Parameter " + std::string(44, 'p') + " is too big");
    ASSERT_EQ(back.Count(), 1);
    EXPECT_EQ(back[0]->DataType(), TFieldType('p'));
}

// Records what a collection declares.
class RecordingFiler : public TFiler {
public:
    RecordingFiler() : TFiler(FStream) {}
    void DefineProperty(const std::string&, const TReaderProc&, const TWriterProc&, bool) override {
        ADD_FAILURE() << "no typed properties expected";
    }
    void DefineBinaryProperty(const std::string& Name, const TStreamProc&, const TStreamProc&,
                              bool HasData) override {
        EXPECT_EQ(Name, "Data");
        hasData = HasData;
    }
    bool hasData = false;

private:
    TMemoryStream FStream;
};

bool Declares(TODBCParams& params, TPersistent* ancestor) {
    RecordingFiler filer;
    filer.SetAncestor(ancestor);
    params.DefineProperties(&filer);
    return filer.hasData;
}

TEST(ODBCParamsData, WrittenOnlyWhenItCarriesSomething) {
    TODBCParams empty;
    TODBCParams one;
    one.CreateParam(ftInteger, "a")->SetAsInteger(1);
    TODBCParams same;
    same.Assign(&one);

    EXPECT_FALSE(Declares(empty, nullptr));
    EXPECT_TRUE(Declares(one, nullptr));
    EXPECT_FALSE(Declares(one, &same));
    EXPECT_TRUE(Declares(empty, &one));
    same[0]->SetAsInteger(2);
    EXPECT_TRUE(Declares(one, &same));
    // An ancestor of another kind compares like an empty collection.
    EXPECT_TRUE(Declares(one, same[0]));
    EXPECT_FALSE(Declares(empty, same[0]));
}

} // namespace
} // namespace quorda
