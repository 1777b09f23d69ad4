#include "quorda/core/odbc_params.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/stream.h"

#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace quorda {
namespace {

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

std::string DatabaseErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const EDatabaseError& e) {
        return e.Message();
    }
    return "<no EDatabaseError>";
}

// One parameter of every type with a persisted layout, and the bytes each contributes.
struct Sample {
    TODBCParams params;
    std::string body;

    Sample() {
        auto add = [this](const std::string& name, TFieldType type,
                          const std::function<void(TODBCParam*)>& set, const std::string& bytes) {
            TODBCParam* p = params.CreateParam(type, name);
            set(p);
            body += Bytes({int(name.size())}) + name + Bytes({int(type)}) + bytes;
        };
        // After the type: size, data, is-null, bound.
        add(
            "s", ftString, [](TODBCParam* p) { p->SetAsString("ab"); }, Bytes({3, 0, 'a', 'b', 0, 0, 1}));
        add(
            "m", ftMemo, [](TODBCParam* p) { p->SetAsMemo("x"); }, Bytes({2, 0, 'x', 0, 0, 1}));
        add(
            "bcd", ftBCD, [](TODBCParam* p) { p->SetAsBCD(Currency(12.5)); },
            Bytes({5, 0, '1', '2', '.', '5', 0, 0, 1}));
        add(
            "sm", ftSmallint, [](TODBCParam* p) { p->SetAsSmallInt(-3); }, Bytes({2, 0, 0xFD, 0xFF, 0, 1}));
        add(
            "w", ftWord, [](TODBCParam* p) { p->SetAsWord(65535); }, Bytes({2, 0, 0xFF, 0xFF, 0, 1}));
        add(
            "t", ftBoolean, [](TODBCParam* p) { p->SetAsBoolean(true); }, Bytes({2, 0, 0xFF, 0xFF, 0, 1}));
        add(
            "f", ftBoolean, [](TODBCParam* p) { p->SetAsBoolean(false); }, Bytes({2, 0, 0, 0, 0, 1}));
        add(
            "i", ftInteger, [](TODBCParam* p) { p->SetAsInteger(-2); },
            Bytes({4, 0, 0xFE, 0xFF, 0xFF, 0xFF, 0, 1}));
        add(
            "ai", ftAutoInc, [](TODBCParam*) {}, Bytes({4, 0, 0, 0, 0, 0, 0, 0}));
        add(
            "fl", ftFloat, [](TODBCParam* p) { p->SetAsFloat(1.0); },
            Bytes({10, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0xFF, 0x3F, 0, 1}));
        add(
            "cu", ftCurrency, [](TODBCParam* p) { p->SetAsCurrency(-2.5); },
            Bytes({10, 0, 0, 0, 0, 0, 0, 0, 0, 0xA0, 0x00, 0xC0, 0, 1}));
        // 2000-01-01 is day 730120 counted from 0001-01-01.
        add(
            "d", ftDate, [](TODBCParam* p) { p->SetAsDate(EncodeDate(2000, 1, 1)); },
            Bytes({4, 0, 0x08, 0x24, 0x0B, 0x00, 0, 1}));
        add(
            "tm", ftTime, [](TODBCParam* p) { p->SetAsTime(EncodeTime(12, 0, 0, 0)); },
            Bytes({4, 0, 0x00, 0x2E, 0x93, 0x02, 0, 1}));
        // 730120 days and six hours in milliseconds: 63082389600000.
        add(
            "dt", ftDateTime, [](TODBCParam* p) { p->SetAsDateTime(EncodeDateTime(2000, 1, 1, 6, 0, 0, 0)); },
            Bytes({10, 0, 0, 0, 0, 0xDC, 0xB1, 0x0D, 0x7E, 0xE5, 0x2C, 0x40, 0, 1}));
        add(
            "bl", ftBlob, [](TODBCParam* p) { p->SetBlobData("\0\xff", 2); }, Bytes({2, 0, 0, 0xFF, 0, 1}));
        add(
            "ole", ftDBaseOle,
            [](TODBCParam* p) {
                TStringStream content("z");
                p->LoadFromStream(content, ftDBaseOle);
            },
            Bytes({1, 0, 'z', 0, 1}));
        add(
            "cur", ftCursor, [](TODBCParam* p) { p->InitValue(); }, Bytes({0, 0, 0, 1}));
        // No size and no data for an unknown type.
        add(
            "u", ftUnknown, [](TODBCParam*) {}, Bytes({0, 0}));
        // A null integer still carries its stored value.
        add(
            "n", ftInteger, [](TODBCParam* p) { p->Clear(); }, Bytes({4, 0, 0, 0, 0, 0, 1, 0}));
    }

    std::string Expected() const { return Bytes({1, 0, params.Count(), 0}) + body; }
};

TEST(ODBCParamsData, WritesEveryLayoutExactly) {
    Sample sample;
    EXPECT_EQ(Written(sample.params), sample.Expected());
}

TEST(ODBCParamsData, ReadsBackWhatItWrites) {
    Sample sample;
    TODBCParams copy;
    copy.CreateParam(ftString, "stale");
    Read(copy, Written(sample.params));
    ASSERT_EQ(copy.Count(), sample.params.Count());
    for (int i = 0; i < copy.Count(); ++i) {
        EXPECT_TRUE(copy[i]->IsEqual(sample.params[i])) << copy[i]->Name();
    }
    // Values that a double cannot hold exactly survive to the millisecond.
    TODBCParams params;
    params.CreateParam(ftUnknown, "t")->SetAsTime(EncodeTime(23, 59, 59, 7));
    params.CreateParam(ftUnknown, "dt")->SetAsDateTime(EncodeDateTime(1601, 2, 3, 4, 5, 6, 789));
    params.CreateParam(ftUnknown, "bcd")->SetAsBCD(Currency::FromRaw(-123456789012345));
    TODBCParams back;
    Read(back, Written(params));
    EXPECT_EQ(back[0]->AsString(), params[0]->AsString());
    EXPECT_EQ(FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", back[1]->AsDateTime()), "1601-02-03 04:05:06.789");
    EXPECT_EQ(back[2]->AsBCD(), Currency::FromRaw(-123456789012345));
}

TEST(ODBCParamsData, BcdTextIgnoresTheDecimalSeparator) {
    TODBCParams params;
    params.CreateParam(ftUnknown, "bcd")->SetAsBCD(Currency(1.5));
    const char separator = FormatSettings().DecimalSeparator;
    FormatSettings().DecimalSeparator = ',';
    const std::string data = Written(params);
    TODBCParams back;
    Read(back, data);
    FormatSettings().DecimalSeparator = separator;
    EXPECT_NE(data.find("1.5"), std::string::npos);
    EXPECT_EQ(back[0]->AsBCD(), Currency(1.5));
}

TEST(ODBCParamsData, RecordBufferFormUsesDoubles) {
    TODBCParams params;
    auto* p = params.CreateParam(ftUnknown, "p");
    double value = 0;
    p->SetAsCurrency(-2.5);
    ASSERT_EQ(p->RecBufDataSize(), 8);
    p->RecBufGetData(&value);
    EXPECT_EQ(value, -2.5);

    p->SetAsDateTime(EncodeDateTime(2000, 1, 1, 6, 0, 0, 0));
    ASSERT_EQ(p->RecBufDataSize(), 8);
    p->RecBufGetData(&value);
    EXPECT_EQ(value, 63082389600000.0);

    std::int64_t raw = 0;
    p->SetAsBCD(Currency::FromRaw(-15));
    ASSERT_EQ(p->RecBufDataSize(), 8);
    p->RecBufGetData(&raw);
    EXPECT_EQ(raw, -15);

    // Other types share the stored layout.
    std::int32_t number = 0;
    p->SetAsInteger(-9);
    ASSERT_EQ(p->RecBufDataSize(), 4);
    p->RecBufGetData(&number);
    EXPECT_EQ(number, -9);
}

TEST(ODBCParamsData, WriteFailures) {
    TODBCParams params;
    auto* p = params.CreateParam(ftUnknown, "big");
    p->SetAsString(std::string(2047, 'x')); // 2048 bytes with the terminator: the largest accepted
    EXPECT_EQ(Written(params).size(), 4u + 1 + 3 + 1 + 2 + 2048 + 2);

    p->SetAsString(std::string(2048, 'x'));
    TStringStream stream;
    EXPECT_EQ(DatabaseErrorOf([&] { params.WriteBinaryData(stream); }), "ODBC Parameter big is too big");
    // Written so far: version, count, name and type.
    EXPECT_EQ(stream.DataString(), Bytes({1, 0, 1, 0, 3, 'b', 'i', 'g', ftString}));

    params.Clear();
    params.CreateParam(ftBytes, "b");
    EXPECT_EQ(DatabaseErrorOf([&] { Written(params); }), "ODBC Field unsupported type");
    params.Clear();
    auto* unknown = params.CreateParam(ftUnknown, "u");
    EXPECT_EQ(DatabaseErrorOf([&] { unknown->GetDataSize(); }), "ODBC Field u undefined type");
    char buffer[16];
    EXPECT_EQ(DatabaseErrorOf([&] { unknown->GetData(buffer); }), "ODBC Field u undefined type");
    EXPECT_EQ(DatabaseErrorOf([&] { unknown->SetData(buffer, sizeof buffer); }),
              "ODBC Field u undefined type");
}

TEST(ODBCParamsData, ReadsOtherVersions) {
    // Version 2: 32-bit count, name length and size.
    const std::string v2 = Bytes({2, 0, 2, 0, 0, 0}) +
                           Bytes({1, 0, 0, 0, 'a', ftInteger, 4, 0, 0, 0, 7, 0, 0, 0, 0, 1}) +
                           Bytes({2, 0, 0, 0, 'b', 'c', ftUnknown, 1, 0});
    TODBCParams params;
    Read(params, v2);
    ASSERT_EQ(params.Count(), 2);
    EXPECT_EQ(params[0]->Name(), "a");
    EXPECT_EQ(params[0]->AsInteger(), 7);
    EXPECT_TRUE(params[0]->Bound());
    EXPECT_EQ(params[1]->Name(), "bc");
    EXPECT_EQ(params[1]->DataType(), ftUnknown);
    EXPECT_TRUE(params[1]->IsNull());
    EXPECT_FALSE(params[1]->Bound());

    // Version 0 reads like version 1.
    Read(params, Bytes({0, 0, 1, 0, 1, 'z', ftSmallint, 2, 0, 0xFE, 0xFF, 1, 1}));
    ASSERT_EQ(params.Count(), 1);
    EXPECT_EQ(params[0]->AsInteger(), -2);
    EXPECT_TRUE(params[0]->IsNull());

    // Flag bytes other than 0 and 1 read as true.
    Read(params, Bytes({1, 0, 1, 0, 0, ftUnknown, 2, 0x80}));
    EXPECT_TRUE(params[0]->IsNull());
    EXPECT_TRUE(params[0]->Bound());
}

TEST(ODBCParamsData, ReadFailures) {
    TODBCParams params;
    params.CreateParam(ftString, "old");
    // A later version: the message keeps its placeholder, the collection is already empty.
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
        EXPECT_EQ(params.Count(), 1);
    }

    // A short stream raises the read error and keeps what was read.
    const std::string good = Bytes({1, 'a', ftInteger, 4, 0, 5, 0, 0, 0, 0, 1});
    for (std::size_t cut : {0u, 1u, 3u, 7u, 12u}) {
        const std::string partial = Bytes({2, 'b', ftInteger, 4, 0, 6, 0, 0, 0, 0, 1}).substr(0, cut);
        EXPECT_THROW(Read(params, Bytes({1, 0, 2, 0}) + good + partial), EReadError) << cut;
        ASSERT_GE(params.Count(), 1);
        EXPECT_EQ(params[0]->AsInteger(), 5);
    }
    EXPECT_THROW(Read(params, Bytes({1})), EReadError);
    // A huge version-2 name length is not allocated up front.
    EXPECT_THROW(Read(params, Bytes({2, 0, 1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F, 'x'})), EReadError);

    // Types without a layout are refused when their data is read.
    EXPECT_EQ(DatabaseErrorOf([&] {
                  Read(params, Bytes({1, 0, 1, 0, 1, 'q', ftBytes, 0, 0, 0, 0}));
              }),
              "ODBC Field unsupported type");
    EXPECT_EQ(DatabaseErrorOf([&] {
                  Read(params, Bytes({1, 0, 1, 0, 1, 'q', 200, 0, 0, 0, 0}));
              }),
              "ODBC Field unsupported type");
}

TEST(ODBCParamsData, LongNamesDoNotReadBack) {
    // Only the low byte of the length is stored (300 mod 256 = 44), yet all 300 characters follow.
    TODBCParams params;
    params.CreateParam(ftUnknown, std::string(300, 'p'));
    const std::string data = Written(params);
    EXPECT_EQ(data, Bytes({1, 0, 1, 0, 44}) + std::string(300, 'p') + Bytes({0, 0, 0}));

    // Reading takes 44 characters as the name and the 45th ('p' = 112) as the type, an unsupported
    // one; but first its size ("pp" = 28784) is refused.
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
        names.push_back(Name);
        hasData.push_back(HasData);
    }
    std::vector<std::string> names;
    std::vector<bool> hasData;

private:
    TMemoryStream FStream;
};

bool Declares(TODBCParams& params, TPersistent* ancestor) {
    RecordingFiler filer;
    filer.SetAncestor(ancestor);
    params.DefineProperties(&filer);
    EXPECT_EQ(filer.names, std::vector<std::string>{"Data"});
    return !filer.hasData.empty() && filer.hasData.front();
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
    EXPECT_FALSE(Declares(empty, &empty));
    same[0]->SetAsInteger(2);
    EXPECT_TRUE(Declares(one, &same));
    // An ancestor of another kind compares like an empty collection.
    EXPECT_TRUE(Declares(one, same[0]));
    EXPECT_FALSE(Declares(empty, same[0]));

    // Through the writer: an empty collection over an ancestor with parameters writes version 1,
    // count 0 as a binary property.
    TMemoryStream stream;
    {
        TWriter writer(stream);
        writer.SetAncestor(&one);
        writer.WriteProperties(&empty);
    }
    TStringStream expected;
    expected.WriteString(Bytes({4, 'D', 'a', 't', 'a', vaBinary, 4, 0, 0, 0, 1, 0, 0, 0, vaNull}));
    std::string bytes(static_cast<const char*>(stream.Memory()), static_cast<std::size_t>(stream.Size()));
    EXPECT_EQ(bytes, expected.DataString());

    // And a full collection round-trips through the reader.
    TMemoryStream full;
    {
        TWriter writer(full);
        writer.WriteProperties(&one);
    }
    full.SetPosition(0);
    TODBCParams back;
    TReader reader(full);
    reader.ReadProperties(&back);
    EXPECT_TRUE(back.IsEqual(&one));
}

} // namespace
} // namespace quorda
