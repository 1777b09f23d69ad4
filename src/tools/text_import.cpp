#include "quorda/db/dataset.h"
#include "quorda/db/field.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/in_out_error.h"
#include "quorda/rtl/numbers.h"
#include "quorda/rtl/variant.h"
#include "quorda/tools/query_helpers.h"
#include "quorda/tools/text_transfer.h"
#include "text_file_p.h"

#include <charconv>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>

namespace quorda {

namespace {

// The exception E as raised, with the line number mixed in: handlers of E still catch it.
template <typename E>
class TImportFailure : public E, public TImportLineInfo {
public:
    TImportFailure(const E& Error, std::int64_t Line) : E(Error), TImportLineInfo(Line) {}
};

// Re-raises the exception being handled; a library exception comes back as its own class with Line.
[[noreturn]] void RethrowWithLine(std::int64_t Line) {
    try {
        throw;
    } catch (const TImportLineInfo&) {
        throw;
    } catch (const EODBCError& e) {
        throw TImportFailure<EODBCError>(e, Line);
    } catch (const EInOutError& e) {
        throw TImportFailure<EInOutError>(e, Line);
    } catch (const EConvertError& e) {
        throw TImportFailure<EConvertError>(e, Line);
    } catch (const EODBCDatabaseError& e) {
        throw TImportFailure<EODBCDatabaseError>(e, Line);
    } catch (const EDatabaseError& e) {
        throw TImportFailure<EDatabaseError>(e, Line);
    } catch (const EVariantError& e) {
        throw TImportFailure<EVariantError>(e, Line);
    } catch (const Exception& e) {
        throw TImportFailure<Exception>(e, Line);
    }
}

// Splits a line at every "," that follows an even number of quotes; quotes stay in the tokens.
void SplitLine(const std::string& Line, std::vector<std::string>& Tokens) {
    Tokens.clear();
    std::string token;
    std::size_t quotes = 0;
    for (const char c : Line) {
        if (c == '\'') {
            ++quotes;
        }
        if (c == ',' && quotes % 2 == 0) {
            Tokens.push_back(std::move(token));
            token.clear();
        } else {
            token += c;
        }
    }
    Tokens.push_back(std::move(token));
}

// A parameter as a freshly prepared statement has it: unassigned, untyped, not null.
void ResetParam(TODBCParam& Param) {
    Param.Clear();
    Param.InitValue();
    Param.SetDataType(ftUnknown);
    Param.SetBound(false);
}

// Decoded text into a blob or memo column: memos as long text, so that servers that type their
// parameters take them, blobs as binary data.
void SetLongValue(TODBCParam& Param, TFieldType Column, const std::string& Value) {
    if (Column == ftMemo) {
        Param.SetAsMemo(Value);
    } else {
        Param.SetBlobData(Value.data(), Value.size());
    }
}

// A bare token that is a whole number in the 32-bit range, for a column of a 32-bit or smaller integer
// type.
std::optional<std::int32_t> WholeNumberFor(TFieldType Column, const std::string& Token) {
    if (Column != ftInteger && Column != ftSmallint && Column != ftWord && Column != ftAutoInc) {
        return std::nullopt;
    }
    std::int32_t value = 0;
    const char* end = Token.data() + Token.size();
    const auto [stop, error] = std::from_chars(Token.data(), end, value);
    if (error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return value;
}

// Token of the file into the parameter of a column of type Column.
void AssignToken(TODBCParam& Param, TFieldType Column, const std::string& Token) {
    const bool longColumn = Column == ftBlob || Column == ftMemo;
    if (Token.empty()) {
        Param.SetAsString(std::string());
        Param.Clear();
        return;
    }
    if (Token.front() == '\'') {
        // Stripping the last character of a value whose closing quote is missing would lose data.
        if (Token.size() < 2 || Token.back() != '\'') {
            DatabaseErrorFmt("Unterminated quoted value %s", Token);
        }
        const std::string value = ConverString(Token.substr(1, Token.size() - 2), false);
        if (longColumn) {
            SetLongValue(Param, Column, value);
        } else {
            Param.SetAsString(value);
        }
    } else if (longColumn) {
        SetLongValue(Param, Column, ConverString(Token, false));
    } else if (Column == ftLargeint) {
        // 64-bit keys must not pass through a double.
        Param.SetAsLargeInt(StrToInt64(Token));
    } else if (const auto whole = WholeNumberFor(Column, Token)) {
        // The same value as the double, but a server compares an integer key with an integer by its
        // index: against a double, every existence check would scan the whole table.
        Param.SetAsInteger(*whole);
    } else {
        Param.SetAsFloat(StrToFloat(Token));
    }
    if (Param.AsString().empty()) {
        Param.Clear();
    }
}

// To takes From's value, type and null state (a 64-bit integer stays one).
void CopyValue(const TODBCParam& From, TODBCParam& To) {
    if (From.DataType() == ftLargeint) {
        To.SetAsLargeInt(From.GetAsVariant().AsInt64());
    } else {
        To.SetAsVariant(From.GetAsVariant());
    }
    if (From.IsNull()) {
        To.Clear();
    }
}

// "insert into T(a,b) Values(:a,:b)" for the header line "a,b".
std::string InsertStatement(const std::string& TableName, const std::string& Header) {
    std::string names;
    for (const char c : Header) {
        names += c;
        if (c == ',') {
            names += ':';
        }
    }
    return "insert into " + TableName + "(" + Header + ") Values(:" + names + ")";
}

// The statements of one import, prepared at its first row and executed again for every row.
class TImportStatements {
public:
    TImportStatements(const std::string& TableName, const std::string& KeyCondition,
                      const std::string& Header, TDataSet& Columns)
        : FTableName(TableName), FKeyCondition(KeyCondition) {
        FInsert = CreateQuery();
        FInsert->SQL().SetText(InsertStatement(TableName, Header));
        PrepareQry(FInsert.get());
        for (int i = 0; i < FInsert->GetParamsCount(); ++i) {
            FColumnTypes.push_back(Columns.FieldByName(FInsert->Params()[i]->Name())->DataType());
        }
        FCount = CreateQuery();
        FCount->SQL().SetText("select count(*) from " + TableName + " " + KeyCondition);
        PrepareQry(FCount.get());
    }

    // Binds the line's tokens to the insert statement.
    void Bind(const std::vector<std::string>& Tokens) {
        TODBCParams& params = FInsert->Params();
        if (Tokens.size() > static_cast<std::size_t>(params.Count())) {
            DatabaseErrorFmt("The line holds %d values for %d columns", static_cast<int>(Tokens.size()),
                             params.Count());
        }
        for (int i = 0; i < params.Count(); ++i) {
            ResetParam(*params[i]);
        }
        for (std::size_t k = 0; k < Tokens.size(); ++k) {
            AssignToken(*params[static_cast<int>(k)], FColumnTypes[k], Tokens[k]);
        }
    }

    // Whether a row with the bound key exists.
    bool Exists() {
        TODBCParams& params = FCount->Params();
        for (int i = 0; i < params.Count(); ++i) {
            CopyValue(*FInsert->ParamByName(params[i]->Name()), *params[i]);
        }
        if (FCount->Active()) {
            FCount->ImmediatelyOpen();
            FCount->First();
        } else {
            FCount->Open();
        }
        return FCount->Fields()[0]->AsInteger() != 0;
    }

    void DeleteExisting() {
        if (!FDelete) {
            FDelete = CreateQuery();
            FDelete->SQL().SetText("delete from " + FTableName + " " + FKeyCondition);
            PrepareQry(FDelete.get());
        }
        TODBCParams& params = FDelete->Params();
        for (int i = 0; i < params.Count(); ++i) {
            CopyValue(*FInsert->ParamByName(FCount->Params()[i]->Name()), *params[i]);
        }
        FDelete->ExecSQL();
    }

    void Insert() { FInsert->ExecSQL(); }

private:
    std::string FTableName;
    std::string FKeyCondition;
    std::unique_ptr<TODBCQuery> FInsert;
    std::unique_ptr<TODBCQuery> FCount;
    std::unique_ptr<TODBCQuery> FDelete;
    std::vector<TFieldType> FColumnTypes;
};

// Rows handed to one batch execution while appending.
constexpr std::size_t kAppendBatchRows = 1000;

// Runs Body inside a transaction of DataBase: committed when it returns, rolled back when it raises;
// the error passes on with the number of the line being handled.
template <typename Body>
void InImportTransaction(std::int64_t& LineNumber, Body&& Run) {
    DataBase->StartTransaction();
    try {
        Run();
        DataBase->Commit();
    } catch (...) {
        try {
            DataBase->Rollback();
        } catch (...) {
            // The error that stopped the import is the one to report.
        }
        RethrowWithLine(LineNumber);
    }
}

// The table's column types by name, read from an empty result.
std::unique_ptr<TODBCQuery> OpenColumns(const std::string& TableName) {
    auto columns = CreateQuery();
    columns->SetUniDirectional(true);
    columns->SQL().SetText("select * from " + TableName + " where 1 = 0");
    columns->Open();
    return columns;
}

} // namespace

void AppendDataSet(const std::string& FileName, const std::string& TableName,
                   const TTransferProgress& Progress) {
    TLineReader file(FileName);
    std::string header;
    if (!file.ReadLine(header)) {
        return;
    }
    const auto columns = OpenColumns(TableName);
    const auto insert = CreateQuery();
    insert->SQL().SetText(InsertStatement(TableName, header));
    // Long and 64-bit columns keep the type their values need; the others take their values' types.
    std::vector<TFieldType> types;
    for (int i = 0; i < insert->GetParamsCount(); ++i) {
        TODBCParam& param = *insert->Params()[i];
        types.push_back(columns->FieldByName(param.Name())->DataType());
        if (types.back() == ftBlob || types.back() == ftMemo || types.back() == ftLargeint) {
            param.SetDataType(types.back());
        }
    }
    std::int64_t lineNumber = 1;
    InImportTransaction(lineNumber, [&] {
        std::vector<std::vector<Variant>> rows;
        std::string line;
        std::vector<std::string> tokens;
        TODBCParam cell(nullptr);
        std::int64_t firstLine = 2;
        auto flush = [&] {
            try {
                insert->ExecSQLBatch(rows);
            } catch (const EODBCBatchError& e) {
                lineNumber = firstLine + static_cast<std::int64_t>(e.RowIndex());
                throw;
            }
            firstLine += static_cast<std::int64_t>(rows.size());
            rows.clear();
            if (Progress) {
                Progress(firstLine - 2);
            }
        };
        while (file.ReadLine(line)) {
            ++lineNumber;
            SplitLine(line, tokens);
            if (tokens.size() > types.size()) {
                DatabaseErrorFmt("The line holds %d values for %d columns", static_cast<int>(tokens.size()),
                                 static_cast<int>(types.size()));
            }
            std::vector<Variant>& values = rows.emplace_back(types.size(), Variant::Null());
            for (std::size_t k = 0; k < tokens.size(); ++k) {
                ResetParam(cell);
                AssignToken(cell, types[k], tokens[k]);
                if (!cell.IsNull()) {
                    values[k] = cell.GetAsVariant();
                }
            }
            if (rows.size() == kAppendBatchRows) {
                flush();
            }
        }
        if (!rows.empty()) {
            flush();
        }
    });
}

void ImportDataSet(const std::string& FileName, const std::string& TableName, const std::string& KeyCondition,
                   TImportType ImportType, const TTransferProgress& Progress) {
    TLineReader file(FileName);
    std::string header;
    if (!file.ReadLine(header)) {
        return;
    }
    // Only the column types are read from it, by name.
    const auto columns = OpenColumns(TableName);

    std::int64_t lineNumber = 1;
    InImportTransaction(lineNumber, [&] {
        std::unique_ptr<TImportStatements> statements;
        std::string line;
        std::vector<std::string> tokens;
        while (file.ReadLine(line)) {
            ++lineNumber;
            if (!statements) {
                statements = std::make_unique<TImportStatements>(TableName, KeyCondition, header, *columns);
            }
            SplitLine(line, tokens);
            statements->Bind(tokens);
            bool insert = !statements->Exists();
            if (!insert && ImportType == itUpdateExists) {
                statements->DeleteExisting();
                insert = true;
            }
            if (insert) {
                statements->Insert();
            }
            if (Progress) {
                Progress(lineNumber - 1);
            }
        }
    });
}

} // namespace quorda
