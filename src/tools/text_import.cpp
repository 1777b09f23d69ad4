#include "quorda/db/dataset.h"
#include "quorda/db/field.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/in_out_error.h"
#include "quorda/rtl/numbers.h"
#include "quorda/rtl/variant.h"
#include "quorda/tools/query_helpers.h"
#include "quorda/tools/text_transfer.h"
#include "text_file_p.h"

#include <memory>
#include <new>

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

// The statements of one import, prepared at its first row and executed again for every row.
class TImportStatements {
public:
    TImportStatements(const std::string& TableName, const std::string& KeyCondition,
                      const std::string& Header, TDataSet& Columns)
        : FTableName(TableName), FKeyCondition(KeyCondition) {
        std::string names;
        for (const char c : Header) {
            names += c;
            if (c == ',') {
                names += ':';
            }
        }
        FInsert = CreateQuery();
        FInsert->SQL().SetText("insert into " + TableName + "(" + Header + ") Values(:" + names + ")");
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

} // namespace

void ImportDataSet(const std::string& FileName, const std::string& TableName, const std::string& KeyCondition,
                   TImportType ImportType, const TTransferProgress& Progress) {
    TLineReader file(FileName);
    std::string header;
    if (!file.ReadLine(header)) {
        return;
    }
    // Only the column types are read from it, by name.
    const auto columns = CreateQuery();
    columns->SetUniDirectional(true);
    columns->SQL().SetText("select * from " + TableName);
    columns->Open();

    DataBase->StartTransaction();
    std::int64_t lineNumber = 1;
    try {
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
        DataBase->Commit();
    } catch (...) {
        try {
            DataBase->Rollback();
        } catch (...) {
            // The error that stopped the import is the one to report.
        }
        RethrowWithLine(lineNumber);
    }
}

} // namespace quorda
