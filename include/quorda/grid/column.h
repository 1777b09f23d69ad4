#pragma once

#include "quorda/db/types.h"

#include <memory>
#include <string>
#include <vector>

namespace quorda {

class TCustomDBGrid;
class TDBGridColumns;
class TField;

class TColumn;

// The title of a column: its caption defaults to the field's display label.
class QUORDA_API TColumnTitle {
public:
    explicit TColumnTitle(TColumn* Column) : FColumn(Column) {}

    std::string Caption() const;
    void SetCaption(const std::string& Value);
    // Whether the caption was set rather than taken from the field.
    bool IsCaptionStored() const { return FCaptionStored; }
    TAlignment Alignment() const { return FAlignment; }
    void SetAlignment(TAlignment Value);

private:
    TColumn* FColumn;
    std::string FCaption;
    bool FCaptionStored = false;
    TAlignment FAlignment = taLeftJustify;
};

// One column of a data grid, bound to a field by name.
class QUORDA_API TColumn {
public:
    explicit TColumn(TDBGridColumns* Collection);

    TDBGridColumns* Collection() const { return FCollection; }
    TCustomDBGrid* Grid() const;

    const std::string& FieldName() const { return FFieldName; }
    void SetFieldName(const std::string& Value);
    // The dataset's field of that name; null without a dataset or when the dataset has no such field.
    TField* Field() const;
    TColumnTitle& Title() { return FTitle; }
    const TColumnTitle& Title() const { return FTitle; }
    // Width in pixels; the default comes from the field's display width.
    int Width() const;
    void SetWidth(int Value);
    bool Visible() const { return FVisible; }
    void SetVisible(bool Value);
    bool ReadOnly() const { return FReadOnly; }
    void SetReadOnly(bool Value) { FReadOnly = Value; }
    TAlignment Alignment() const;
    void SetAlignment(TAlignment Value);
    // Position among the grid's columns; setting it moves the column.
    int Index() const;
    void SetIndex(int Value);
    // A default column mirrors a field and is rebuilt with the dataset's fields.
    int DefaultWidth() const;

private:
    friend class TColumnTitle;
    friend class TDBGridColumns;
    void Changed();

    TDBGridColumns* FCollection;
    std::string FFieldName;
    TColumnTitle FTitle;
    int FWidth = -1;
    bool FVisible = true;
    bool FReadOnly = false;
    bool FAlignmentStored = false;
    TAlignment FAlignment = taLeftJustify;
};

enum TDBGridColumnsState { csDefault, csCustomized };

// The columns of a grid. In the default state they are made from the dataset's visible fields each
// time the dataset's layout changes; adding a column by hand makes them customized.
class QUORDA_API TDBGridColumns {
public:
    explicit TDBGridColumns(TCustomDBGrid* Grid) : FGrid(Grid) {}

    TCustomDBGrid* Grid() const { return FGrid; }
    int Count() const { return static_cast<int>(FItems.size()); }
    TColumn* Items(int Index) const { return FItems.at(static_cast<std::size_t>(Index)).get(); }
    TColumn* operator[](int Index) const { return Items(Index); }
    auto begin() const { return FItems.begin(); }
    auto end() const { return FItems.end(); }
    // A new column at the end; the columns become customized.
    TColumn* Add();
    void Clear();
    TDBGridColumnsState State() const { return FState; }
    // Setting csDefault rebuilds the columns from the fields.
    void SetState(TDBGridColumnsState Value);
    // Replaces the columns by one per visible field.
    void RebuildColumns();
    void Move(int FromIndex, int ToIndex);
    int IndexOf(const TColumn* Column) const;

private:
    friend class TColumn;
    void Changed();

    TCustomDBGrid* FGrid;
    std::vector<std::unique_ptr<TColumn>> FItems;
    TDBGridColumnsState FState = csDefault;
};

} // namespace quorda
