#include "commands.h"

#include "progress.h"
#include "quorda/core/session.h"
#include "quorda/db/field.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/in_out_error.h"
#include "quorda/rtl/numbers.h"
#include "quorda/rtl/replace_file.h"
#include "quorda/rtl/strings.h"
#include "quorda/tools.h"
#include "table_output.h"

#include <iostream>

namespace quorda::cli {

namespace {

std::vector<Row> Columns(std::initializer_list<const TStrings*> Lists) {
    std::vector<Row> rows;
    for (int i = 0; i < (*Lists.begin())->Count(); ++i) {
        Row row;
        for (const TStrings* list : Lists) {
            row.emplace_back(list->Get(i));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

// "-p name=value": whole numbers in their plain form are bound as integers, anything else as text.
void BindParams(TODBCQuery& Query, const std::vector<std::string>& Params) {
    for (const std::string& item : Params) {
        const std::size_t equals = item.find('=');
        if (equals == std::string::npos || equals == 0) {
            DatabaseErrorFmt("Parameter \"%s\" is not name=value", item);
        }
        const std::string value = item.substr(equals + 1);
        TODBCParam* param = Query.ParamByName(item.substr(0, equals));
        std::int64_t number = 0;
        if (TryStrToInt64(value, number) && std::to_string(number) == value) {
            param->SetAsLargeInt(number);
        } else {
            param->SetAsString(value);
        }
    }
}

std::unique_ptr<TODBCQuery> Statement(const QueryOptions& Options, bool ForwardOnly) {
    auto query = CreateQuery();
    query->SQL().SetText(Options.Sql);
    // The cursor type is a statement attribute: it is set before the statement is prepared.
    query->SetUniDirectional(ForwardOnly);
    PrepareQry(query.get());
    BindParams(*query, Options.Params);
    for (int i = 0; i < query->GetParamsCount(); ++i) {
        if (const TODBCParam* param = query->Params()[i]; !param->Bound()) {
            DatabaseErrorFmt("Parameter :%s has no value: give it with -p %s=VALUE", param->Name(),
                             param->Name());
        }
    }
    return query;
}

Row CurrentRow(TDataSet& DataSet) {
    Row row;
    for (int i = 0; i < DataSet.FieldCount(); ++i) {
        const TField* field = DataSet.Fields()[i];
        row.push_back(field->IsNull() ? Cell() : Cell(field->AsString()));
    }
    return row;
}

} // namespace

void ListDsns() {
    TStringList names, drivers;
    ODBCSession()->GetDSNNames(&names, &drivers);
    PrintAligned(std::cout, {"data source", "driver"}, Columns({&names, &drivers}));
}

void ListDrivers() {
    TStringList names, attributes;
    ODBCSession()->GetDriverNames(&names, &attributes);
    PrintAligned(std::cout, {"driver", "first attribute"}, Columns({&names, &attributes}));
}

void ListTables(TODBCDatabase& Db) {
    TStringList names, owners, types, remarks;
    Db.GetTables(&names, &owners, &types, &remarks);
    PrintAligned(std::cout, {"table", "type"}, Columns({&names, &types}));
}

void ListColumns(TODBCDatabase& Db, const std::string& Table) {
    const auto query = OpenQuery("select * from " + Table + " where 1 = 0");
    std::vector<Row> rows;
    for (int i = 0; i < query->FieldCount(); ++i) {
        const TField* field = query->Fields()[i];
        rows.push_back({field->FieldName(), FieldTypeName(field->DataType()),
                        field->Size() > 0 ? Cell(std::to_string(field->Size())) : Cell("")});
    }
    PrintAligned(std::cout, {"column", "type", "size"}, rows);
}

void RunQuery(TODBCDatabase& Db, const QueryOptions& Options) {
    const auto query = Statement(Options, true);
    if (!query->IsDataSet()) {
        DatabaseError("The statement returns no rows: run it with quorda exec");
    }
    OpenQry(query.get());
    std::vector<std::string> header;
    Row names;
    for (int i = 0; i < query->FieldCount(); ++i) {
        header.push_back(query->Fields()[i]->FieldName());
        names.emplace_back(header.back());
    }
    if (Options.Csv) {
        // Streamed: a large result is never held in memory.
        PrintCsvLine(std::cout, names);
        for (; !query->Eof(); query->Next()) {
            PrintCsvLine(std::cout, CurrentRow(*query));
        }
        return;
    }
    std::vector<Row> rows;
    for (; !query->Eof(); query->Next()) {
        rows.push_back(CurrentRow(*query));
    }
    PrintAligned(std::cout, header, rows);
    std::cout << "(" << rows.size() << (rows.size() == 1 ? " row)\n" : " rows)\n");
}

void RunExec(TODBCDatabase& Db, const QueryOptions& Options) {
    const auto query = Statement(Options, false);
    ExecQry(query.get());
    std::cout << query->RowsAffected() << " rows affected\n";
}

void RunExport(TODBCDatabase& Db, const std::string& Source, const std::string& File) {
    const bool isQuery = Source.find_first_of(" \t\r\n") != std::string::npos;
    const auto query = CreateQuery();
    query->SQL().SetText(isQuery ? Source : "select * from " + Source);
    query->SetUniDirectional(true);
    OpenQry(query.get());
    // Written beside the target and renamed at the end: a failed export leaves no half file behind
    // under the target's name.
    Progress progress("exported");
    std::int64_t rows = 0;
    try {
        ReplaceFile(File, [&](const std::string& TempName) {
            ExportDataSet(query.get(), TempName, [&](std::int64_t done) {
                rows = done;
                progress.Update(done);
            });
        });
    } catch (const EInOutError& e) {
        RaiseInOutError("Cannot write file", File, e.ErrorCode());
    }
    progress.Finish(rows);
    std::cout << rows << " rows exported to " << File << '\n';
}

void RunImport(TODBCDatabase& Db, const std::string& File, const std::string& Table, const std::string& Key,
               bool Update) {
    Progress progress("imported");
    std::int64_t lines = 0;
    const auto report = [&](std::int64_t done) {
        lines = done;
        progress.Update(done);
    };
    // Without a key every line is appended, in batches.
    if (Key.empty()) {
        AppendDataSet(File, Table, report);
    } else {
        ImportDataSet(File, Table, Key, Update ? itUpdateExists : itIgnoreExists, report);
    }
    progress.Finish(lines);
    std::cout << lines << " lines imported into " << Table << '\n';
}

} // namespace quorda::cli
