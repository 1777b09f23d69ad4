#include "quorda/grid/column.h"

#include "quorda/db/dataset.h"
#include "quorda/db/field.h"
#include "quorda/grid/db_grid.h"

#include <QFontMetrics>
#include <algorithm>

namespace quorda {

namespace {

// Wide fields (long strings, memos) start no wider than this many characters.
constexpr int kMaxDefaultChars = 40;

} // namespace

std::string TColumnTitle::Caption() const {
    if (FCaptionStored) {
        return FCaption;
    }
    TField* field = FColumn->Field();
    return field ? field->DisplayLabel() : FColumn->FieldName();
}

void TColumnTitle::SetCaption(const std::string& Value) {
    FCaption = Value;
    FCaptionStored = true;
    FColumn->Changed();
}

void TColumnTitle::SetAlignment(TAlignment Value) {
    FAlignment = Value;
    FColumn->Changed();
}

TColumn::TColumn(TDBGridColumns* Collection) : FCollection(Collection), FTitle(this) {}

TCustomDBGrid* TColumn::Grid() const {
    return FCollection->Grid();
}

void TColumn::SetFieldName(const std::string& Value) {
    FFieldName = Value;
    Changed();
}

TField* TColumn::Field() const {
    TDataSet* dataSet = Grid() ? Grid()->DataSet() : nullptr;
    if (!dataSet || FFieldName.empty()) {
        return nullptr;
    }
    return dataSet->FindField(FFieldName);
}

int TColumn::DefaultWidth() const {
    const QFontMetrics metrics = Grid()->fontMetrics();
    const int title = metrics.horizontalAdvance(QString::fromStdString(FTitle.Caption()));
    TField* field = Field();
    const int chars = field ? std::min(field->DisplayWidth(), kMaxDefaultChars) : 10;
    return std::max(title, chars * metrics.averageCharWidth()) + 6;
}

int TColumn::Width() const {
    return FWidth >= 0 ? FWidth : DefaultWidth();
}

void TColumn::SetWidth(int Value) {
    FWidth = std::max(Value, 0);
    Changed();
}

void TColumn::SetVisible(bool Value) {
    FVisible = Value;
    Changed();
}

TAlignment TColumn::Alignment() const {
    if (FAlignmentStored) {
        return FAlignment;
    }
    TField* field = Field();
    return field ? field->Alignment() : taLeftJustify;
}

void TColumn::SetAlignment(TAlignment Value) {
    FAlignment = Value;
    FAlignmentStored = true;
    Changed();
}

int TColumn::Index() const {
    return FCollection->IndexOf(this);
}

void TColumn::SetIndex(int Value) {
    FCollection->Move(Index(), Value);
}

void TColumn::Changed() {
    FCollection->Changed();
}

TColumn* TDBGridColumns::Add() {
    FState = csCustomized;
    FItems.push_back(std::make_unique<TColumn>(this));
    Changed();
    return FItems.back().get();
}

void TDBGridColumns::Clear() {
    FItems.clear();
    Changed();
}

void TDBGridColumns::SetState(TDBGridColumnsState Value) {
    FState = Value;
    if (Value == csDefault) {
        RebuildColumns();
    }
}

void TDBGridColumns::RebuildColumns() {
    FItems.clear();
    if (TDataSet* dataSet = FGrid->DataSet(); dataSet && dataSet->Active()) {
        for (TField* field : dataSet->Fields()) {
            if (field->Visible()) {
                auto column = std::make_unique<TColumn>(this);
                column->FFieldName = field->FieldName();
                FItems.push_back(std::move(column));
            }
        }
    }
    Changed();
}

void TDBGridColumns::Move(int FromIndex, int ToIndex) {
    const int last = Count() - 1;
    if (FromIndex < 0 || FromIndex > last) {
        return;
    }
    ToIndex = std::clamp(ToIndex, 0, last);
    if (FromIndex == ToIndex) {
        return;
    }
    auto item = std::move(FItems[static_cast<std::size_t>(FromIndex)]);
    FItems.erase(FItems.begin() + FromIndex);
    FItems.insert(FItems.begin() + ToIndex, std::move(item));
    Changed();
}

int TDBGridColumns::IndexOf(const TColumn* Column) const {
    for (int i = 0; i < Count(); ++i) {
        if (FItems[static_cast<std::size_t>(i)].get() == Column) {
            return i;
        }
    }
    return -1;
}

void TDBGridColumns::Changed() {
    FGrid->ColumnsChanged();
}

} // namespace quorda
