#pragma once

#include <cstdint>
#include <set>

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

} // namespace quorda
