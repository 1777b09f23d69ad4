#pragma once

#include "quorda/db/types.h"
#include "quorda/rtl/component.h"
#include "quorda/rtl/currency.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/variant.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

class TDataSet;
class TFieldDef;
class TFields;
class TField;

using TFieldNotifyEvent = std::function<void(TField* Sender)>;
using TFieldGetTextEvent = std::function<void(TField* Sender, std::string& Text, bool DisplayText)>;
using TFieldSetTextEvent = std::function<void(TField* Sender, const std::string& Text)>;
using TBytes = std::vector<std::uint8_t>;

// A look at a field's native value where its dataset keeps it, for reads that copy nothing
// (TField::DataView). Valid until the dataset's active record changes.
struct TFieldDataView {
    // The value in the field's native layout; null for NULL.
    const std::byte* Data = nullptr;
    // The bytes of Data the field reads (a string ends at its zero or here, whichever comes first).
    std::size_t Size = 0;
    // False when the dataset keeps no slot to look at: the value is read through GetData instead.
    bool Direct = false;
};

// The value of one column of the current record of a dataset, converted to and from the native
// layout of the record buffer. Reads and writes go through the dataset's GetFieldData/SetFieldData;
// the field itself keeps no value.
//
// Native layouts (NativeFormat true): strings zero-terminated in Size + 1 bytes; smallint, word and
// boolean 16-bit; integer 32-bit; largeint 64-bit; float and currency double; BCD a Currency
// (64-bit, scaled by 10000); date int32 days of a TTimeStamp; time int32 milliseconds since midnight;
// date-time double milliseconds (TimeStampToMSecs). With NativeFormat false dates and times travel
// as TDateTime.
class QUORDA_API TField : public TComponent {
public:
    explicit TField(TComponent* AOwner);
    ~TField() override;

    std::string ClassName() const override { return "TField"; }
    // Copies the value of another field (null source: clears).
    void Assign(const TPersistent* Source) override;

    // --- description
    const std::string& FieldName() const { return FFieldName; }
    void SetFieldName(const std::string& Value);
    // The column number in the dataset's field definitions (1-based); -1 for calculated and lookup
    // fields, 0 while unbound.
    int FieldNo() const { return FFieldNo; }
    TFieldType DataType() const { return FDataType; }
    int DataSize() const { return GetDataSize(); }
    int Size() const { return FSize; }
    void SetSize(int Value);
    // Position among the dataset's fields; -1 without a dataset.
    int Index() const;
    void SetIndex(int Value);
    // Offset of a calculated field's slot in the calculated-field area of a record buffer.
    int Offset() const { return FOffset; }
    const std::string& Origin() const { return FOrigin; }
    void SetOrigin(const std::string& Value) { FOrigin = Value; }
    // DisplayLabel when set, otherwise FieldName.
    std::string DisplayName() const;
    std::string DisplayLabel() const { return DisplayName(); }
    void SetDisplayLabel(const std::string& Value);
    int DisplayWidth() const;
    void SetDisplayWidth(int Value);
    TAlignment Alignment() const { return FAlignment; }
    void SetAlignment(TAlignment Value);
    bool Visible() const { return FVisible; }
    void SetVisible(bool Value);
    bool ReadOnly() const { return FReadOnly; }
    void SetReadOnly(bool Value);
    bool Required() const { return FRequired; }
    void SetRequired(bool Value) { FRequired = Value; }
    TFieldKind FieldKind() const { return FFieldKind; }
    void SetFieldKind(TFieldKind Value);
    bool Calculated() const { return FFieldKind == fkCalculated || FFieldKind == fkInternalCalc; }
    TDataSet* DataSet() const { return FDataSet; }
    // Attaches the field to a dataset (both must be closed); null detaches it.
    virtual void SetDataSet(TDataSet* Value);
    TFieldDef* FieldDef() const { return FFieldDef; }
    virtual bool IsBlob() const { return false; }
    bool CanModify() const { return GetCanModify(); }
    bool IsNull() const { return GetIsNull(); }

    // --- value
    std::string AsString() const { return GetAsString(); }
    void SetAsString(const std::string& Value) { DoSetAsString(Value); }
    std::int32_t AsInteger() const { return GetAsInteger(); }
    void SetAsInteger(std::int32_t Value) { DoSetAsInteger(Value); }
    std::int64_t AsLargeInt() const { return GetAsLargeInt(); }
    void SetAsLargeInt(std::int64_t Value) { DoSetAsLargeInt(Value); }
    double AsFloat() const { return GetAsFloat(); }
    void SetAsFloat(double Value) { DoSetAsFloat(Value); }
    Currency AsCurrency() const { return GetAsCurrency(); }
    void SetAsCurrency(Currency Value) { DoSetAsCurrency(Value); }
    bool AsBoolean() const { return GetAsBoolean(); }
    void SetAsBoolean(bool Value) { DoSetAsBoolean(Value); }
    TDateTime AsDateTime() const { return GetAsDateTime(); }
    void SetAsDateTime(TDateTime Value) { DoSetAsDateTime(Value); }
    TBytes AsBytes() const { return GetAsBytes(); }
    void SetAsBytes(const TBytes& Value) { DoSetAsBytes(Value); }
    // Null for a null value.
    Variant AsVariant() const { return GetAsVariant(); }
    // The value as T: As<std::string>(), As<std::int32_t>(), As<std::int64_t>(), As<double>() (also
    // TDateTime), As<bool>(), As<Currency>(), As<TBytes>() convert as the As... accessors do but
    // raise EDatabaseError for NULL; As<std::optional<T>>() gives std::nullopt for NULL. The readers
    // are the specialisations of TFieldAs (field_as.h).
    template <typename T>
    T As() const;
    // Null or empty clears the field; a value the field cannot take raises EDatabaseError.
    void SetAsVariant(const Variant& Value) { DoSetAsVariant(Value); }
    Variant Value() const { return GetAsVariant(); }
    void SetValue(const Variant& Value) { DoSetAsVariant(Value); }
    // The value before the current edit, the current value in the data source, the pending value
    // (through the dataset's GetStateFieldValue).
    Variant OldValue() const;
    Variant CurValue() const;
    Variant NewValue() const;
    void SetNewValue(const Variant& Value);

    // The edit text (OnGetText with DisplayText false, or the field's own conversion) and the
    // display text (OnGetText with DisplayText true).
    std::string Text() const;
    void SetText(const std::string& Value);
    std::string DisplayText() const;

    // Sets the field to null.
    virtual void Clear();
    // Asks the data-aware control showing this field to take the focus.
    void FocusControl();

    // The text of a direct view of this field holding a value (DataView): as long as the length the
    // dataset keeps beside the slot says, or up to its zero; never past View.Size.
    std::string_view SlotText(const TFieldDataView& View) const {
        const auto* text = reinterpret_cast<const char*>(View.Data);
        if (FSlotLengthDelta != 0) {
            std::int64_t length = 0;
            std::memcpy(&length, View.Data + FSlotLengthDelta, sizeof length);
            return {text, std::min(static_cast<std::size_t>(length), View.Size)};
        }
        return {text, strnlen(text, View.Size)};
    }
    // The value in place in the dataset's record buffer, when the dataset keeps one (Direct). Read
    // for every field of every row: the browsing case is inline (end of dataset.h).
    TFieldDataView DataView() const {
        // Nearly every read happens while browsing: a slot the dataset declared is read in place. (The
        // slot is forgotten whenever the field leaves its dataset or the dataset rebinds its fields.)
        if (FSlotOffset >= 0 && !FValidating && FBrowse->FState == dsBrowse) {
            // No record at all: closed, or empty (Bof and Eof).
            if (FBrowse->FRecordCount == 0) {
                return {nullptr, 0, true};
            }
            const std::byte* presence =
                FBrowse->FBuffers[static_cast<std::size_t>(FBrowse->FActiveRecord)] + FSlotOffset;
            return {*presence == std::byte{'1'} ? presence + 1 : nullptr, FSlotSize, true};
        }
        return PeekDataView();
    }
    // Copies the value into Buffer (may be null to test for null); false when the value is null.
    bool GetData(void* Buffer, bool NativeFormat = true) const;
    // Stores the value of Buffer (null: set to null).
    void SetData(const void* Buffer, bool NativeFormat = true);
    // Runs OnValidate with Buffer as the field's value (GetData reads Buffer meanwhile).
    void Validate(const void* Buffer);
    // Lets a field class accept a related type (ftFixedChar for a string field, ...).
    virtual void SetFieldType(TFieldType Value) {}

    // --- events
    TFieldNotifyEvent OnChange;
    TFieldNotifyEvent OnValidate;
    TFieldGetTextEvent OnGetText;
    TFieldSetTextEvent OnSetText;

protected:
    void SetDataType(TFieldType Value) { FDataType = Value; }
    virtual int GetDataSize() const { return 0; }
    virtual int GetDefaultWidth() const { return 10; }
    virtual void CheckTypeSize(int Value) const;
    virtual bool GetCanModify() const;
    virtual bool GetIsNull() const;
    // Called when the dataset binds (true) or unbinds (false) its fields.
    virtual void Bind(bool Binding) {}
    virtual void Change();
    virtual void FreeBuffers() {}

    virtual std::string GetAsString() const;
    virtual std::int32_t GetAsInteger() const;
    virtual std::int64_t GetAsLargeInt() const;
    virtual double GetAsFloat() const;
    virtual Currency GetAsCurrency() const;
    virtual bool GetAsBoolean() const;
    virtual TDateTime GetAsDateTime() const;
    virtual TBytes GetAsBytes() const;
    virtual Variant GetAsVariant() const;
    virtual void DoSetAsString(const std::string& Value);
    virtual void DoSetAsInteger(std::int32_t Value);
    virtual void DoSetAsLargeInt(std::int64_t Value);
    virtual void DoSetAsFloat(double Value);
    virtual void DoSetAsCurrency(Currency Value);
    virtual void DoSetAsBoolean(bool Value);
    virtual void DoSetAsDateTime(TDateTime Value);
    virtual void DoSetAsBytes(const TBytes& Value);
    virtual void DoSetAsVariant(const Variant& Value);
    // Stores a non-null, non-empty variant; the default raises the type-conversion error.
    virtual void SetVarValue(const Variant& Value);
    // The text of the value for Text (ADisplayText false) and DisplayText (true).
    virtual void GetText(std::string& AText, bool ADisplayText) const;
    // Converts edit text into the value; the default is SetAsString.
    virtual void DoSetText(const std::string& Value);

    // "Invalid type conversion to <TypeName> in field <FieldName>".
    EDatabaseError AccessError(const std::string& TypeName) const;
    // Raises unless the field's dataset is closed.
    void CheckInactive() const;
    // Tells the dataset that a display property changed (layout or data).
    void PropertyChanged(bool LayoutAffected);
    // GetData for the fixed-width reads of the field classes, into a Buffer of DataSize bytes that the
    // caller zeroed: copies straight from the dataset's slot where it keeps one.
    bool GetSlotData(void* Buffer) const;
    // "Field <FieldName> is null": a NULL read by As<T> with a T that cannot hold it.
    [[noreturn]] void NullValueError() const;

private:
    // DataView when the field has no slot to read while browsing: the dataset's PeekFieldData.
    TFieldDataView PeekDataView() const;

    friend class TDataSet;
    friend class TFields;
    friend class TFieldDef;
    template <typename T>
    friend struct TFieldAs;

    TDataSet* FDataSet = nullptr;
    TFields* FFields = nullptr;
    TFieldDef* FFieldDef = nullptr;
    std::string FFieldName;
    std::string FDisplayLabel;
    std::string FOrigin;
    int FFieldNo = 0;
    int FSize = 0;
    int FOffset = 0;
    int FDisplayWidth = 0;
    TFieldType FDataType = ftUnknown;
    TFieldKind FFieldKind = fkData;
    TAlignment FAlignment = taLeftJustify;
    bool FVisible = true;
    bool FReadOnly = false;
    bool FRequired = false;
    bool FValidating = false;
    const void* FValueBuffer = nullptr;
    // The text As<std::string_view>() points into when the value has no text slot of its own to
    // point at; its capacity is reused from read to read.
    mutable std::string FViewText;
    // Where the dataset keeps this field's value in each of its record buffers (TDataSet::SetFieldSlot):
    // a presence byte at FSlotOffset, then FSlotSize bytes of value. -1: ask the dataset.
    std::ptrdiff_t FSlotOffset = -1;
    std::size_t FSlotSize = 0;
    // Where a text slot's length lies, from the first byte of its value; 0: read up to the zero.
    std::ptrdiff_t FSlotLengthDelta = 0;
    // The dataset that declared the slot, read while browsing.
    const TDataSetBrowse* FBrowse = nullptr;
};

// The date/time slot of a record buffer, by field type: ftDate uses Date, ftTime uses Time,
// ftDateTime uses DateTime (milliseconds).
union TDateTimeRec {
    std::int32_t Date;
    std::int32_t Time;
    double DateTime;
};

QUORDA_API TDateTimeRec DateTimeToDateTimeRec(TFieldType DataType, TDateTime Value);
QUORDA_API TDateTime DateTimeRecToDateTime(TFieldType DataType, const TDateTimeRec& Value);

} // namespace quorda

#include "quorda/db/field_as.h"
