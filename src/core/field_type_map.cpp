// Translation between ODBC SQL data types and field types: the type of a result column, the C type
// it is bound as, and the SQL type of a parameter.

#include "odbc_dataset_p.h"
#include "quorda/core/odbc_dataset.h"
#include "quorda/odbc/odbc_error.h"

namespace quorda {
namespace {

struct TColumnMapping {
    TFieldType FieldType;
    SQLSMALLINT CType;
};

// 64-bit integers keep their full range; REAL is widened to the double its field holds; TINYINT
// arrives as the 16-bit integer of its field. Wide character types are fetched as UTF-8 text.
TColumnMapping MapColumn(int SQLType) {
    switch (SQLType) {
    case SQL_WLONGVARCHAR:
        return {ftMemo, SQL_C_CHAR};
    case SQL_WVARCHAR:
    case SQL_WCHAR:
        return {ftString, SQL_C_CHAR};
    case SQL_BIT:
        return {ftBoolean, SQL_C_SHORT};
    case SQL_TINYINT:
        return {ftSmallint, SQL_C_SHORT};
    case SQL_BIGINT:
        return {ftLargeint, SQL_C_SBIGINT};
    case SQL_LONGVARBINARY:
        return {ftBlob, SQL_C_BINARY};
    case SQL_VARBINARY:
        return {ftUnknown, SQL_C_BINARY};
    case SQL_BINARY:
        return {ftBlob, SQL_C_BINARY};
    case SQL_LONGVARCHAR:
        return {ftMemo, SQL_C_CHAR};
    case SQL_CHAR:
    case SQL_VARCHAR:
        return {ftString, SQL_C_CHAR};
    case SQL_NUMERIC:
    case SQL_DECIMAL:
    case SQL_FLOAT:
    case SQL_REAL:
    case SQL_DOUBLE:
        return {ftFloat, SQL_C_DOUBLE};
    case SQL_INTEGER:
        return {ftInteger, SQL_C_LONG};
    case SQL_SMALLINT:
        return {ftSmallint, SQL_C_SHORT};
    case SQL_DATE:
        return {ftDate, SQL_C_DATE};
    case SQL_TIME:
        return {ftTime, SQL_C_TIME};
    case SQL_TIMESTAMP:
        return {ftDateTime, SQL_C_TIMESTAMP};
    default:
        return {ftUnknown, SQL_C_DEFAULT};
    }
}

} // namespace

TFieldType ConvertSQLToBDE(int SQLType) {
    return MapColumn(SQLType).FieldType;
}

SQLSMALLINT BindCTypeFor(int SQLType) {
    return MapColumn(SQLType).CType;
}

int ConvertBDEToSQL(TFieldType FieldType) {
    switch (FieldType) {
    case ftUnknown:
    case ftString:
    case ftBoolean:
    case ftBCD:
    case ftBytes:
    case ftVarBytes:
    case ftBlob:
    case ftMemo:
    case ftGraphic:
    case ftFmtMemo:
    case ftTypedBinary:
        return SQL_CHAR;
    case ftSmallint:
    case ftInteger:
    case ftWord:
        return SQL_INTEGER;
    case ftFloat:
    case ftCurrency:
        return SQL_DOUBLE;
    case ftDate:
        return SQL_DATE;
    case ftTime:
        return SQL_TIME;
    case ftDateTime:
        return SQL_TIMESTAMP;
    default:
        throw EODBCDatabaseError("Parameter type not supported");
    }
}

} // namespace quorda
