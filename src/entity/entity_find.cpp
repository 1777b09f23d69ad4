// Find: moving through the open selection to the next row whose columns match the fields' find values.
#include "quorda/db/controls_disabled.h"
#include "quorda/db/field.h"
#include "quorda/entity/entity.h"
#include "quorda/rtl/datetime.h"
#include "quorda/rtl/string_utils.h"

#include <vector>

namespace quorda {

namespace {

bool IsDate(const Variant& Value) {
    return Value.VarType() == varDate;
}

// The first Count characters of UTF-8 text (a character's bytes are never split).
std::string Utf8Prefix(const std::string& Text, std::size_t Count) {
    std::size_t End = 0;
    for (std::size_t Characters = 0; End < Text.size() && Characters < Count; ++Characters) {
        ++End;
        while (End < Text.size() && (static_cast<unsigned char>(Text[End]) & 0xC0) == 0x80) {
            ++End;
        }
    }
    return Text.substr(0, End);
}

bool TakesPart(const TFieldItem& Field) {
    const Variant& Find = Field.findStr();
    return (VarIsStr(Find) && !Trim(Find.AsString()).empty()) || IsDate(Find);
}

} // namespace

bool TFieldItem::CheckFind(TDataSet& DataSet, const std::string& FieldName) const {
    const bool Date = IsDate(FFindStr);
    const std::string FindText = Date ? DateTimeToStr(FFindStr.AsDateTime()) : VarToStr(FFindStr);
    const TField& Column = *DataSet.FieldByName(FieldName);
    std::string RowText;
    switch (FFType) {
    case ftSmallint:
    case ftInteger:
    case ftWord:
    case ftFloat:
        // Numbers match by whole value.
        RowText = Column.AsString();
        if (RowText.empty()) {
            RowText.push_back('0');
        }
        break;
    default:
        // Text matches by prefix.
        RowText = Utf8Prefix(Column.DisplayText(), Utf8Length(FindText));
        break;
    }
    if (Date) {
        return RowText.find(FindText) != std::string::npos;
    }
    if (FEntity->FindSensitive()) {
        return RowText == FindText;
    }
    return AnsiUpperCase(RowText) == AnsiUpperCase(FindText);
}

bool TEntity::FindEofBof(TDirectionFind Direction) const {
    return (FDataQuery->Eof() && Direction == dfNext) || (FDataQuery->Bof() && Direction == dfPrior);
}

bool TEntity::Find() {
    TEntityQuery& Query = *FDataQuery;
    if (!Query.Active()) {
        return false;
    }
    const TControlsDisabled Disabled(Query);
    TBookmark Start = Query.GetBookmark();
    std::vector<const TFieldItem*> Fields;
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem* Field = GetFields(I);
        if (TakesPart(*Field) && Query.FindField(Field->FactName()) != nullptr) {
            Fields.push_back(Field);
        }
    }
    bool Found = false;
    if (!Fields.empty()) {
        for (;;) {
            if (FFindDown == dfNext) {
                Query.Next();
            } else {
                Query.Prior();
            }
            // A move that met the edge stayed where it was: that row was tested already, or is the
            // row the find started on, which never counts.
            if (FindEofBof(FFindDown)) {
                break;
            }
            Found = true;
            for (const TFieldItem* Field : Fields) {
                if (!Field->CheckFind(Query, Field->FactName())) {
                    Found = false;
                    break;
                }
            }
            if (Found) {
                break;
            }
        }
        if (!Found) {
            Query.GotoBookmark(Start);
        }
    }
    Query.FreeBookmark(Start);
    return Found;
}

} // namespace quorda
