#include "quorda/rtl/extended.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/persistent.h"
#include "quorda/rtl/strings.h"
#include "rtl_test_support.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace quorda {
namespace {

using namespace std::string_literals;
using testing_support::MessageOf;

std::string Hex(const std::string& bytes) {
    std::string out;
    char buffer[4];
    for (unsigned char c : bytes) {
        std::snprintf(buffer, sizeof buffer, "%02X ", c);
        out += buffer;
    }
    if (!out.empty()) {
        out.pop_back();
    }
    return out;
}

std::string Hex(const TExtended80& bytes) {
    return Hex(std::string(bytes.begin(), bytes.end()));
}

template <typename Write>
std::string Written(Write write) {
    TMemoryStream stream;
    TWriter writer(stream);
    write(writer);
    return stream.DataString();
}

// The stored properties of Instance, written against Ancestor when there is one.
std::string Properties(TPersistent* Instance, TPersistent* Ancestor = nullptr) {
    TMemoryStream stream;
    TWriter writer(stream);
    writer.SetAncestor(Ancestor);
    writer.WriteProperties(Instance);
    return stream.DataString();
}

// A persistent object with a defined and a binary property. Caption is stored only when it differs
// from the ancestor's (or is not empty without one), Blob when not empty.
class TSample : public TPersistent {
public:
    std::string ClassName() const override { return "TSample"; }

    void DefineProperties(TFiler* Filer) override {
        const auto* ancestor = dynamic_cast<const TSample*>(Filer->Ancestor());
        const bool captionDiffers = ancestor ? ancestor->Caption != Caption : !Caption.empty();
        Filer->DefineProperty(
            "Caption", [this](TReader& r) { Caption = r.ReadString(); },
            [this](TWriter& w) { w.WriteString(Caption); }, captionDiffers);
        Filer->DefineBinaryProperty(
            "Blob", [this](TStream& s) { Blob = static_cast<TMemoryStream&>(s).DataString(); },
            [this](TStream& s) { s.WriteBuffer(Blob.data(), static_cast<std::int64_t>(Blob.size())); },
            !Blob.empty());
    }

    std::string Caption;
    std::string Blob;
};

TEST(Writer, EachValueKindHasItsExactBytes) {
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteInteger(0); })), "02 00");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteInteger(-128); })), "02 80");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteInteger(128); })), "03 80 00");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteInteger(-32769); })), "04 FF 7F FF FF");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteInteger(0x100000000LL); })), "13 00 00 00 00 01 00 00 00");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteBoolean(true); })), "09");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteBoolean(false); })), "08");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteFloat(1.0); })), "05 00 00 00 00 00 00 00 80 FF 3F");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteString("Hé"); })), "06 03 48 C3 A9");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteString(""); })), "06 00");
    const std::string longText(300, 'x');
    EXPECT_EQ(Written([&](TWriter& w) { w.WriteString(longText); }), "\x0C\x2C\x01\x00\x00"s + longText);
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteIdent("alClient"); })), "07 08 61 6C 43 6C 69 65 6E 74");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteIdent("NIL"); })), "0D");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteIdent("false"); })), "08");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteIdent("True"); })), "09");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteIdent("null"); })), "00");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteListBegin(); })), "01");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteListEnd(); })), "00");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteBinary("\x01\x02", 2); })), "0A 02 00 00 00 01 02");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteSet({"a", "bc"}); })), "0B 01 61 02 62 63 00");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteSingle(1.0f); })), "0F 00 00 80 3F");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteCurrency(12345); })), "10 39 30 00 00 00 00 00 00");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteDate(2.0); })), "11 00 00 00 00 00 00 00 40");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteUTF8Str("é"); })), "14 02 00 00 00 C3 A9");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WritePropName("Tag"); })), "03 54 61 67");
    EXPECT_EQ(Written([](TWriter& w) { w.WriteStr(std::string(256, 'y')); }),
              "\xFF"s + std::string(255, 'y'));
    EXPECT_EQ(Written([](TWriter& w) { w.WriteSignature(); }), "TPF0");
}

TEST(Reader, ValuesReadBackAndAcceptTheirWiderForms) {
    TStringStream stream(Written([](TWriter& writer) {
        writer.WriteInteger(-5);
        writer.WriteInteger(70000);
        writer.WriteInteger(-5000000000LL);
        writer.WriteInteger(7); // read as a float
        writer.WriteFloat(-0.1);
        writer.WriteString(std::string(1000, 'z'));
        writer.WriteUTF8Str("ü");
        writer.WriteIdent("nil");
        writer.WriteIdent("clRed");
        writer.WriteSet({"fsBold", "fsItalic"});
        writer.WriteSet({});
        writer.WriteBinary("\0\1", 2);
        writer.WriteSingle(0.5f);
        writer.WriteDate(3.25);
        writer.WriteCurrency(-1);
    }));
    TReader reader(stream);
    EXPECT_EQ(reader.ReadInteger(), -5);
    EXPECT_EQ(reader.ReadInteger(), 70000);
    EXPECT_EQ(reader.NextValue(), vaInt64);
    EXPECT_THROW(reader.ReadInteger(), EReadError); // a 64-bit value does not fit
    EXPECT_EQ(reader.ReadInt64(), -5000000000LL);
    EXPECT_EQ(reader.ReadFloat(), 7.0);
    EXPECT_EQ(reader.ReadFloat(), -0.1);
    EXPECT_EQ(reader.ReadString(), std::string(1000, 'z'));
    EXPECT_EQ(reader.ReadString(), "ü");
    EXPECT_EQ(reader.ReadIdent(), "nil");
    EXPECT_EQ(reader.ReadIdent(), "clRed");
    EXPECT_EQ(reader.ReadSet(), (std::vector<std::string>{"fsBold", "fsItalic"}));
    EXPECT_TRUE(reader.ReadSet().empty());
    EXPECT_EQ(reader.ReadBinary(), std::string("\0\1", 2));
    EXPECT_EQ(reader.ReadFloat(), 0.5);
    EXPECT_EQ(reader.ReadDate(), 3.25);
    EXPECT_EQ(reader.ReadCurrency(), -1);
    EXPECT_EQ(stream.Position(), stream.Size());
}

TEST(Reader, WideStringsBecomeUtf8) {
    // "aé😀" in UTF-16: a, é, surrogate pair; then a lone high surrogate.
    const std::string bytes = "\x12\x04\x00\x00\x00"
                              "a\x00\xE9\x00\x3D\xD8\x00\xDE"
                              "\x15\x01\x00\x00\x00\x00\xD8"s;
    TStringStream stream(bytes);
    TReader reader(stream);
    EXPECT_EQ(reader.ReadString(), "aé😀");
    EXPECT_EQ(reader.ReadString(), "\xEF\xBF\xBD");
}

TEST(Reader, WrongKindOfValueRaisesAndLeavesTheValueUnread) {
    TStringStream stream(Written([](TWriter& writer) { writer.WriteString("text"); }));
    TReader reader(stream);
    EXPECT_EQ(MessageOf<EReadError>([&] { reader.ReadInteger(); }), "Invalid property value");
    EXPECT_EQ(stream.Position(), 0);
    EXPECT_THROW(reader.ReadBoolean(), EReadError);
    EXPECT_THROW(reader.ReadListBegin(), EReadError);
    EXPECT_THROW(reader.ReadIdent(), EReadError);
    EXPECT_EQ(reader.ReadString(), "text");

    TStringStream bad("\x63");
    TReader badReader(bad);
    EXPECT_THROW(badReader.ReadValue(), EReadError); // not a tag at all

    TStringStream notAForm("TPF1");
    TReader formReader(notAForm);
    EXPECT_THROW(formReader.ReadSignature(), EReadError);

    // A length far beyond the stream is refused before anything is allocated.
    TStringStream huge("\x0C\xFF\xFF\xFF\xFF"
                       "abc");
    TReader hugeReader(huge);
    EXPECT_THROW(hugeReader.ReadString(), EReadError);
    TStringStream hugeBinary("\x0A\xF0\xFF\xFF\x7F");
    TReader binaryReader(hugeBinary);
    EXPECT_THROW(binaryReader.SkipValue(), EReadError);
}

TEST(Filer, AnAncestorWithTheSameValueSuppressesTheProperty) {
    TSample ancestor;
    ancestor.Caption = "Same";
    TSample instance;
    instance.Caption = "Same";

    EXPECT_EQ(Properties(&instance, &ancestor), "\0"s);

    instance.Caption = "";
    // Different from the ancestor: an empty caption is stored so that reading overrides "Same".
    EXPECT_EQ(Hex(Properties(&instance, &ancestor).substr(0, 10)), "07 43 61 70 74 69 6F 6E 06 00");
    EXPECT_EQ(Properties(&instance), "\0"s);

    // A binary property round trips with its zero bytes.
    instance.Blob = std::string("\xFF\0binary", 8);
    TStringStream stream(Properties(&instance));
    TReader reader(stream);
    TSample target;
    reader.ReadProperties(&target);
    EXPECT_EQ(target.Blob, instance.Blob);
    EXPECT_EQ(stream.Position(), stream.Size());
}

TEST(Filer, PropertyNamesMatchIgnoringCaseAndUnknownNamesRaise) {
    TStringStream stream(Written([](TWriter& writer) {
        writer.WritePropName("CAPTION");
        writer.WriteString("upper");
        writer.WritePropName("Bogus");
        writer.WriteInteger(1);
        writer.WriteListEnd();
    }));
    TReader reader(stream);
    TSample target;
    EXPECT_EQ(MessageOf<EReadError>([&] { reader.ReadProperties(&target); }),
              "Property Bogus does not exist");
    EXPECT_EQ(target.Caption, "upper");

    // A binary property holding the wrong kind of value is a value error, not a crash.
    TStringStream wrong(Written([](TWriter& writer) {
        writer.WritePropName("Blob");
        writer.WriteString("not binary");
        writer.WriteListEnd();
    }));
    TReader wrongReader(wrong);
    EXPECT_THROW(wrongReader.ReadProperties(&target), EReadError);
}

TEST(Filer, StringListsPersistTheirLinesAsTheStringsProperty) {
    TStringList sql;
    sql.SetText("select *\nfrom orders");
    TStringStream stream(Properties(&sql));
    TReader reader(stream);
    TStringList back;
    back.Add("replaced");
    int changes = 0;
    back.OnChange = [&](TObject*) { ++changes; };
    reader.ReadProperties(&back);
    EXPECT_TRUE(back.Equals(sql));
    EXPECT_EQ(changes, 1);

    // Equal to the ancestor: nothing but the end marker.
    EXPECT_EQ(Properties(&sql, &back), "\0"s);
}

TEST(Reader, SkipValueStepsOverNestedValuesOfEveryKind) {
    TStringStream stream(Written([](TWriter& writer) {
        writer.WriteListBegin();
        writer.WriteInteger(1);
        writer.WriteListBegin();
        writer.WriteFloat(2.5);
        writer.WriteString(std::string(400, 's'));
        writer.WriteListEnd();
        writer.WriteSet({"x"});
        writer.WriteBinary("abc", 3);
        writer.WriteIdent("True");
        writer.WriteInteger(1LL << 50);
        writer.WriteListEnd();
        // A collection: two items, the second with an order index.
        writer.WriteCollectionBegin();
        writer.WriteListBegin();
        writer.WritePropName("Name");
        writer.WriteString("a");
        writer.WriteListEnd();
        writer.WriteInteger(3);
        writer.WriteListBegin();
        writer.WriteListEnd();
        writer.WriteListEnd();
        writer.WriteString("after");
    }));
    TReader reader(stream);
    reader.SkipValue();
    reader.SkipValue();
    EXPECT_EQ(reader.ReadString(), "after");

    // Nesting deep enough to exhaust the stack is refused.
    TStringStream deep(std::string(100000, '\x01'));
    TReader deepReader(deep);
    EXPECT_THROW(deepReader.SkipValue(), EReadError);
}

TEST(Extended, KnownValuesHaveTheX87Layout) {
    EXPECT_EQ(Hex(DoubleToExtended(0.0)), "00 00 00 00 00 00 00 00 00 00");
    EXPECT_EQ(Hex(DoubleToExtended(-0.0)), "00 00 00 00 00 00 00 00 00 80");
    EXPECT_EQ(Hex(DoubleToExtended(1.0)), "00 00 00 00 00 00 00 80 FF 3F");
    EXPECT_EQ(Hex(DoubleToExtended(-2.5)), "00 00 00 00 00 00 00 A0 00 C0");
    EXPECT_EQ(Hex(DoubleToExtended(1e-310)), "00 00 58 31 87 5B 44 93 F9 3B");
    EXPECT_EQ(Hex(DoubleToExtended(std::numeric_limits<double>::infinity())),
              "00 00 00 00 00 00 00 80 FF 7F");
    EXPECT_EQ(Hex(DoubleToExtended(-std::numeric_limits<double>::infinity())),
              "00 00 00 00 00 00 00 80 FF FF");
    EXPECT_EQ(Hex(DoubleToExtended(std::numeric_limits<double>::quiet_NaN())),
              "00 00 00 00 00 00 00 C0 FF 7F");
    EXPECT_EQ(Hex(DoubleToExtended(std::numeric_limits<double>::max())), "00 F8 FF FF FF FF FF FF FE 43");
    EXPECT_EQ(Hex(DoubleToExtended(std::numeric_limits<double>::denorm_min())),
              "00 00 00 00 00 00 00 80 CD 3B");

    EXPECT_EQ(ExtendedToDouble(DoubleToExtended(1e-310)), 1e-310);
    // A NaN keeps its payload and its quiet bit (this one is signalling).
    const std::uint64_t nan = 0x7FF4000000000123ULL;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(ExtendedToDouble(DoubleToExtended(std::bit_cast<double>(nan)))),
              nan);
    EXPECT_TRUE(std::signbit(ExtendedToDouble(DoubleToExtended(-0.0))));
}

TEST(Extended, ReadingRoundsToNearestEvenAndSaturates) {
    auto make = [](std::uint64_t mantissa, unsigned exponent) {
        TExtended80 bytes{};
        for (int i = 0; i < 8; ++i) {
            bytes[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(mantissa >> (8 * i));
        }
        bytes[8] = static_cast<std::uint8_t>(exponent);
        bytes[9] = static_cast<std::uint8_t>(exponent >> 8);
        return ExtendedToDouble(bytes);
    };
    const std::uint64_t one = 1ULL << 63;
    EXPECT_EQ(make(one | 0x3FF, 0x3FFF), 1.0);               // below half an ulp
    EXPECT_EQ(make(one | 0x400, 0x3FFF), 1.0);               // a tie, to even
    EXPECT_EQ(make(one | 0xC00, 0x3FFF), 1.0 + 2 * 0x1p-52); // a tie, to even (up)
    EXPECT_EQ(make(~0ULL, 0x3FFF), 2.0);                     // carry into the exponent
    EXPECT_EQ(make(one, 0x3FFF + 1024), std::numeric_limits<double>::infinity());
    EXPECT_EQ(make(~0ULL, 0x3FFF + 1023), std::numeric_limits<double>::infinity());
    EXPECT_EQ(make(one, 0x3FFF - 1075), 0.0); // half the smallest denormal
    EXPECT_EQ(make(one | 1, 0x3FFF - 1075), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(make(one, 0x0001), 0.0);                   // far below the range
    EXPECT_EQ(make(0x4000000000000000ULL, 0x3FFF), 0.5); // an unnormal is read by value
    EXPECT_TRUE(std::isnan(make(0, 0x7FFF)));            // pseudo-infinity
}

} // namespace
} // namespace quorda
