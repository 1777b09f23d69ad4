#pragma once

#include "quorda/db/types.h"
#include "quorda/entity/entity_types.h"
#include "quorda/rtl/persistent.h"
#include "quorda/rtl/variant.h"

#include <cstdint>
#include <string>

namespace quorda {

class TDataSet;
class TEntity;
class TUserEntity;

// One column of an entity: how it is named in the fact table and selected from the view, how it is
// shown, which commands it takes part in, and its find, filter and value slots.
class QUORDA_API TFieldItem : public TPersistent {
public:
    TFieldItem(TEntity* AEntity, const std::string& Name, const std::string& ADisplayName,
               const std::string& AViewTable, std::int32_t Width, bool View, bool Visible, bool Ident,
               bool Sort, TFieldType FieldType, TSetExecType ExecSet);
    ~TFieldItem() override = default;

    std::string ClassName() const override { return "TFieldItem"; }

    TEntity* Entity() const { return FEntity; }

    // The column in the fact table, always lower case: also the entity's key for the field and the
    // name of the statement parameter for the column.
    const std::string& FactName() const { return FFactName; }
    void SetFactName(const std::string& Value);
    // Selected for the column when it has no view table of its own.
    const std::string& SelectStr() const { return FSelectStr; }
    void SetSelectStr(const std::string& Value) { FSelectStr = Value; }
    const std::string& DisplayName() const { return FDisplayName; }
    void SetDisplayName(const std::string& Value) { FDisplayName = Value; }
    // Table or alias qualifying the column in the SELECT; stored trimmed.
    const std::string& viewTable() const { return FViewTable; }
    void SetViewTable(const std::string& Value);

    // In the SELECT list.
    bool flgView() const { return FFlgView; }
    void SetFlgView(bool Value) { FFlgView = Value; }
    bool flgVisible() const { return FFlgVisible; }
    void SetFlgVisible(bool Value) { FFlgVisible = Value; }
    std::int32_t dspWidth() const { return FDspWidth; }
    void SetDspWidth(std::int32_t Value) { FDspWidth = Value; }
    // The user may order by this column.
    bool flgSort() const { return FFlgSort; }
    void SetFlgSort(bool Value) { FFlgSort = Value; }
    TFieldType fType() const { return FFType; }
    void SetFType(TFieldType Value) { FFType = Value; }

    const Variant& findStr() const { return FFindStr; }
    void SetFindStr(const Variant& Value) { FFindStr = Value; }
    const Variant& filterStr() const { return FFilterStr; }
    void SetFilterStr(const Variant& Value) { FFilterStr = Value; }
    // Written by insert and update, or the key to lock and delete with.
    const Variant& Value() const { return FValue; }
    void SetValue(const Variant& AValue) { FValue = AValue; }

    // The commands the column takes part in.
    TSetExecType ExecSet() const { return FExecSet; }
    void SetExecSet(TSetExecType Value) { FExecSet = Value; }
    // The column identifies the record.
    bool IdentRecord() const { return FIdentRecord; }
    void SetIdentRecord(bool Value) { FIdentRecord = Value; }

    // Written right before and after the fact name wherever it reaches SQL (an identifier quote).
    const std::string& FactQuote() const { return FFactQuote; }
    void SetFactQuote(const std::string& Value) { FFactQuote = Value; }
    // Written right before and after SelectStr in the SELECT list.
    const std::string& SelectQuote() const { return FSelectQuote; }
    void SetSelectQuote(const std::string& Value) { FSelectQuote = Value; }

    const std::string& DisplayFormat() const { return FDisplayFormat; }
    void SetDisplayFormat(const std::string& Value) { FDisplayFormat = Value; }
    bool IsBookMark() const { return FIsBookMark; }
    void SetIsBookMark(bool Value) { FIsBookMark = Value; }
    // Descending when this is the ordering column (kept for the user interface).
    bool OrderingDesk() const { return FOrderingDesk; }
    void SetOrderingDesk(bool Value) { FOrderingDesk = Value; }

    // Whether the current row of DataSet matches the find value in its column FieldName: numbers by
    // whole value, text by prefix, dates by containment; ignoring case unless the entity's
    // FindSensitive says otherwise.
    bool CheckFind(TDataSet& DataSet, const std::string& FieldName) const;

    // The fact name between the fact quotes: how the column is written in SQL.
    std::string QuotedFactName() const { return FFactQuote + FFactName + FFactQuote; }

private:
    // Reads the fields from a stream, where a name keeps its case.
    friend class TUserEntity;

    TEntity* FEntity;
    std::string FFactName;
    std::string FSelectStr;
    std::string FDisplayName;
    std::string FViewTable;
    bool FFlgView;
    bool FFlgVisible;
    std::int32_t FDspWidth;
    bool FFlgSort;
    TFieldType FFType;
    Variant FFindStr;
    Variant FFilterStr;
    Variant FValue;
    TSetExecType FExecSet;
    bool FIdentRecord;
    std::string FFactQuote;
    std::string FSelectQuote;
    std::string FDisplayFormat;
    bool FIsBookMark = true;
    bool FOrderingDesk = false;
};

} // namespace quorda
