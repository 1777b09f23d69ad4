#include "quorda/rtl/extended.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/persistent.h"
#include "quorda/rtl/stream.h"
#include "quorda/rtl/strings.h"
#include "rtl_test_support.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <vector>

namespace quorda {
namespace {

using namespace std::string_literals;
using namespace testing_support;

// The bytes as upper-case hex pairs separated by blanks.
template <typename Bytes>
std::string Hex(const Bytes& bytes) {
    return fmt::format("{:02X}", fmt::join(std::vector<std::uint8_t>(bytes.begin(), bytes.end()), " "));
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

std::string TempPath(const std::string& name) {
    return ::testing::TempDir() + "quorda_stream_" + name;
}

TEST(Filer, EachValueKindHasItsExactBytesReadsBackAndAncestorsSuppressEqualValues) {
    EXPECT_EQ(Map<std::int64_t>(
                  {0, -128, 128, -32769, 0x100000000LL},
                  [](std::int64_t v) { return Hex(Written([&](TWriter& w) { w.WriteInteger(v); })); }),
              (Strings{"02 00", "02 80", "03 80 00", "04 FF 7F FF FF", "13 00 00 00 00 01 00 00 00"}));
    EXPECT_EQ(
        Map<const char*>({"alClient", "NIL", "false", "True", "null"},
                         [](const char* v) { return Hex(Written([&](TWriter& w) { w.WriteIdent(v); })); }),
        (Strings{"07 08 61 6C 43 6C 69 65 6E 74", "0D", "08", "09", "00"}));
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteBoolean(true); })), "09");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteBoolean(false); })), "08");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteFloat(1.0); })), "05 00 00 00 00 00 00 00 80 FF 3F");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteString("Hé"); })), "06 03 48 C3 A9");
    EXPECT_EQ(Hex(Written([](TWriter& w) { w.WriteString(""); })), "06 00");
    const std::string longText(300, 'x');
    EXPECT_EQ(Written([&](TWriter& w) { w.WriteString(longText); }), "\x0C\x2C\x01\x00\x00"s + longText);
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
    std::string bytes = Written([](TWriter& writer) {
        writer.WriteInteger(-5);
        writer.WriteInteger(70000);
        writer.WriteInteger(-5000000000LL);
        writer.WriteInteger(7); // read as a float
        writer.WriteFloat(-0.1);
        writer.WriteString(std::string(1000, 'z'));
        writer.WriteUTF8Str("ü");
        writer.WriteIdent("nil");
        writer.WriteIdent("clRed");
        writer.WriteBoolean(true);
        writer.WriteSet({"fsBold", "fsItalic"});
        writer.WriteSet({});
        writer.WriteBinary("\0\1", 2);
        writer.WriteSingle(0.5f);
        writer.WriteDate(3.25);
        writer.WriteCurrency(-1);
    });
    // "aé😀" in UTF-16 (a, é, a surrogate pair), then a lone high surrogate.
    bytes += "\x12\x04\x00\x00\x00"
             "a\x00\xE9\x00\x3D\xD8\x00\xDE"
             "\x15\x01\x00\x00\x00\x00\xD8"s;
    TStringStream stream(bytes);
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
    EXPECT_TRUE(reader.ReadBoolean());
    EXPECT_EQ(reader.ReadSet(), (std::vector<std::string>{"fsBold", "fsItalic"}));
    EXPECT_TRUE(reader.ReadSet().empty());
    EXPECT_EQ(reader.ReadBinary(), std::string("\0\1", 2));
    EXPECT_EQ(reader.ReadFloat(), 0.5);
    EXPECT_EQ(reader.ReadDate(), 3.25);
    EXPECT_EQ(reader.ReadCurrency(), -1);
    EXPECT_EQ(reader.ReadString(), "aé😀");
    EXPECT_EQ(reader.ReadString(), "\xEF\xBF\xBD");
    EXPECT_EQ(stream.Position(), stream.Size());
    // SkipValue steps over all of them in a list with an empty list nested, and over a collection of
    // two items, the second with an order index.
    const std::string collection = Written([](TWriter& writer) {
        writer.WriteCollectionBegin();
        writer.WriteListBegin();
        writer.WritePropName("Name");
        writer.WriteString("a");
        writer.WriteListEnd();
        writer.WriteInteger(3);
        writer.WriteListBegin();
        writer.WriteListEnd();
        writer.WriteListEnd();
    });
    TStringStream skipped("\x01" + bytes + "\x01\x00\x00"s + collection + "\6\5after");
    TReader skipper(skipped);
    skipper.SkipValue();
    skipper.SkipValue();
    EXPECT_EQ(skipper.ReadString(), "after");
    // Damaged input and values of the wrong kind raise a read error; lengths far beyond the stream are
    // refused before anything is allocated, and nesting deep enough to exhaust the stack is refused.
    const std::string text = Written([](TWriter& w) { w.WriteString("text"); });
    const auto readProperties = [](TReader& r) {
        TSample target;
        r.ReadProperties(&target);
    };
    const std::tuple<std::string, std::function<void(TReader&)>, const char*> cases[] = {
        {text, &TReader::ReadInteger, "Invalid property value"},
        {text, &TReader::ReadBoolean, "Invalid property value"},
        {text, &TReader::ReadListBegin, "Invalid property value"},
        {text, &TReader::ReadIdent, "Invalid property value"},
        {"\x63", &TReader::ReadValue, "Invalid property value"},
        {"TPF1", &TReader::ReadSignature, "Invalid stream format"},
        {"\x0C\xFF\xFF\xFF\xFFxyz", &TReader::ReadString, "Stream read error"},
        {"\x0A\xF0\xFF\xFF\x7F", &TReader::SkipValue, "Stream read error"},
        {std::string(100000, '\x01'), &TReader::SkipValue, "Invalid property value"},
        {"\4Blob" + text + '\0', readProperties, "Invalid property value"},
        {"\5Bogus" + text + '\0', readProperties, "Property Bogus does not exist"}};
    for (const auto& [damaged, read, message] : cases) {
        TStringStream input(damaged);
        TReader damagedReader(input);
        EXPECT_EQ(MessageOf<EReadError>([&] { read(damagedReader); }), message) << Hex(damaged.substr(0, 8));
    }
    // A value of the wrong kind stays unread.
    TStringStream wrongKind(text);
    TReader wrongReader(wrongKind);
    EXPECT_THROW(wrongReader.ReadInteger(), EReadError);
    EXPECT_EQ(wrongReader.ReadString(), "text");
    // An ancestor with the same value suppresses the property.
    TSample ancestor;
    ancestor.Caption = "Same";
    TSample instance;
    instance.Caption = "Same";
    EXPECT_EQ(Properties(&instance, &ancestor), "\0"s);
    instance.Caption = "";
    // Different from the ancestor: an empty caption is stored so that reading overrides "Same".
    EXPECT_EQ(Hex(Properties(&instance, &ancestor).substr(0, 10)), "07 43 61 70 74 69 6F 6E 06 00");
    EXPECT_EQ(Properties(&instance), "\0"s);
    // A binary property round trips with its zero bytes; names match ignoring case.
    instance.Blob = std::string("\xFF\0binary", 8);
    TStringStream upper("\x07"
                        "CAPTION\x06\x05upper" +
                        Properties(&instance));
    TSample target;
    TReader(upper).ReadProperties(&target);
    EXPECT_EQ(target.Blob, instance.Blob);
    EXPECT_EQ(target.Caption, "upper");
    EXPECT_EQ(upper.Position(), upper.Size());
    // String lists persist their lines as the Strings property.
    TStringList sql;
    sql.SetText("select *\nfrom orders");
    TStringStream lines(Properties(&sql));
    TStringList back;
    back.Add("replaced");
    int changes = 0;
    back.OnChange = [&](TObject*) { ++changes; };
    TReader(lines).ReadProperties(&back);
    EXPECT_TRUE(back.Equals(sql));
    EXPECT_EQ(changes, 1);
    // Equal to the ancestor: nothing but the end marker.
    EXPECT_EQ(Properties(&sql, &back), "\0"s);
}

TEST(Streams, X87LayoutAndMemoryAndFileStreams) {
    using limits = std::numeric_limits<double>;
    const double inf = limits::infinity(), nan = limits::quiet_NaN(), max = limits::max(),
                 tiny = limits::denorm_min();
    const std::pair<double, const char*> layouts[] = {
        {0.0, "00 00 00 00 00 00 00 00 00 00"},    {-0.0, "00 00 00 00 00 00 00 00 00 80"},
        {1.0, "00 00 00 00 00 00 00 80 FF 3F"},    {-2.5, "00 00 00 00 00 00 00 A0 00 C0"},
        {1e-310, "00 00 58 31 87 5B 44 93 F9 3B"}, {inf, "00 00 00 00 00 00 00 80 FF 7F"},
        {-inf, "00 00 00 00 00 00 00 80 FF FF"},   {nan, "00 00 00 00 00 00 00 C0 FF 7F"},
        {max, "00 F8 FF FF FF FF FF FF FE 43"},    {tiny, "00 00 00 00 00 00 00 80 CD 3B"}};
    for (const auto& [value, layout] : layouts) {
        EXPECT_EQ(Hex(DoubleToExtended(value)), layout) << value;
    }
    EXPECT_EQ(ExtendedToDouble(DoubleToExtended(1e-310)), 1e-310);
    // A NaN keeps its payload and its quiet bit (this one is signalling).
    const std::uint64_t signalling = 0x7FF4000000000123ULL;
    EXPECT_EQ(
        std::bit_cast<std::uint64_t>(ExtendedToDouble(DoubleToExtended(std::bit_cast<double>(signalling)))),
        signalling);
    EXPECT_TRUE(std::signbit(ExtendedToDouble(DoubleToExtended(-0.0))));
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
    TMemoryStream stream;
    stream.WriteBuffer("abcdef", 6);
    EXPECT_EQ(stream.Seek(-100, soCurrent), 0); // clamped at the start
    EXPECT_EQ(stream.Seek(10, soBeginning), 10);
    char buffer[4];
    EXPECT_EQ(stream.Read(buffer, 4), 0); // nothing past the end
    stream.WriteBuffer("Z", 1);
    EXPECT_EQ(stream.DataString(), std::string("abcdef\0\0\0\0Z", 11));
    stream.SetPosition(3);
    stream.Truncate();
    EXPECT_EQ(stream.DataString(), "abc");
    EXPECT_THROW(stream.SetSize(-1), EStreamError);
    // CopyFrom and LoadFromStream take a part or the whole source.
    TStringStream source("0123456789");
    TMemoryStream target;
    source.SetPosition(7);
    EXPECT_EQ(target.CopyFrom(source, 0), 10); // 0 means all of it, from the start
    EXPECT_EQ(target.DataString(), "0123456789");
    source.SetPosition(2);
    TMemoryStream part;
    EXPECT_EQ(part.CopyFrom(source, 3), 3);
    EXPECT_EQ(part.DataString(), "234");
    EXPECT_EQ(source.Position(), 5);
    EXPECT_THROW(part.CopyFrom(source, 6), EReadError);
    source.SetPosition(5);
    EXPECT_EQ(source.ReadString(10), "56789");
    // Loading replaces the whole content, from the start of the source, and rewinds.
    TStringStream shorter("xy");
    shorter.SetPosition(1);
    part.LoadFromStream(shorter);
    EXPECT_EQ(part.DataString(), "xy");
    EXPECT_EQ(part.Position(), 0);
    const std::string path = TempPath("file.bin");
    {
        TFileStream file(path, fmCreate);
        file.WriteBuffer("hello world", 11);
        EXPECT_EQ(file.Size(), 11);
        file.SetSize(5);
        EXPECT_EQ(file.Position(), 5);
        file.WriteDWord(0xAABBCCDD);
    }
    {
        TFileStream file(path, fmOpenRead | fmShareDenyNone);
        EXPECT_EQ(file.Size(), 9);
        char head[5];
        file.ReadBuffer(head, 5);
        EXPECT_EQ(std::string(head, 5), "hello");
        EXPECT_EQ(file.ReadDWord(), 0xAABBCCDDu);
        EXPECT_THROW(file.ReadByte(), EReadError);
        // A read-only file refuses writes with the stream's write error.
        file.SetPosition(0);
        EXPECT_THROW(file.WriteBuffer("x", 1), EWriteError);
    }
    {
        TFileStream file(path, fmOpenReadWrite);
        file.Seek(0, soEnd);
        file.WriteBuffer("!", 1);
        EXPECT_EQ(file.Size(), 10);
    }
    // fmCreate truncates an existing file.
    EXPECT_EQ(TFileStream(path, fmCreate).Size(), 0);
    std::remove(path.c_str());
    // Open failures carry the file name and the system's reason.
    const std::string missing = TempPath("does_not_exist.bin");
    std::remove(missing.c_str());
    EXPECT_EQ(MessageOf<EFOpenError>([&] { TFileStream file(missing, fmOpenRead); }),
              "Cannot open file \"" + missing + "\": No such file or directory");
    const std::string inMissingDir = TempPath("no_dir/x.bin");
    EXPECT_EQ(MessageOf<EFCreateError>([&] { TFileStream file(inMissingDir, fmCreate); }),
              "Cannot create file \"" + inMissingDir + "\": No such file or directory");
    // A directory is not a file to stream from.
    EXPECT_THROW(TFileStream(::testing::TempDir(), fmOpenRead), EFOpenError);
    EXPECT_THROW(TFileStream(missing, fmOpenReadWrite), EStreamError);
}

} // namespace
} // namespace quorda
