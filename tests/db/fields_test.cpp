// Field values: conversions and their errors, null handling, typed reads, the native date/time slots,
// text events and validation, and blob and memo values through the blob streams.

#include "db_test_support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <string_view>
#include <tuple>

using namespace quorda;
using dbtest::MessageOf;

namespace {

class FieldsTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::tuple<const char*, TFieldType, int> columns[] = {
            {"S", ftString, 5},   {"SI", ftSmallint, 0}, {"I", ftInteger, 0}, {"W", ftWord, 0},
            {"L", ftLargeint, 0}, {"F", ftFloat, 0},     {"B", ftBoolean, 0}, {"C", ftBCD, 0},
            {"BY", ftBytes, 4},   {"VB", ftVarBytes, 4}, {"D", ftDate, 0},    {"T", ftTime, 0},
            {"DT", ftDateTime, 0}};
        for (auto [name, type, size] : columns) {
            DataSet.FieldDefs().Add(name, type, size);
        }
        DataSet.CreateDataSet();
        DataSet.Append();
    }

    TField* F(const std::string& Name) { return DataSet.FieldByName(Name); }

    TMemDataSet DataSet{nullptr};
};

// Row 1 holds a value in every column, row 2 is all NULL: As<std::optional<T>> tells them apart where
// the classic accessors read NULL as the type's zero, and a plain As<T> refuses the NULL.
template <typename T>
void ExpectTypedReads(TDataSet& DataSet, const char* Column, const T& Expected) {
    SCOPED_TRACE(Column);
    DataSet.First();
    TField* field = DataSet.FieldByName(Column);
    EXPECT_EQ(field->As<T>(), Expected);
    EXPECT_EQ(field->As<std::optional<T>>(), std::optional<T>(Expected));
    DataSet.Next();
    EXPECT_EQ(field->As<std::optional<T>>(), std::nullopt);
    EXPECT_EQ(MessageOf([&] { (void)field->As<T>(); }), FormatMessage(SFieldIsNull, Column));
}

TEST_F(FieldsTest, NullReadsAsEmptyAndZeroAndTypedReadsTellNullFromTheValueOfEveryType) {
    for (TField* field : DataSet.Fields()) {
        SCOPED_TRACE(field->FieldName());
        EXPECT_TRUE(field->IsNull());
        EXPECT_TRUE(VarIsNull(field->Value()));
        EXPECT_EQ(field->AsString(), "");
    }
    EXPECT_EQ(F("I")->AsInteger(), 0);
    EXPECT_EQ(F("F")->AsFloat(), 0.0);
    EXPECT_FALSE(F("B")->AsBoolean());
    F("I")->SetAsInteger(5);
    F("I")->SetValue(Variant::Null());
    EXPECT_TRUE(F("I")->IsNull());
    F("F")->SetAsFloat(1.5);
    F("F")->SetAsString("");
    EXPECT_TRUE(F("F")->IsNull());
    F("S")->SetAsString("");
    EXPECT_FALSE(F("S")->IsNull()) << "an empty string is a value";
    F("S")->Clear();
    EXPECT_TRUE(F("S")->IsNull());
    // The values are the ones a NULL would read as classically where a type has such a zero.
    const TBytes bytes{1, 0, 255};
    const TDateTime leapNoon = EncodeDate(2024, 2, 29) + 0.5;
    F("S")->SetAsString("");
    F("I")->SetAsInteger(-7);
    F("L")->SetAsLargeInt(std::int64_t(1) << 40);
    F("F")->SetAsFloat(2.5);
    F("B")->SetAsBoolean(false);
    F("DT")->SetAsDateTime(leapNoon);
    F("C")->SetAsCurrency(Currency(12.34));
    F("VB")->SetAsBytes(bytes);
    DataSet.Post();
    DataSet.Append();
    DataSet.Post();
    ExpectTypedReads<std::string>(DataSet, "S", "");
    ExpectTypedReads<std::int32_t>(DataSet, "I", -7);
    ExpectTypedReads<std::int64_t>(DataSet, "L", std::int64_t(1) << 40);
    ExpectTypedReads<double>(DataSet, "F", 2.5);
    ExpectTypedReads<bool>(DataSet, "B", false);
    ExpectTypedReads<TDateTime>(DataSet, "DT", leapNoon);
    ExpectTypedReads<Currency>(DataSet, "C", Currency(12.34));
    ExpectTypedReads<TBytes>(DataSet, "VB", bytes);
}

// What a field keeps of a text: the text it reads back, or the error the field raises.
TEST_F(FieldsTest, TextNumbersBytesDisplayFormatsAndTextEvents) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"I", " 42 ", "42"},
        {"I", "4x", "Field \"I\" error: \"4x\" is not a valid integer"},
        {"SI", "40000", "Field \"SI\" error: 40000 is not between -32768 and 32767."},
        {"SI", "-32768", "-32768"},
        {"W", "-1", "Field \"W\" error: -1 is not between 0 and 65535."},
        {"W", "65535", "65535"},
        {"L", "9000000000", "9000000000"},
        {"F", "1.25", "1.25"},
        {"F", "1,2.3", "Field \"F\" error: \"1,2.3\" is not a valid float"},
        {"C", "12.3456", "12.3456"},
        {"B", "maybe", "\"maybe\" is not a valid boolean"},
        {"S", "abcdefgh", "abcde"},
        {"S", "ééé", "éé"}, // not a split character
        {"D", "1999-12-31", "1999-12-31"},
        {"D", "not a date", "\"not a date\" is not a valid date"}};
    for (const auto& [name, text, expected] : cases) {
        std::string read;
        try {
            F(name)->SetAsString(text);
            read = F(name)->AsString();
        } catch (const Exception& e) {
            read = e.what();
        }
        EXPECT_EQ(read, expected) << name << " = " << text;
    }
    EXPECT_EQ(F("I")->Value().VarType(), varInteger);
    EXPECT_EQ(F("C")->AsCurrency(), Currency::FromRaw(123456));
    EXPECT_EQ(F("C")->Value().VarType(), varCurrency);
    F("S")->SetAsInteger(12);
    EXPECT_EQ(F("S")->AsInteger(), 12);
    F("S")->SetAsBoolean(true);
    EXPECT_EQ(F("S")->AsString(), "T");
    // Conversions a type does not have name the target and the field.
    EXPECT_EQ(MessageOf([&] { F("B")->AsDateTime(); }), "Invalid type conversion to TDateTime in field B");
    EXPECT_EQ(MessageOf([&] { F("BY")->SetAsFloat(1); }), "Invalid type conversion to Float in field BY");
    EXPECT_EQ(MessageOf([&] {
                  F("I")->SetValue(VarArrayOf({1, 2}));
              }),
              "Field \"I\" error: Invalid variant value");
    // Numbers round half to even and keep their range.
    for (auto [value, rounded] : {std::pair{2.5, 2}, {3.5, 4}}) {
        F("I")->SetAsFloat(value);
        EXPECT_EQ(F("I")->AsInteger(), rounded);
    }
    EXPECT_THROW(F("I")->SetAsFloat(1e12), EDatabaseError);
    F("L")->SetAsLargeInt(9000000000LL);
    EXPECT_THROW(F("L")->AsInteger(), EDatabaseError) << "no silent cut to 32 bits";
    auto* bounded = static_cast<TIntegerField*>(F("I"));
    bounded->SetMinValue(1);
    bounded->SetMaxValue(10);
    EXPECT_THROW(F("I")->SetAsInteger(11), EDatabaseError);
    F("I")->SetAsInteger(10);
    F("C")->SetAsFloat(0.1);
    EXPECT_EQ(F("C")->AsString(), "0.1");
    F("BY")->SetAsBytes({1, 2});
    EXPECT_EQ(F("BY")->AsBytes(), (TBytes{1, 2, 0, 0}));
    F("VB")->SetAsBytes({9, 0, 7, 6, 5, 4});
    EXPECT_EQ(F("VB")->AsBytes(), (TBytes{9, 0, 7, 6}));
    Variant array = F("VB")->Value();
    ASSERT_TRUE(VarIsArray(array));
    EXPECT_EQ(VarArrayHighBound(array), 3);
    F("BY")->SetValue(array);
    EXPECT_EQ(F("BY")->AsBytes(), (TBytes{9, 0, 7, 6}));
    F("F")->SetAsFloat(1.25);
    static_cast<TFloatField*>(F("F"))->SetDisplayFormat("0.000");
    EXPECT_EQ(F("F")->DisplayText(), "1.250");
    EXPECT_EQ(F("F")->Text(), "1.250");
    auto* flag = static_cast<TBooleanField*>(F("B"));
    flag->SetDisplayValues("Yes;No");
    F("B")->SetAsString("n");
    EXPECT_EQ(F("B")->AsString(), "No");
    F("B")->SetText("YE");
    EXPECT_EQ(F("B")->AsInteger(), 1);
    EXPECT_EQ(MessageOf([&] { flag->SetDisplayValues("Yes"); }),
              "Field \"B\" error: \"Yes\" are not valid boolean displayvalues");
    // Text events replace the conversion; OnValidate can refuse the new value.
    TField* field = F("L");
    field->OnGetText = [](TField* Sender, std::string& Text, bool Display) {
        Text = (Display ? "#" : "") + std::to_string(Sender->AsInteger());
    };
    field->OnSetText = [](TField* Sender, const std::string& Text) {
        Sender->SetAsInteger(std::stoi(Text) * 2);
    };
    field->SetText("21");
    EXPECT_EQ(field->AsInteger(), 42);
    EXPECT_EQ(field->Text(), "42");
    EXPECT_EQ(field->DisplayText(), "#42");
    std::vector<int> seen;
    field->OnValidate = [&](TField* Sender) {
        seen.push_back(Sender->AsInteger());
        if (Sender->AsInteger() < 0) {
            throw EDatabaseError("negative");
        }
    };
    field->SetAsInteger(7);
    EXPECT_THROW(field->SetAsInteger(-7), EDatabaseError);
    EXPECT_EQ(seen, (std::vector<int>{7, -7}));
    EXPECT_EQ(field->AsInteger(), 7);
}

// The record buffer keeps dates as day numbers from 0001-01-01 (day 1), times as milliseconds since
// midnight and date-times as milliseconds since day 1; the field shows them as TDateTime again.
TEST_F(FieldsTest, DateAndTimeSlotsHoldDayNumbersAndMilliseconds) {
    const std::tuple<const char*, TDateTime, double, const char*> cases[] = {
        {"D", EncodeDateTime(1850, 3, 1, 18, 0, 0, 0), 675393, "1850-03-01 00:00:00.000"}, // no time of day
        {"D", EncodeDate(1, 1, 1), 1, "0001-01-01 00:00:00.000"},
        {"T", EncodeTime(13, 45, 30, 123), 49530123, "1899-12-30 13:45:30.123"},
        // Before the zero of TDateTime, and the last millisecond of a leap day.
        {"DT", EncodeDateTime(1899, 12, 29, 6, 0, 0, 7), 59926456800007.0, "1899-12-29 06:00:00.007"},
        {"DT", EncodeDateTime(2024, 2, 29, 23, 59, 59, 999), 63844934399999.0, "2024-02-29 23:59:59.999"}};
    for (const auto& [name, value, native, read] : cases) {
        SCOPED_TRACE(read);
        TField* field = F(name);
        field->SetAsDateTime(value);
        TDateTimeRec rec;
        ASSERT_EQ(field->DataSize(), static_cast<int>(sizeof(rec)));
        ASSERT_TRUE(field->GetData(&rec));
        const TFieldType type = field->DataType();
        EXPECT_EQ(type == ftDate ? rec.Date : type == ftTime ? rec.Time : rec.DateTime, native);
        EXPECT_EQ(FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", field->AsDateTime()), read);
        EXPECT_EQ(DateTimeRecToDateTime(type, DateTimeToDateTimeRec(type, value)), field->AsDateTime());
    }
    EXPECT_EQ(F("DT")->Value().VarType(), varDate);
    F("D")->SetAsString("");
    EXPECT_TRUE(F("D")->IsNull());
    // A stored time stamp converts in integers where it can; from before the calendar, around day 0
    // of TDateTime, to past 9999-12-31 it must come out as the calendar's own split and composition.
    constexpr double day = MSecsPerDay;
    for (const double stored :
         {0.0, 1.0, day, 2 * day - 1, (DateDelta - 1) * day + 43'200'000, DateDelta * day - 1,
          DateDelta * day, DateDelta * day + 1.75, (DateDelta + 46'000) * day + 45'296'789,
          3'652'060 * day - 1, 3'652'060 * day, -day - 1}) {
        TDateTimeRec rec{};
        rec.DateTime = stored;
        EXPECT_EQ(DateTimeRecToDateTime(ftDateTime, rec),
                  TimeStampToDateTime(MSecsToTimeStamp(std::trunc(stored))))
            << stored;
    }
    TDateTimeRec invalid{};
    invalid.DateTime = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW(DateTimeRecToDateTime(ftDateTime, invalid), EConvertError);
}

TEST(FieldClasses, EveryTypeHasItsClassNamesAreUniqueAndBlobsLiveInTheirRow) {
    TMemDataSet dataSet(nullptr);
    for (int type = ftUnknown; type <= ftWideMemo; ++type) {
        auto fieldType = static_cast<TFieldType>(type);
        if (TFieldClass fieldClass = DefaultFieldClass(fieldType)) {
            std::unique_ptr<TField> field(fieldClass(nullptr));
            field->SetFieldType(fieldType);
            EXPECT_EQ(field->DataType(), fieldType) << FieldTypeName(fieldType);
            EXPECT_EQ(field->IsBlob(), IsBlobType(fieldType)) << FieldTypeName(fieldType);
        }
    }
    TFieldDef* cursor = dataSet.FieldDefs().Add("CUR", ftCursor);
    EXPECT_EQ(MessageOf([&] { cursor->CreateField(&dataSet); }), "Unknown field type : CUR");
    EXPECT_EQ(dataSet.FieldCount(), 0);
    // Names are unique without regard to case.
    auto* first = new TIntegerField(&dataSet);
    first->SetFieldName("A");
    first->SetDataSet(&dataSet);
    auto* second = new TIntegerField(&dataSet);
    second->SetFieldName("a");
    EXPECT_THROW(second->SetDataSet(&dataSet), EDatabaseError);
    second->SetFieldName("B");
    second->SetDataSet(&dataSet);
    EXPECT_THROW(second->SetFieldName("A"), EDatabaseError);
    second->SetIndex(0);
    EXPECT_EQ(dataSet.Fields()[0], second);
    delete first;
    EXPECT_EQ(dataSet.FieldCount(), 1);
    // Field definitions, and lookups through views that are not zero-terminated.
    TFieldDefs& defs = dataSet.FieldDefs();
    defs.Add("ID", ftInteger);
    EXPECT_EQ(defs.Find("iD")->FieldNo(), 2); // after CUR
    EXPECT_THROW(defs.Find("missing"), EDatabaseError);
    EXPECT_THROW(defs.Add("", ftString, 10), EDatabaseError);
    const std::string_view text = "ID_1;B;x";
    EXPECT_EQ(defs.IndexOf(text.substr(0, 2)), 1);
    EXPECT_EQ(dataSet.FieldByName(text.substr(5, 1)), second);
    EXPECT_EQ(dataSet.FindField(text.substr(5, 3)), nullptr);
    // Values are per row, Post keeps them and Cancel discards them; streams copy binary data with its
    // zeros and signal the change when done; writes need an edit, a writable field and a live cursor.
    TMemDataSet blobs(nullptr);
    blobs.FieldDefs().Add("ID", ftInteger);
    blobs.FieldDefs().Add("NOTE", ftMemo);
    blobs.FieldDefs().Add("DATA", ftBlob);
    blobs.CreateDataSet();
    blobs.AppendRecord({1, "first note"});
    blobs.AppendRecord({2});
    blobs.First();
    const auto note = [&] { return static_cast<TBlobField*>(blobs.FieldByName("NOTE")); };
    const auto data = [&] { return static_cast<TBlobField*>(blobs.FieldByName("DATA")); };
    EXPECT_EQ(note()->BlobSize(), 10);
    EXPECT_TRUE(data()->IsNull());
    EXPECT_EQ(note()->DisplayText(), "(MEMO)");
    EXPECT_EQ(data()->DisplayText(), "(blob)");
    EXPECT_EQ(MessageOf([&] { blobs.CreateBlobStream(note(), bmWrite); }), SNotEditing);
    EXPECT_THROW(note()->SetAsString("x"), EDatabaseError);
    blobs.Edit();
    note()->SetAsString("changed");
    EXPECT_TRUE(note()->Modified());
    EXPECT_EQ(note()->AsString(), "changed");
    EXPECT_EQ(note()->OldValue().AsString(), "first note");
    blobs.Cancel();
    EXPECT_EQ(note()->AsString(), "first note");
    blobs.Edit();
    note()->SetAsString("second");
    note()->SetAsString("third");
    blobs.Post();
    blobs.Next();
    EXPECT_TRUE(VarIsNull(note()->Value()));
    blobs.Prior();
    EXPECT_EQ(note()->AsString(), "third");

    const std::string bytes("\0\x01\xff\0tail", 8);
    std::vector<std::string> changes;
    data()->OnChange = [&](TField* Field) { changes.push_back(Field->FieldName()); };
    blobs.Edit();
    {
        auto stream = blobs.CreateBlobStream(data(), bmWrite);
        stream->WriteBuffer(bytes.data(), 8);
        EXPECT_TRUE(changes.empty());
    }
    EXPECT_EQ(changes, (std::vector<std::string>{"DATA"}));
    EXPECT_TRUE(blobs.Modified());
    {
        auto stream = blobs.CreateBlobStream(data(), bmReadWrite);
        stream->Seek(0, soEnd);
        stream->WriteBuffer("!", 1);
    }
    blobs.Post();
    TMemoryStream target;
    data()->SaveToStream(target);
    EXPECT_EQ(target.DataString(), bytes + "!");
    EXPECT_EQ(data()->AsString(), bytes + "!");
    // A stream outliving the dataset's cursor writes nothing.
    blobs.Edit();
    auto stream = blobs.CreateBlobStream(note(), bmWrite);
    stream->WriteBuffer("late", 4);
    blobs.Close();
    stream.reset();
    blobs.Open();
    note()->SetReadOnly(true);
    blobs.Edit();
    EXPECT_THROW(note()->SetAsString("x"), EDatabaseError);
    EXPECT_EQ(note()->AsString(), "third");
    blobs.Cancel();
    note()->SetReadOnly(false);
    blobs.Edit();
    note()->Clear();
    blobs.Post();
    EXPECT_TRUE(note()->IsNull());
}

} // namespace
