#pragma once

// Minimal RAII over plain ODBC calls for the raw implementations and the data setup. The raw side
// works as a careful application would: ODBC 2 behaviour (the same API level as the library), bound
// buffers, no per-cell SQLGetData.

#include "checksum.h"
#include "row_generator.h"

#include <cstdint>
#include <memory>
#include <sql.h>
#include <sqlext.h>
#include <stdexcept>
#include <string>

namespace quorda::bench {

class TOdbcError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws TOdbcError with the handle's diagnostics unless Ret is SQL_SUCCESS(_WITH_INFO).
// SQL_NO_DATA is accepted when AllowNoData is set.
SQLRETURN CheckOdbc(SQLRETURN Ret, SQLSMALLINT HandleType, SQLHANDLE Handle, const char* What,
                    bool AllowNoData = false);

class TRawConnection {
public:
    explicit TRawConnection(const std::string& ConnectString);
    ~TRawConnection();
    TRawConnection(const TRawConnection&) = delete;
    TRawConnection& operator=(const TRawConnection&) = delete;

    SQLHDBC Handle() const { return FDbc; }

    void Exec(const std::string& Sql);
    // First column of the first row as an integer; 0 for NULL.
    std::int64_t ScalarInt(const std::string& Sql);
    void SetAutoCommit(bool On);
    void Commit();
    std::string DriverVersion();
    // The server is MariaDB (or MySQL), whose SQL differs in places.
    bool IsMariadb();

private:
    SQLHENV FEnv = SQL_NULL_HENV;
    SQLHDBC FDbc = SQL_NULL_HDBC;
    bool FConnected = false;
};

class TRawStatement {
public:
    explicit TRawStatement(TRawConnection& Connection);
    ~TRawStatement();
    TRawStatement(const TRawStatement&) = delete;
    TRawStatement& operator=(const TRawStatement&) = delete;

    SQLHSTMT Handle() const { return FStmt; }
    SQLRETURN Check(SQLRETURN Ret, const char* What, bool AllowNoData = false) const {
        return CheckOdbc(Ret, SQL_HANDLE_STMT, FStmt, What, AllowNoData);
    }

    void SetOption(SQLUSMALLINT Option, SQLULEN Value, const char* What);
    void ExecDirect(const std::string& Sql);
    void Prepare(const std::string& Sql);
    // SQLFreeStmt(SQL_CLOSE) and SQL_UNBIND, so the handle can run the next statement.
    void CloseCursor();

private:
    SQLHSTMT FStmt = SQL_NULL_HSTMT;
};

// Shared by the raw scan and scroll runs: one row's bound buffers, or RowCount rows column-wise.
struct TBoundRows {
    explicit TBoundRows(std::size_t RowCount);
    void Bind(TRawStatement& Stmt);
    void Fold(std::size_t Row, TChecksum& Sum) const;

    std::size_t Count;
    std::unique_ptr<SQLINTEGER[]> Id, Qty;
    std::unique_ptr<double[]> Price;
    std::unique_ptr<SQLCHAR[]> Name; // 41 bytes per row
    std::unique_ptr<TIMESTAMP_STRUCT[]> Created;
    std::unique_ptr<SQLLEN[]> IdInd, QtyInd, PriceInd, NameInd, CreatedInd;
};

// Parameter buffers for RowCount rows, column-wise (an array of RowCount parameter sets when RowCount > 1).
struct TParamRows {
    explicit TParamRows(std::size_t RowCount);
    void Set(std::size_t Row, const TBenchRow& Value);
    void Bind(TRawStatement& Stmt);

    std::size_t Count;
    std::unique_ptr<SQLINTEGER[]> Id, Qty;
    std::unique_ptr<double[]> Price;
    std::unique_ptr<SQLCHAR[]> Name;
    std::unique_ptr<TIMESTAMP_STRUCT[]> Created;
    std::unique_ptr<SQLLEN[]> NameInd, FixedInd;
};

constexpr std::size_t kNameBuffer = 41;

// Every read workload selects the whole row in id order; Rows below TableRows limits the range.
std::string BenchSelect(std::int64_t Rows, std::int64_t TableRows, const std::string& Table = "bench");

std::string BenchInsert(const std::string& Table);

// Fold of a forward read of Sql through bound columns, block-fetched: used to verify data, untimed.
std::uint64_t ScanChecksum(TRawConnection& Connection, const std::string& Sql, std::int64_t* Rows = nullptr);

} // namespace quorda::bench
