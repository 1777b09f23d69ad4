#pragma once

#include "quorda/db/types.h"
#include "quorda/rtl/currency.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/persistent.h"
#include "quorda/rtl/variant.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

class TField;
class TFiler;
class TStream;
class TODBCParams;

// The blob kinds a parameter can be loaded as (ftBlob to ftTypedBinary).
using TBlobType = TFieldType;

// One named statement parameter: a name, a data type, a value held as a variant and the null and
// bound flags. A parameter belongs to the collection given to its constructor: it adds itself there
// and removes itself again when it is destroyed.
class QUORDA_API TODBCParam : public TPersistent {
public:
    explicit TODBCParam(TODBCParams* AParamList);
    ~TODBCParam() override;

    std::string ClassName() const override { return "TODBCParam"; }

    // A parameter copies from a parameter (AssignParam) or from a field (AssignField).
    void Assign(const TPersistent* Source) override;
    // Type, value or null state, bound flag and name of Param.
    void AssignParam(const TODBCParam* Param);
    // Type, value and name of Field; Bound becomes true.
    void AssignField(const TField* Field);
    // Type of Field and the given Value (Null clears); Bound becomes true.
    void AssignFieldValue(const TField* Field, const Variant& Value);

    // Null with the value integer 0 and the blob text emptied.
    void Clear();
    // Marks a value as assigned: Bound true, IsNull false. Every setter calls it first.
    void InitValue();
    // Same variant type and value, same name (case-sensitive), type and flags.
    bool IsEqual(const TODBCParam* Value) const;

    // The whole stream (from its beginning) / file becomes the value, with the given blob type.
    void LoadFromStream(TStream& Stream, TBlobType BlobType);
    void LoadFromFile(const std::string& FileName, TBlobType BlobType);
    // Size bytes become the value; the type becomes ftBlob.
    void SetBlobData(const void* Buffer, std::size_t Size);

    // --- native data layouts (persisted form, little-endian)
    // Strings, memos and BCD: the text and a zero; smallint, word and boolean: 16 bits; integer and
    // autoinc: 32 bits; float, currency and date-time (milliseconds since 0001-01-01): 80-bit
    // extended; date: time-stamp days; time: milliseconds since midnight; blobs: the raw bytes;
    // cursor: nothing. ftUnknown raises SODBCFieldUndefinedType, other types
    // SODBCFieldUnsupportedType.
    int GetDataSize() const;
    // Writes GetDataSize() bytes.
    void GetData(void* Buffer) const;
    // Reads the layout of DataType() back from at most Size bytes (missing bytes read as zero; text
    // ends at its zero or at Size).
    void SetData(const void* Buffer, std::size_t Size);
    // The same value in the dataset framework's record-buffer layout: floats, currency and
    // date-time as an 8-byte double, BCD as a Currency; every other type as GetData.
    int RecBufDataSize() const;
    void RecBufGetData(void* Buffer) const;

    // --- properties
    const std::string& Name() const { return FName; }
    void SetName(const std::string& Value) { FName = Value; }
    TFieldType DataType() const { return FDataType; }
    // Stores the type and resets the value to integer 0; the flags stay as they are.
    void SetDataType(TFieldType Value);
    bool IsNull() const { return FNull; }
    bool Bound() const { return FBound; }
    void SetBound(bool Value) { FBound = Value; }
    // Whether string and memo text may be converted to the OEM code page when bound (default true).
    bool Translate() const { return FTranslate; }
    void SetTranslate(bool Value) { FTranslate = Value; }
    const std::string& BlobText() const { return FBlobText; }

    // --- typed access; getters raise the variant conversion errors unchanged
    bool GetAsBoolean() const;
    std::int32_t GetAsInteger() const;
    double GetAsFloat() const;
    Currency GetAsBCD() const;
    TDateTime GetAsDateTime() const;
    std::string GetAsMemo() const;
    std::string GetAsString() const;
    Variant GetAsVariant() const { return FValue; }

    void SetAsBoolean(bool Value);
    void SetAsInteger(std::int32_t Value);
    // A 64-bit integer, bound as SQL_BIGINT.
    void SetAsLargeInt(std::int64_t Value);
    void SetAsSmallInt(std::int32_t Value);
    void SetAsWord(std::int32_t Value);
    void SetAsFloat(double Value);
    void SetAsCurrency(double Value);
    void SetAsBCD(Currency Value);
    void SetAsDate(TDateTime Value);
    void SetAsTime(TDateTime Value);
    void SetAsDateTime(TDateTime Value);
    void SetAsMemo(const std::string& Value);
    // Keeps ftString or ftMemo, any other type becomes ftString.
    void SetAsString(const std::string& Value);
    // The type follows the variant (integers ftInteger, floats ftFloat, currency ftCurrency, dates
    // ftDateTime, booleans ftBoolean, strings ftString, anything else ftUnknown); Null or Empty keep
    // the type and make the parameter null.
    void SetAsVariant(const Variant& Value);
    // The text converted by the current type (ftUnknown becomes ftString first).
    void SetText(const std::string& Value);

    bool AsBoolean() const { return GetAsBoolean(); }
    std::int32_t AsInteger() const { return GetAsInteger(); }
    std::int32_t AsSmallInt() const { return GetAsInteger(); }
    std::int32_t AsWord() const { return GetAsInteger(); }
    double AsFloat() const { return GetAsFloat(); }
    double AsCurrency() const { return GetAsFloat(); }
    Currency AsBCD() const { return GetAsBCD(); }
    TDateTime AsDate() const { return GetAsDateTime(); }
    TDateTime AsTime() const { return GetAsDateTime(); }
    TDateTime AsDateTime() const { return GetAsDateTime(); }
    std::string AsMemo() const { return GetAsMemo(); }
    std::string AsString() const { return GetAsString(); }
    std::string Text() const { return GetAsString(); }
    Variant Value() const { return FValue; }
    void SetValue(const Variant& Value) { SetAsVariant(Value); }

    TODBCParams* ParamList() const { return FParamList; }

protected:
    // Sets a TField from this parameter's value (a null parameter clears the field).
    void AssignTo(TPersistent* Dest) const override;

private:
    friend class TODBCParams;

    TODBCParams* FParamList = nullptr;
    Variant FValue = Variant(0);
    std::string FBlobText;
    std::string FName;
    TFieldType FDataType = ftUnknown;
    bool FNull = false;
    bool FBound = false;
    bool FTranslate = true;
};

// The parameters of one statement, in creation order. The collection owns them: Clear and the
// destructor free them.
class QUORDA_API TODBCParams : public TPersistent {
public:
    TODBCParams() = default;
    ~TODBCParams() override;

    std::string ClassName() const override { return "TODBCParams"; }

    // Copies a whole collection (the parameters are recreated).
    void Assign(const TPersistent* Source) override;
    // For each parameter, the first parameter of Value with exactly the same name (case-sensitive)
    // is assigned to it; the others keep their state.
    void AssignValues(const TODBCParams* Value);
    // Same count and every pair IsEqual, in order.
    bool IsEqual(const TODBCParams* Value) const;

    // A new parameter owned by this collection, with the name and then the type set. Names may repeat.
    TODBCParam* CreateParam(TFieldType FldType, const std::string& ParamName);
    // Moves Value into this collection (out of the one it was in).
    void AddParam(TODBCParam* Value);
    // Takes Value out of the collection without freeing it; the caller owns it afterwards.
    void RemoveParam(TODBCParam* Value);
    int Count() const { return static_cast<int>(FItems.size()); }
    // Raises EDatabaseError "List index (%d) out of bounds" for an index beyond the collection.
    TODBCParam* GetParam(std::uint16_t Index) const;
    TODBCParam* Items(int Index) const;
    TODBCParam* operator[](int Index) const { return Items(Index); }
    // Frees every parameter.
    void Clear();

    // The first parameter whose name equals Value ignoring case; null when there is none.
    TODBCParam* FindParam(std::string_view Value) const;
    // As FindParam; raises SODBCParameterNotFound when there is none.
    TODBCParam* ParamByName(std::string_view Value) const;
    // Appends ParamByName of every name of the ';'-separated list.
    void GetParamList(std::vector<TODBCParam*>& List, const std::string& ParamNames) const;
    // With a ';' in ParamName, a variant array (low bound 0) of the listed values; otherwise the
    // value of that one parameter.
    Variant GetParamValue(const std::string& ParamName) const;
    // With a ';' in ParamName, element i of the array Value goes to the i-th listed parameter
    // (every name is resolved first); otherwise Value goes to that one parameter.
    void SetParamValue(const std::string& ParamName, const Variant& Value);

    // --- the persisted "Data" property
    // Defines "Data"; it is written when it differs from the ancestor's collection or, without an
    // ancestor, when there is at least one parameter.
    void DefineProperties(TFiler* Filer) override;
    void ReadBinaryData(TStream& Stream);
    void WriteBinaryData(TStream& Stream) const;
    // The version written by WriteBinaryData.
    static std::uint16_t GetVersion() { return 1; }

protected:
    void AssignTo(TPersistent* Dest) const override;

private:
    friend class TODBCParam;

    // Not owned through the vector: a parameter removes itself from it when it is destroyed.
    std::vector<TODBCParam*> FItems;
};

} // namespace quorda
