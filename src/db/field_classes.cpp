#include "quorda/db/field_classes.h"

namespace quorda {

namespace {

template <typename T>
TField* Create(TComponent* Owner) {
    return new T(Owner);
}

} // namespace

TFieldClass DefaultFieldClass(TFieldType Type) {
    switch (Type) {
    case ftString:
    case ftFixedChar:
        return &Create<TStringField>;
    case ftSmallint:
        return &Create<TSmallintField>;
    case ftInteger:
        return &Create<TIntegerField>;
    case ftWord:
        return &Create<TWordField>;
    case ftBoolean:
        return &Create<TBooleanField>;
    case ftFloat:
        return &Create<TFloatField>;
    case ftCurrency:
        return &Create<TCurrencyField>;
    case ftBCD:
        return &Create<TBCDField>;
    case ftDate:
        return &Create<TDateField>;
    case ftTime:
        return &Create<TTimeField>;
    case ftDateTime:
        return &Create<TDateTimeField>;
    case ftBytes:
        return &Create<TBytesField>;
    case ftVarBytes:
        return &Create<TVarBytesField>;
    case ftAutoInc:
        return &Create<TAutoIncField>;
    case ftLargeint:
        return &Create<TLargeintField>;
    case ftMemo:
    case ftFmtMemo:
    case ftOraClob:
        return &Create<TMemoField>;
    case ftGraphic:
        return &Create<TGraphicField>;
    case ftBlob:
    case ftParadoxOle:
    case ftDBaseOle:
    case ftTypedBinary:
    case ftOraBlob:
        return &Create<TBlobField>;
    default:
        return nullptr;
    }
}

const char* FieldTypeName(TFieldType Type) {
    static const char* const Names[] = {
        "Unknown",     "String",    "Smallint",  "Integer",       "Word",     "Boolean",    "Float",
        "Currency",    "BCD",       "Date",      "Time",          "DateTime", "Bytes",      "VarBytes",
        "AutoInc",     "Blob",      "Memo",      "Graphic",       "FmtMemo",  "ParadoxOle", "DBaseOle",
        "TypedBinary", "Cursor",    "FixedChar", "WideString",    "Largeint", "ADT",        "Array",
        "Reference",   "DataSet",   "OraBlob",   "OraClob",       "Variant",  "Interface",  "IDispatch",
        "Guid",        "TimeStamp", "FMTBcd",    "FixedWideChar", "WideMemo",
    };
    auto index = static_cast<std::size_t>(Type);
    return index < sizeof(Names) / sizeof(Names[0]) ? Names[index] : "Unknown";
}

} // namespace quorda
