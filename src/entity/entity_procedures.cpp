// Stored-procedure calls of an entity.
#include "quorda/db/field.h"
#include "quorda/entity/entity.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/tools/query_helpers.h"

namespace quorda {

std::unique_ptr<TODBCQuery> TEntity::CreateSProcedure(TExecType Command) {
    const std::string& Name = GetSP(Command);
    if (Trim(Name).empty()) {
        EntityError(SEntityEmptyProcedure);
    }
    auto Query = CreateQuery();
    std::string Arguments;
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem& Field = *GetFields(I);
        if (Field.ExecSet().Contains(Command)) {
            if (!Arguments.empty()) {
                Arguments += ",";
            }
            Arguments += ":" + Field.QuotedFactName();
        }
    }
    Query->SQL().Add(strExecuteProc + " " + Name + "(" + Arguments + ")");
    return Query;
}

Variant TEntity::ProcedureOpen(TODBCDataSet& Query) {
    OpenQry(&Query);
    // A procedure that returns no row has no first value to give.
    if (Query.Eof() || Query.Fields().Count() == 0) {
        return Variant::Null();
    }
    return Query.Fields()[0]->AsVariant();
}

void TEntity::ProcedureExec(TODBCDataSet& Query) {
    ExecQry(&Query);
}

Variant TEntity::RunCommand(TExecType Command, TCommandDataType DataType, TDataSet* Source,
                            const TCommandValues& Values) {
    Variant Result(-1);
    const auto Query = CreateSProcedure(Command);
    Query->SetUniDirectional(true);
    SetParam(*Query, DataType, Source, Values);
    if (GetSPOpen(Command)) {
        Result = ProcedureOpen(*Query);
    } else {
        ProcedureExec(*Query);
    }
    return Result;
}

} // namespace quorda
