// Statement text generated from the field list. The spacing, case, separators and line breaks are
// exactly what the statement layer and the database receive.
#include "quorda/db/dataset.h"
#include "quorda/entity/entity.h"
#include "quorda/rtl/string_utils.h"

namespace quorda {

namespace {

void AppendItem(std::string& List, const std::string& Item, const char* Separator = ",") {
    if (!List.empty()) {
        List += Separator;
    }
    List += Item;
}

// The column qualified by its own view table, the quotes around both.
std::string QualifiedName(const TFieldItem& Field) {
    return Field.FactQuote() + Field.viewTable() + "." + Field.FactName() + Field.FactQuote();
}

bool IsEmptyString(const Variant& Value) {
    return VarIsStr(Value) && Value.AsString().empty();
}

} // namespace

std::string TEntity::KeyConditions(bool ListedNames) const {
    std::string Conditions;
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem& Field = *GetFields(I);
        if (!Field.ExecSet().Contains(fetLock)) {
            continue;
        }
        const std::string& Name = ListedNames ? FLstFields->Strings(I) : Field.FactName();
        AppendItem(Conditions, Field.QuotedFactName() + "=:" + Field.FactQuote() + Name + Field.FactQuote(),
                   " AND ");
    }
    return Conditions;
}

void TEntity::GenerateSQLSelect(TStrings& SQL, bool FromFact) {
    SQL.Clear();
    std::string List;
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem& Field = *GetFields(I);
        if (!Field.flgView()) {
            continue;
        }
        std::string Item;
        if (!Trim(Field.viewTable()).empty()) {
            if (FromFact) {
                continue;
            }
            Item = QualifiedName(Field);
        } else {
            Item = Field.SelectQuote() + Field.SelectStr() + Field.SelectQuote();
        }
        if (!Item.empty()) {
            AppendItem(List, Item);
        }
    }
    SQL.Add("SELECT ");
    SQL.Add(List + " FROM " + (FromFact ? FFactTable : FViewTable));
}

void TEntity::GenerateSQLLockWhere(TStrings& SQL) {
    SQL.Clear();
    SQL.Add("WHERE " + KeyConditions(false));
}

void TEntity::GenerateSQLInsert(TStrings& SQL) {
    SQL.Clear();
    std::string Columns;
    std::string Values;
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem& Field = *GetFields(I);
        if (Field.ExecSet().Contains(fetInsert)) {
            AppendItem(Columns, Field.QuotedFactName());
            AppendItem(Values, ":" + Field.QuotedFactName());
        }
    }
    SQL.Add("INSERT INTO " + FFactTable);
    SQL.Add("(" + Columns + ")");
    SQL.Add("VALUES(" + Values + ")");
}

void TEntity::GenerateSQLLock(TStrings& SQL) {
    SQL.Clear();
    if (FieldCount() > 0) {
        // The last selected column that is not an integer, else the first column whatever it is.
        int Index = FieldCount() - 1;
        while (Index > 0 && (GetFields(Index)->fType() == ftInteger || !GetFields(Index)->flgView())) {
            --Index;
        }
        const std::string Column = GetFields(Index)->QuotedFactName();
        SQL.Add("UPDATE " + FFactTable + " SET " + Column + "=" + Column + " WHERE " + KeyConditions(true));
    }
    if (SQL.Count() == 0) {
        EntityError(SEntityLockQueryEmpty);
    }
}

bool TEntity::GenerateSQLUpdate(TStrings& SQL) {
    return GenerateSQLUpdate(SQL, *FLockQuery);
}

bool TEntity::GenerateSQLUpdate(TStrings& SQL, const TDataSet& Current) {
    SQL.Clear();
    std::string Assignments;
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem& Field = *GetFields(I);
        if (!Field.ExecSet().Contains(fetUpdate)) {
            continue;
        }
        const TField& Column = *Current.FieldByName(Field.FactName());
        // An empty string written over a null is not a change.
        if (IsEmptyString(Field.Value()) && Column.IsNull()) {
            continue;
        }
        if (Field.Value() == Column.AsVariant()) {
            continue;
        }
        AppendItem(Assignments, Field.QuotedFactName() + "=:" + Field.QuotedFactName());
    }
    if (Assignments.empty()) {
        return false;
    }
    SQL.Add(Assignments);
    const std::string Conditions = KeyConditions(true);
    SQL.Add(Conditions.empty() ? std::string() : "WHERE " + Conditions);
    SQL.Insert(0, "UPDATE " + FFactTable + " SET ");
    return true;
}

void TEntity::GenerateSQLDelete(TStrings& SQL) {
    SQL.Clear();
    SQL.Insert(0, "DELETE FROM " + FFactTable + " WHERE " + KeyConditions(true));
}

std::string TEntity::GenerateOrder(std::int32_t Index) {
    if (Index == -1) {
        return {};
    }
    std::string Head;
    std::string Tail;
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem& Field = *GetFields(I);
        if (!Field.flgSort()) {
            continue;
        }
        std::string Item = Field.viewTable().empty() ? Field.QuotedFactName() : QualifiedName(Field);
        if (FOrderingDesc) {
            Item += " DESC";
        }
        AppendItem(I >= Index ? Head : Tail, Item);
    }
    if (!Head.empty() && !Tail.empty()) {
        return "ORDER BY " + Head + "," + Tail;
    }
    if (Head.empty() && Tail.empty()) {
        return {};
    }
    return "ORDER BY " + Head + Tail;
}

void TEntity::AddFilterValue() {
    for (int I = 0; I < FieldCount(); ++I) {
        TFieldItem& Field = *GetFields(I);
        const Variant& Filter = Field.filterStr();
        // The absent marker a missing filter setting leaves behind is no filter value.
        if (VarIsClear(Filter) || VarIsNull(Filter) || IsEmptyString(Filter) ||
            (VarIsStr(Filter) && Filter.AsString() == EntityAbsentMarker)) {
            continue;
        }
        if (FDataQuery->FindParam(Field.FactName()) != nullptr) {
            Field.SetValue(Filter);
        }
    }
}

void TEntity::GenerateSQLSelection(TStrings& SQL) {
    GenerateSQLSelect(SQL, false);
    if (!FWherePhrase.empty() || !FFilterStr.empty()) {
        SQL.Add("WHERE " + FWherePhrase);
    }
    if (!FFilterStr.empty()) {
        SQL.Add(FWherePhrase.empty() ? FFilterStr : "AND " + FFilterStr);
        AddFilterValue();
    }
    SQL.Add(GenerateOrder(FOrdering));
}

} // namespace quorda
