#include "raw_odbc.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace quorda::bench {

namespace {

std::string Diagnostics(SQLSMALLINT HandleType, SQLHANDLE Handle) {
    std::string text;
    SQLCHAR state[6] = {};
    SQLCHAR message[1024] = {};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    for (SQLSMALLINT i = 1; i <= 5; ++i) {
        if (!SQL_SUCCEEDED(
                SQLGetDiagRec(HandleType, Handle, i, state, &native, message, sizeof message, &length)))
            break;
        text += " [";
        text += reinterpret_cast<const char*>(state);
        text += "] ";
        text += reinterpret_cast<const char*>(message);
    }
    return text;
}

} // namespace

SQLRETURN CheckOdbc(SQLRETURN Ret, SQLSMALLINT HandleType, SQLHANDLE Handle, const char* What,
                    bool AllowNoData) {
    if (SQL_SUCCEEDED(Ret) || (AllowNoData && Ret == SQL_NO_DATA))
        return Ret;
    throw TOdbcError(std::string(What) + " failed (" + std::to_string(Ret) + ")" +
                     (Handle ? Diagnostics(HandleType, Handle) : std::string()));
}

TRawConnection::TRawConnection(const std::string& ConnectString) {
    CheckOdbc(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &FEnv), SQL_HANDLE_ENV, nullptr,
              "SQLAllocHandle(ENV)");
    try {
        CheckOdbc(SQLSetEnvAttr(FEnv, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC2), 0),
                  SQL_HANDLE_ENV, FEnv, "SQLSetEnvAttr");
        CheckOdbc(SQLAllocHandle(SQL_HANDLE_DBC, FEnv, &FDbc), SQL_HANDLE_ENV, FEnv, "SQLAllocHandle(DBC)");
        SQLCHAR out[2048];
        SQLSMALLINT outLength = 0;
        CheckOdbc(SQLDriverConnect(FDbc, nullptr,
                                   reinterpret_cast<SQLCHAR*>(const_cast<char*>(ConnectString.c_str())),
                                   SQL_NTS, out, sizeof out, &outLength, SQL_DRIVER_NOPROMPT),
                  SQL_HANDLE_DBC, FDbc, "SQLDriverConnect");
        FConnected = true;
    } catch (...) {
        if (FDbc)
            SQLFreeHandle(SQL_HANDLE_DBC, FDbc);
        SQLFreeHandle(SQL_HANDLE_ENV, FEnv);
        throw;
    }
}

TRawConnection::~TRawConnection() {
    if (FConnected) {
        SQLEndTran(SQL_HANDLE_DBC, FDbc, SQL_ROLLBACK);
        SQLDisconnect(FDbc);
    }
    SQLFreeHandle(SQL_HANDLE_DBC, FDbc);
    SQLFreeHandle(SQL_HANDLE_ENV, FEnv);
}

void TRawConnection::Exec(const std::string& Sql) {
    TRawStatement stmt(*this);
    stmt.ExecDirect(Sql);
}

std::int64_t TRawConnection::ScalarInt(const std::string& Sql) {
    TRawStatement stmt(*this);
    stmt.ExecDirect(Sql);
    SQLBIGINT value = 0;
    SQLLEN indicator = 0;
    stmt.Check(SQLBindCol(stmt.Handle(), 1, SQL_C_SBIGINT, &value, sizeof value, &indicator), "SQLBindCol");
    if (stmt.Check(SQLFetch(stmt.Handle()), "SQLFetch", true) == SQL_NO_DATA || indicator == SQL_NULL_DATA)
        return 0;
    return value;
}

void TRawConnection::SetAutoCommit(bool On) {
    CheckOdbc(SQLSetConnectAttr(FDbc, SQL_ATTR_AUTOCOMMIT,
                                reinterpret_cast<SQLPOINTER>(On ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), 0),
              SQL_HANDLE_DBC, FDbc, "SQLSetConnectAttr(AUTOCOMMIT)");
}

void TRawConnection::Commit() {
    CheckOdbc(SQLEndTran(SQL_HANDLE_DBC, FDbc, SQL_COMMIT), SQL_HANDLE_DBC, FDbc, "SQLEndTran");
}

std::string TRawConnection::DriverVersion() {
    SQLCHAR name[128] = {};
    SQLCHAR version[64] = {};
    SQLSMALLINT length = 0;
    CheckOdbc(SQLGetInfo(FDbc, SQL_DRIVER_NAME, name, sizeof name, &length), SQL_HANDLE_DBC, FDbc,
              "SQLGetInfo");
    CheckOdbc(SQLGetInfo(FDbc, SQL_DRIVER_VER, version, sizeof version, &length), SQL_HANDLE_DBC, FDbc,
              "SQLGetInfo");
    return std::string(reinterpret_cast<const char*>(name)) + " " + reinterpret_cast<const char*>(version);
}

bool TRawConnection::IsMariadb() {
    SQLCHAR name[128] = {};
    SQLSMALLINT length = 0;
    CheckOdbc(SQLGetInfo(FDbc, SQL_DBMS_NAME, name, sizeof name, &length), SQL_HANDLE_DBC, FDbc,
              "SQLGetInfo");
    const std::string dbms(reinterpret_cast<const char*>(name));
    return dbms.find("MariaDB") != std::string::npos || dbms.find("MySQL") != std::string::npos;
}

TRawStatement::TRawStatement(TRawConnection& Connection) {
    CheckOdbc(SQLAllocHandle(SQL_HANDLE_STMT, Connection.Handle(), &FStmt), SQL_HANDLE_DBC,
              Connection.Handle(), "SQLAllocHandle(STMT)");
}

TRawStatement::~TRawStatement() {
    SQLFreeHandle(SQL_HANDLE_STMT, FStmt);
}

void TRawStatement::SetOption(SQLUSMALLINT Option, SQLULEN Value, const char* What) {
    Check(SQLSetStmtOption(FStmt, Option, Value), What);
}

void TRawStatement::ExecDirect(const std::string& Sql) {
    Check(SQLExecDirect(FStmt, reinterpret_cast<SQLCHAR*>(const_cast<char*>(Sql.c_str())), SQL_NTS),
          "SQLExecDirect", true);
}

void TRawStatement::Prepare(const std::string& Sql) {
    Check(SQLPrepare(FStmt, reinterpret_cast<SQLCHAR*>(const_cast<char*>(Sql.c_str())), SQL_NTS),
          "SQLPrepare");
}

void TRawStatement::CloseCursor() {
    Check(SQLFreeStmt(FStmt, SQL_CLOSE), "SQLFreeStmt(CLOSE)");
    Check(SQLFreeStmt(FStmt, SQL_UNBIND), "SQLFreeStmt(UNBIND)");
}

TBoundRows::TBoundRows(std::size_t RowCount)
    : Count(RowCount), Id(new SQLINTEGER[RowCount]), Qty(new SQLINTEGER[RowCount]),
      Price(new double[RowCount]), Name(new SQLCHAR[RowCount * kNameBuffer]),
      Created(new TIMESTAMP_STRUCT[RowCount]), IdInd(new SQLLEN[RowCount]), QtyInd(new SQLLEN[RowCount]),
      PriceInd(new SQLLEN[RowCount]), NameInd(new SQLLEN[RowCount]), CreatedInd(new SQLLEN[RowCount]) {}

void TBoundRows::Bind(TRawStatement& Stmt) {
    const SQLHSTMT h = Stmt.Handle();
    Stmt.Check(SQLBindCol(h, 1, SQL_C_SLONG, Id.get(), sizeof(SQLINTEGER), IdInd.get()), "SQLBindCol(id)");
    Stmt.Check(SQLBindCol(h, 2, SQL_C_SLONG, Qty.get(), sizeof(SQLINTEGER), QtyInd.get()), "SQLBindCol(qty)");
    Stmt.Check(SQLBindCol(h, 3, SQL_C_DOUBLE, Price.get(), sizeof(double), PriceInd.get()),
               "SQLBindCol(price)");
    Stmt.Check(SQLBindCol(h, 4, SQL_C_CHAR, Name.get(), kNameBuffer, NameInd.get()), "SQLBindCol(name)");
    Stmt.Check(SQLBindCol(h, 5, SQL_C_TIMESTAMP, Created.get(), sizeof(TIMESTAMP_STRUCT), CreatedInd.get()),
               "SQLBindCol(created)");
}

void TBoundRows::Fold(std::size_t Row, TChecksum& Sum) const {
    // The table has no NULLs; a NULL would still change the fold through the zeroed values.
    const TIMESTAMP_STRUCT ts = CreatedInd[Row] < 0 ? TIMESTAMP_STRUCT{} : Created[Row];
    const SQLLEN nameLength = NameInd[Row] < 0 ? 0 : std::min<SQLLEN>(NameInd[Row], kNameBuffer - 1);
    Sum.AddRow({IdInd[Row] < 0 ? 0 : Id[Row],
                QtyInd[Row] < 0 ? 0 : Qty[Row],
                PriceInd[Row] < 0 ? 0 : Price[Row],
                std::string_view(reinterpret_cast<const char*>(&Name[Row * kNameBuffer]),
                                 static_cast<std::size_t>(nameLength)),
                {ts.year, ts.month, ts.day, ts.hour, ts.minute, ts.second,
                 static_cast<int>(ts.fraction / 1000000)}});
}

} // namespace quorda::bench

namespace quorda::bench {

TParamRows::TParamRows(std::size_t RowCount)
    : Count(RowCount), Id(new SQLINTEGER[RowCount]), Qty(new SQLINTEGER[RowCount]),
      Price(new double[RowCount]), Name(new SQLCHAR[RowCount * kNameBuffer]),
      Created(new TIMESTAMP_STRUCT[RowCount]), NameInd(new SQLLEN[RowCount]), FixedInd(new SQLLEN[RowCount]) {
    for (std::size_t i = 0; i < RowCount; ++i)
        FixedInd[i] = 0;
}

void TParamRows::Set(std::size_t Row, const TBenchRow& Value) {
    Id[Row] = static_cast<SQLINTEGER>(Value.Id);
    Qty[Row] = static_cast<SQLINTEGER>(Value.Qty);
    Price[Row] = Value.Price;
    std::copy(Value.Name.begin(), Value.Name.end(), &Name[Row * kNameBuffer]);
    Name[Row * kNameBuffer + Value.Name.size()] = 0;
    NameInd[Row] = static_cast<SQLLEN>(Value.Name.size());
    const TBenchTimestamp& t = Value.Created;
    Created[Row] = {static_cast<SQLSMALLINT>(t.Year),
                    static_cast<SQLUSMALLINT>(t.Month),
                    static_cast<SQLUSMALLINT>(t.Day),
                    static_cast<SQLUSMALLINT>(t.Hour),
                    static_cast<SQLUSMALLINT>(t.Minute),
                    static_cast<SQLUSMALLINT>(t.Second),
                    static_cast<SQLUINTEGER>(t.Millisecond) * 1000000u};
}

void TParamRows::Bind(TRawStatement& Stmt) {
    const SQLHSTMT h = Stmt.Handle();
    Stmt.Check(
        SQLBindParameter(h, 1, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 10, 0, Id.get(), 0, FixedInd.get()),
        "SQLBindParameter(id)");
    Stmt.Check(SQLBindParameter(h, 2, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 10, 0, Qty.get(), 0,
                                FixedInd.get()),
               "SQLBindParameter(qty)");
    Stmt.Check(SQLBindParameter(h, 3, SQL_PARAM_INPUT, SQL_C_DOUBLE, SQL_DOUBLE, 15, 0, Price.get(), 0,
                                FixedInd.get()),
               "SQLBindParameter(price)");
    Stmt.Check(SQLBindParameter(h, 4, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 40, 0, Name.get(),
                                kNameBuffer, NameInd.get()),
               "SQLBindParameter(name)");
    Stmt.Check(SQLBindParameter(h, 5, SQL_PARAM_INPUT, SQL_C_TIMESTAMP, SQL_TIMESTAMP, 23, 3, Created.get(),
                                0, FixedInd.get()),
               "SQLBindParameter(created)");
}

std::string BenchSelect(std::int64_t Rows, std::int64_t TableRows, const std::string& Table) {
    std::string sql = "select id, qty, price, name, created from " + Table;
    if (Rows < TableRows)
        sql += " where id <= " + std::to_string(Rows);
    return sql + " order by id";
}

std::string BenchInsert(const std::string& Table) {
    return "insert into " + Table + " (id, qty, price, name, created) values (?, ?, ?, ?, ?)";
}

std::uint64_t ScanChecksum(TRawConnection& Connection, const std::string& Sql, std::int64_t* Rows) {
    constexpr std::size_t kRowset = 100;
    TRawStatement stmt(Connection);
    stmt.SetOption(SQL_ROWSET_SIZE, kRowset, "SQL_ROWSET_SIZE");
    stmt.ExecDirect(Sql);
    TBoundRows rows(kRowset);
    rows.Bind(stmt);
    TChecksum sum;
    std::int64_t count = 0;
    SQLULEN fetched = 0;
    std::vector<SQLUSMALLINT> status(kRowset);
    while (stmt.Check(SQLExtendedFetch(stmt.Handle(), SQL_FETCH_NEXT, 0, &fetched, status.data()),
                      "SQLExtendedFetch", true) != SQL_NO_DATA) {
        for (std::size_t i = 0; i < fetched; ++i)
            rows.Fold(i, sum);
        count += static_cast<std::int64_t>(fetched);
    }
    if (Rows)
        *Rows = count;
    return sum.Value();
}

} // namespace quorda::bench
