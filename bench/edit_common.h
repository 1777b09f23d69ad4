#pragma once

// The row-edit workload: a table of (id, qty) rows, every row edited once (qty + 1) and posted; the
// checksum folds the rows as they stand afterwards.

#include "checksum.h"
#include "raw_odbc.h"

#include <cstdint>
#include <string>

namespace quorda::bench {

// The rows of the edit workload: at most this many, so the per-post refresh stays affordable.
inline constexpr std::int64_t kEditMaxRows = 1000;

inline std::int64_t EditInitialQty(std::int64_t Id) {
    return Id % 97;
}

// (Re)creates Table with Rows rows (id, EditInitialQty(id)).
inline void ResetEditTable(TRawConnection& Connection, const std::string& Table, std::int64_t Rows) {
    try {
        Connection.Exec("drop table " + Table);
    } catch (const TOdbcError&) {
        // Not there yet.
    }
    Connection.Exec("create table " + Table + " (id integer primary key, qty integer not null)");
    Connection.SetAutoCommit(false);
    for (std::int64_t start = 1; start <= Rows; start += 250) {
        std::string sql = "insert into " + Table + " values ";
        for (std::int64_t id = start; id < start + 250 && id <= Rows; ++id) {
            sql += (id == start ? "(" : ",(") + std::to_string(id) + "," +
                   std::to_string(EditInitialQty(id)) + ")";
        }
        Connection.Exec(sql);
    }
    Connection.Commit();
    Connection.SetAutoCommit(true);
}

// The fold of every row after one edit run.
inline std::uint64_t ExpectedEditChecksum(std::int64_t Rows) {
    TChecksum sum;
    for (std::int64_t id = 1; id <= Rows; ++id) {
        sum.AddInt(id);
        sum.AddInt(EditInitialQty(id) + 1);
    }
    return sum.Value();
}

// The fold of the table as it stands.
inline std::uint64_t EditTableChecksum(TRawConnection& Connection, const std::string& Table) {
    TRawStatement stmt(Connection);
    std::string sql = "select id, qty from " + Table + " order by id";
    stmt.Check(SQLExecDirect(stmt.Handle(), reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS),
               "SQLExecDirect");
    SQLINTEGER id = 0;
    SQLINTEGER qty = 0;
    SQLLEN idLength = 0;
    SQLLEN qtyLength = 0;
    stmt.Check(SQLBindCol(stmt.Handle(), 1, SQL_C_SLONG, &id, 0, &idLength), "SQLBindCol");
    stmt.Check(SQLBindCol(stmt.Handle(), 2, SQL_C_SLONG, &qty, 0, &qtyLength), "SQLBindCol");
    TChecksum sum;
    while (stmt.Check(SQLFetch(stmt.Handle()), "SQLFetch", true) != SQL_NO_DATA) {
        sum.AddInt(id);
        sum.AddInt(qty);
    }
    return sum.Value();
}

} // namespace quorda::bench
