// Entity commands: add, edit, delete and the pessimistic locks, and the binding of their parameters.
#include "core/driver_quirks_p.h"
#include "quorda/db/field.h"
#include "quorda/entity/entity.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/application.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/tools/query_helpers.h"

namespace quorda {

namespace {

// The native error a lock procedure raises to say that the row no longer exists.
constexpr SQLINTEGER NativeRowDeleted = -746;

bool IsNullOrEmpty(const Variant& Value) {
    return VarIsNull(Value) || (VarIsStr(Value) && Value.AsString().empty());
}

bool IsMemoType(TFieldType Type) {
    return Type == ftMemo || Type == ftFmtMemo || Type == ftWideMemo || Type == ftOraClob;
}

bool IsBinaryBlobType(TFieldType Type) {
    return Type == ftBlob || Type == ftGraphic || Type == ftTypedBinary || Type == ftOraBlob;
}

// A value as the parameter's value. A 64-bit integer keeps all its bits: as a plain variant it
// would be bound as a 32-bit integer.
void AssignValue(TODBCParam& Param, const Variant& Value) {
    if (Value.VarType() == varInt64 || Value.VarType() == varQWord) {
        Param.SetAsLargeInt(Value.AsInt64());
    } else {
        Param.SetAsVariant(Value);
    }
}

void ShowException(const std::exception& E) {
    Application::HandleException(E);
}

} // namespace

const TCommandValues& TEntity::FieldPlaceholder() {
    static const TCommandValues Values{Variant(std::string(1, '\x01'))};
    return Values;
}

bool TEntity::HasProcedure(TExecType Command) const {
    return !Trim(GetSP(Command)).empty();
}

void TEntity::SetParam(TODBCDataSet& Query, TCommandDataType DataType, TDataSet* Source,
                       const TCommandValues& Values) {
    PrepareQry(&Query);
    const int Count = Query.GetParamsCount();
    // Reading past the array would read memory that is not there: too few values is an error.
    if (DataType == cdtArray && static_cast<std::size_t>(Count) > Values.size()) {
        DatabaseErrorFmt("%d parameter values given for the %d parameters of the statement",
                         static_cast<int>(Values.size()), Count);
    }
    if (DataType == cdtQry && Source == nullptr) {
        DatabaseError("No dataset to take the parameter values from");
    }
    for (int I = 0; I < Count; ++I) {
        TODBCParam& Param = *Query.Params().Items(I);
        switch (DataType) {
        case cdtArray: {
            const Variant& Value = Values[static_cast<std::size_t>(I)];
            if (IsNullOrEmpty(Value)) {
                // Typed as a string first, so that the null is bound with a type.
                Param.SetAsString({});
                Param.Clear();
            } else {
                AssignValue(Param, Value);
            }
            break;
        }
        case cdtQry: {
            const TField& Column = *Source->FieldByName(Param.Name());
            Param.SetDataType(Column.DataType());
            if (Column.IsNull()) {
                Param.Clear();
            } else {
                AssignValue(Param, Column.AsVariant());
            }
            break;
        }
        case cdtField: {
            const TFieldItem* Field = FieldByName(Param.Name());
            if (Field == nullptr) {
                EntityError(FormatMessage(SEntityFieldNotFound, Param.Name()));
            }
            const Variant& Value = Field->Value();
            Param.SetDataType(Field->fType());
            if (VarIsClear(Value) || IsNullOrEmpty(Value)) {
                Param.Clear();
            } else if (IsMemoType(Field->fType())) {
                Param.SetAsMemo(Value.AsString());
            } else if (IsBinaryBlobType(Field->fType())) {
                const std::string Data = Value.AsString();
                Param.SetBlobData(Data.data(), Data.size());
            } else {
                AssignValue(Param, Value);
            }
            break;
        }
        }
    }
}

Variant TEntity::RunWrite(TExecType Command, TCommandDataType DataType, const TCommandValues& Values) {
    Variant Result;
    if (HasProcedure(Command)) {
        Result = RunCommand(Command, DataType, FDataQuery.get(), Values);
    } else {
        const auto Query = CreateQuery();
        TStrings& SQL = Query->SQL();
        switch (Command) {
        case fetInsert:
            GenerateSQLInsert(SQL);
            break;
        case fetUpdate:
            if (!GenerateSQLUpdate(SQL)) {
                return Variant(0);
            }
            break;
        default:
            GenerateSQLDelete(SQL);
            break;
        }
        if (SQL.Count() == 0) {
            return Variant(0);
        }
        SetParam(*Query, DataType, FDataQuery.get(), Values);
        ExecQry(Query.get());
        Result = Variant(Query->RowsAffected());
    }
    SetUpdateEntity(FViewEntity, this);
    return Result;
}

Variant TEntity::AddForArray(TCommandDataType DataType, const TCommandValues& Values) {
    return RunWrite(fetInsert, DataType, Values);
}

Variant TEntity::EditForArray(TCommandDataType DataType, const TCommandValues& Values) {
    return RunWrite(fetUpdate, DataType, Values);
}

Variant TEntity::DeleteForArray(TCommandDataType DataType, const TCommandValues& Values) {
    return RunWrite(fetDelete, DataType, Values);
}

TLockResult TEntity::LockForArray(TCommandDataType DataType, const TCommandValues& Values) {
    TLockResult Result = lrOk;
    if (HasProcedure(fetLock)) {
        try {
            RunCommand(fetLock, DataType, FDataQuery.get(), Values);
        } catch (const EODBCError& E) {
            Result = E.NativeError() == NativeRowDeleted ? lrDeleted : lrLocked;
            ShowException(E);
        }
    } else {
        const auto Query = CreateQuery();
        GenerateSQLLock(Query->SQL());
        try {
            SetParam(*Query, DataType, FDataQuery.get(), Values);
            ExecQry(Query.get());
            // A driver that counts changed rows counts 0 for the row the lock found (docs/odbc-quirks.md).
            if (Query->GetRowsAffected() == 0 &&
                !(DriverQuirksOf(Query->ODBCDatabase()->GetDBC()).UpdateCountsChangedRows &&
                  LockedRowIsThere(DataType, Values))) {
                Result = lrDeleted;
            }
        } catch (const EODBCError& E) {
            // Typically a lock conflict or a lock wait time-out reported by the server.
            Result = lrLocked;
            ShowException(E);
        }
    }
    if (Result != lrDeleted) {
        SelectAfterLock(DataType, Values);
    }
    return Result;
}

TLockResult TEntity::LockCascadeForArray(TCommandDataType DataType, const TCommandValues& Values) {
    if (!HasProcedure(fetCLock)) {
        return LockForArray(DataType, Values);
    }
    try {
        RunCommand(fetCLock, cdtArray, FDataQuery.get(), Values);
        SelectAfterLock(DataType, Values);
        return lrOk;
    } catch (const EODBCError& E) {
        ShowException(E);
        return E.NativeError() == NativeRowDeleted ? lrDeleted : lrLocked;
    }
}

Variant TEntity::Add() {
    return AddForArray(cdtField, FieldPlaceholder());
}

Variant TEntity::Edit() {
    return EditForArray(cdtField, FieldPlaceholder());
}

Variant TEntity::Delete() {
    return DeleteForArray(cdtField, FieldPlaceholder());
}

TLockResult TEntity::Lock() {
    return LockForArray(cdtField, FieldPlaceholder());
}

TLockResult TEntity::LockCascade() {
    return LockCascadeForArray(cdtField, FieldPlaceholder());
}

TLockResult TEntity::LockForQry() {
    return LockForArray(cdtQry, {});
}

TLockResult TEntity::LockCascadeForQry() {
    return LockCascadeForArray(cdtQry, {});
}

Variant TEntity::DeleteForQry() {
    return DeleteForArray(cdtQry, {});
}

bool TEntity::LockedRowIsThere(TCommandDataType DataType, const TCommandValues& Values) {
    // A locking read, not the transaction's snapshot: a row deleted meanwhile is gone.
    const auto Query = CreateQuery();
    Query->SQL().Add("SELECT COUNT(*) FROM " + FFactTable + " WHERE " + KeyConditions(true) + " FOR UPDATE");
    SetParam(*Query, DataType, FDataQuery.get(), Values);
    OpenQry(Query.get());
    return Query->Fields()[0]->AsInteger() > 0;
}

void TEntity::SelectAfterLock(TCommandDataType DataType, const TCommandValues& Values) {
    FLockQuery->Close();
    FLockQuery->SQL().Clear();
    FLockQuery->SetUniDirectional(FLockUniDirectional);
    TStringList Lines;
    GenerateSQLSelect(Lines, true);
    TStringList Where;
    GenerateSQLLockWhere(Where);
    Lines.AddStrings(Where);
    FLockQuery->SQL().Assign(&Lines);
    SetParam(*FLockQuery, DataType, FDataQuery.get(), Values);
    OpenQry(FLockQuery.get());
}

} // namespace quorda
