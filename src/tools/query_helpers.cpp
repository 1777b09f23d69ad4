#include "quorda/tools/query_helpers.h"

#include "query_bodies_p.h"
#include "quorda/db/controls_disabled.h"
#include "quorda/rtl/exception.h"

namespace quorda {

TODBCDatabase* DataBase = nullptr;

namespace {

// Parameter i := Values[i]. Reading past the values would read memory that is not there: too few
// values is an error instead.
void AssignValues(TODBCDataSet& Query, const std::vector<Variant>& Values, bool NullAsString) {
    const int count = Query.GetParamsCount();
    if (static_cast<std::size_t>(count) > Values.size()) {
        DatabaseErrorFmt("%d parameter values given for the %d parameters of the statement",
                         static_cast<int>(Values.size()), count);
    }
    for (int i = 0; i < count; ++i) {
        TODBCParam* param = Query.Params().Items(i);
        if (NullAsString && VarIsNull(Values[static_cast<std::size_t>(i)])) {
            // Typed as a string first, so the null is bound with a type.
            param->SetAsVariant(Variant(std::string()));
            param->Clear();
        } else {
            param->SetAsVariant(Values[static_cast<std::size_t>(i)]);
        }
    }
}

} // namespace

std::unique_ptr<TODBCQuery> CreateQuery() {
    auto query = std::make_unique<TODBCQuery>(nullptr);
    query->SetODBCDatabase(DataBase);
    query->SetBlobBufferSize(250);
    query->SetMaxBlobBuffer(1000);
    return query;
}

std::unique_ptr<TODBCExtQuery> CreateQueryExt() {
    auto query = std::make_unique<TODBCExtQuery>(nullptr);
    query->SetODBCDatabase(DataBase);
    query->SetBlobBufferSize(255);
    query->SetMaxBlobBuffer(1000);
    return query;
}

void ExecQry(TODBCDataSet* Query) {
    TExecCursorScope cursor;
    Query->ExecSQL();
}

void OpenQry(TODBCDataSet* Query) {
    TControlsDisabled controls(*Query);
    TExecCursorScope cursor;
    Query->Open();
}

void PrepareQry(TODBCDataSet* Query) {
    Query->Prepare();
}

std::int32_t ExecuteQueryOn(TODBCDataSet& Query, const std::string& SQL) {
    Query.SQL().SetText(SQL);
    ExecQry(&Query);
    return Query.RowsAffected();
}

void OpenQueryOn(TODBCDataSet& Query, const std::string& SQL) {
    Query.SQL().SetText(SQL);
    TExecCursorScope cursor;
    Query.Open();
}

std::int32_t ExecQueryLongOn(TODBCDataSet& Query, const std::string& SQL, const std::vector<Variant>& Values,
                             const std::vector<std::int32_t>& ClearIndexes) {
    Query.SQL().SetText(SQL);
    PrepareQry(&Query);
    AssignValues(Query, Values, true);
    // An empty list asks for no clearing, like a list starting with -1.
    if (!ClearIndexes.empty() && ClearIndexes.front() != -1) {
        for (const std::int32_t index : ClearIndexes) {
            Query.Params().GetParam(static_cast<std::uint16_t>(index & 0xFFFF))->Clear();
        }
    }
    ExecQry(&Query);
    return Query.RowsAffected();
}

void OpenQueryLongOn(TODBCDataSet& Query, const std::string& SQL, const std::vector<Variant>& Values,
                     bool UniDirectional) {
    Query.SQL().SetText(SQL);
    if (UniDirectional) {
        Query.SetUniDirectional(true);
    }
    PrepareQry(&Query);
    AssignValues(Query, Values, false);
    OpenQry(&Query);
}

std::int32_t ExecuteQuery(const std::string& SQL) {
    const auto query = CreateQuery();
    return ExecuteQueryOn(*query, SQL);
}

std::unique_ptr<TODBCQuery> OpenQuery(const std::string& SQL) {
    auto query = CreateQuery();
    OpenQueryOn(*query, SQL);
    return query;
}

std::int32_t ExecQueryLong(const std::string& SQL, const std::vector<Variant>& Values,
                           const std::vector<std::int32_t>& ClearIndexes) {
    const auto query = CreateQuery();
    return ExecQueryLongOn(*query, SQL, Values, ClearIndexes);
}

std::int64_t ExecQueryBatch(const std::string& SQL, const std::vector<std::vector<Variant>>& Rows) {
    const auto query = CreateQuery();
    query->SQL().SetText(SQL);
    TExecCursorScope cursor;
    return query->ExecSQLBatch(Rows);
}

std::unique_ptr<TODBCQuery> OpenQueryLong(const std::string& SQL, const std::vector<Variant>& Values) {
    auto query = CreateQuery();
    OpenQueryLongOn(*query, SQL, Values, false);
    return query;
}

std::unique_ptr<TODBCQuery> OpenQueryLongUni(const std::string& SQL, const std::vector<Variant>& Values) {
    auto query = CreateQuery();
    OpenQueryLongOn(*query, SQL, Values, true);
    return query;
}

} // namespace quorda
