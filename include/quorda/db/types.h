#pragma once

#include "quorda/export.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

namespace quorda {

// Field data types in the classic ordinal order; persisted formats and the type-mapping tables
// depend on these ordinals, so never reorder or insert.
enum TFieldType : std::uint8_t {
    ftUnknown,
    ftString,
    ftSmallint,
    ftInteger,
    ftWord,
    ftBoolean,
    ftFloat,
    ftCurrency,
    ftBCD,
    ftDate,
    ftTime,
    ftDateTime,
    ftBytes,
    ftVarBytes,
    ftAutoInc,
    ftBlob,
    ftMemo,
    ftGraphic,
    ftFmtMemo,
    ftParadoxOle,
    ftDBaseOle,
    ftTypedBinary,
    ftCursor,
    ftFixedChar,
    ftWideString,
    ftLargeint,
    ftADT,
    ftArray,
    ftReference,
    ftDataSet,
    ftOraBlob,
    ftOraClob,
    ftVariant,
    ftInterface,
    ftIDispatch,
    ftGuid,
    ftTimeStamp,
    ftFMTBcd,
    ftFixedWideChar,
    ftWideMemo,
};

enum TDataSetState : std::uint8_t {
    dsInactive,
    dsBrowse,
    dsEdit,
    dsInsert,
    dsSetKey,
    dsCalcFields,
    dsFilter,
    dsNewValue,
    dsOldValue,
    dsCurValue,
    dsBlockRead,
    dsInternalCalc,
    dsOpening,
};

enum TGetMode : std::uint8_t { gmCurrent, gmNext, gmPrior };
enum TGetResult : std::uint8_t { grOK, grBOF, grEOF, grError };
enum TBookmarkFlag : std::uint8_t { bfCurrent, bfBOF, bfEOF, bfInserted };
enum TBlobStreamMode : std::uint8_t { bmRead, bmWrite, bmReadWrite };

enum TLocateOption : std::uint8_t { loCaseInsensitive, loPartialKey };
using TLocateOptions = std::set<TLocateOption>;

enum TDataEvent : std::uint8_t {
    deFieldChange,
    deRecordChange,
    deDataSetChange,
    deDataSetScroll,
    deLayoutChange,
    deUpdateRecord,
    deUpdateState,
    deCheckBrowseMode,
    dePropertyChange,
    deFieldListChange,
    deFocusControl,
    deParentScroll,
    deConnectChange,
    deReconcileError,
    deDisabledStateChange,
};

enum TFieldKind : std::uint8_t { fkData, fkCalculated, fkLookup, fkInternalCalc, fkAggregate };

enum TUpdateKind : std::uint8_t { ukModify, ukInsert, ukDelete };
enum TUpdateAction : std::uint8_t { uaFail, uaAbort, uaSkip, uaRetry, uaApplied };

// Helpers beside the enumerations above (appended; the ordinals stay as they are).

// A raw record buffer laid out by the dataset that allocated it.
using TRecordBuffer = std::byte*;

class TDataSet;
class TField;

// The part of a dataset's state that says which record the fields read while browsing: its ring of
// record buffers, how many hold records, the active one and the state. A field with a slot reads its value
// through it inline (TField::DataView), without a call into the dataset.
class TDataSetBrowse {
protected:
    // BufferCount + 1 buffers; empty while closed.
    std::vector<TRecordBuffer> FBuffers;
    // Records in the ring; none while closed or when the dataset is empty (Bof and Eof).
    int FRecordCount = 0;
    int FActiveRecord = 0;
    TDataSetState FState = dsInactive;
    bool FBOF = true;
    bool FEOF = true;

private:
    friend class TDataSet;
    friend class TField;
};

enum TResyncModeItem : std::uint8_t { rmExact, rmCenter };
using TResyncMode = std::set<TResyncModeItem>;

enum TAlignment : std::uint8_t { taLeftJustify, taRightJustify, taCenter };

enum TFieldAttribute : std::uint8_t { faHiddenCol, faReadonly, faRequired, faLink, faUnNamed, faFixed };
using TFieldAttributes = std::set<TFieldAttribute>;

// dsEdit, dsInsert and dsSetKey: the states in which a record is being edited.
constexpr bool IsEditMode(TDataSetState State) {
    return State == dsEdit || State == dsInsert || State == dsSetKey;
}

// The states in which field values may be written.
constexpr bool IsWriteMode(TDataSetState State) {
    return State == dsEdit || State == dsInsert || State == dsSetKey || State == dsCalcFields ||
           State == dsFilter || State == dsNewValue || State == dsInternalCalc;
}

// Types whose values live outside the record buffer and are read through a blob stream.
constexpr bool IsBlobType(TFieldType Type) {
    switch (Type) {
    case ftBlob:
    case ftMemo:
    case ftGraphic:
    case ftFmtMemo:
    case ftParadoxOle:
    case ftDBaseOle:
    case ftTypedBinary:
    case ftOraBlob:
    case ftOraClob:
    case ftWideMemo:
        return true;
    default:
        return false;
    }
}

// The type's name without the "ft" prefix ("String", "Integer", ...).
QUORDA_API const char* FieldTypeName(TFieldType Type);

} // namespace quorda
