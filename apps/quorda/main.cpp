// quorda: the data sources, tables and rows of an ODBC connection from the shell, and whole tables to
// and from the comma-separated text files of the library's export and import.

#include "commands.h"
#include "connection.h"
#include "quorda/core/connection_string.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/tools/query_helpers.h"
#include "quorda/tools/text_transfer.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <iostream>

namespace {

using namespace quorda;
using namespace quorda::cli;

constexpr int kFailure = 1;

// The driver's diagnostics, the line of a failing import, and a non-zero exit code.
int Report(const ConnectionOptions& Connection) {
    try {
        throw;
    } catch (const EODBCError& e) {
        // The message already holds the driver's text; the codes follow on a line of their own.
        std::cerr << "quorda: " << e.Message() << "\n  SQLSTATE " << e.SQLState() << ", native error "
                  << e.NativeError() << '\n';
    } catch (const std::exception& e) {
        std::cerr << "quorda: " << e.what() << '\n';
    }
    try {
        throw;
    } catch (const TImportLineInfo& info) {
        std::cerr << "  at line " << info.Line() << " of the file\n";
    } catch (...) {
    }
    if (!Connection.ConnectionString.empty()) {
        std::cerr << "  connection: " << MaskConnectionPassword(Connection.ConnectionString) << '\n';
    }
    return kFailure;
}

std::string DefaultHelp() {
    return "With neither -d nor -c, quorda opens the embedded SQLite database " + DefaultDatabaseFile() +
           " (set QUORDA_DATABASE to use another file).";
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"quorda: lists data sources, runs SQL and moves whole tables to and from text files over "
                 "ODBC.",
                 "quorda"};
    app.footer(DefaultHelp() + "\nRun 'quorda <command> --help' for the options of a command.\n");
    app.require_subcommand(1);

    ConnectionOptions connection;
    auto* dsn = app.add_option("-d,--dsn", connection.Dsn, "Data source name to connect to");
    app.add_option("-u,--user", connection.User, "User name for -d")->needs(dsn);
    app.add_option("-P,--password", connection.Password, "Password for -d")->needs(dsn);
    app.add_option("-c,--connect", connection.ConnectionString,
                   "Driver connection string, e.g. \"Driver=SQLite3;Database=shop.db\"")
        ->excludes(dsn);

    std::function<void(TODBCDatabase*)> run;
    bool needsConnection = true;

    auto* dsns = app.add_subcommand("dsns", "List the data sources the driver manager knows");
    dsns->callback([&] {
        needsConnection = false;
        run = [](TODBCDatabase*) { ListDsns(); };
    });
    auto* drivers = app.add_subcommand("drivers", "List the installed ODBC drivers");
    drivers->callback([&] {
        needsConnection = false;
        run = [](TODBCDatabase*) { ListDrivers(); };
    });

    app.add_subcommand("tables", "List the tables and views of the connection")->callback([&] {
        run = [](TODBCDatabase* db) { ListTables(*db); };
    });

    std::string table;
    auto* columns = app.add_subcommand("columns", "List the columns of a table with their types");
    columns->add_option("TABLE", table, "Table name")->required();
    columns->callback([&] { run = [&](TODBCDatabase* db) { ListColumns(*db, table); }; });

    QueryOptions query;
    auto* select = app.add_subcommand("query", "Run a query and print its rows");
    select->add_option("SQL", query.Sql, "The query; parameters are written :name")->required();
    select->add_option("-p,--param", query.Params,
                       "Parameter value as name=value (repeatable); whole numbers "
                       "are bound as integers, anything else as text");
    select->add_flag("--csv", query.Csv,
                     "Print CSV (header line, RFC 4180 quoting, NULL as an empty field) "
                     "instead of an aligned table");
    select->callback([&] { run = [&](TODBCDatabase* db) { RunQuery(*db, query); }; });

    auto* exec = app.add_subcommand("exec", "Run a statement and print the number of rows it affected");
    exec->add_option("SQL", query.Sql, "The statement; parameters are written :name")->required();
    exec->add_option("-p,--param", query.Params, "Parameter value as name=value (repeatable)");
    exec->callback([&] { run = [&](TODBCDatabase* db) { RunExec(*db, query); }; });

    std::string source, file;
    auto* exporter = app.add_subcommand(
        "export", "Write a table or a query to a text file: a header line of column names, then one line "
                  "per row, numbers bare, other values quoted, lines ending in CR LF");
    exporter->add_option("SOURCE", source, "Table name, or a query (any text with a blank)")->required();
    exporter
        ->add_option("FILE", file,
                     "Target file; written to a temporary file beside it and renamed "
                     "when complete, so a failed export leaves no partial file")
        ->required();
    exporter->callback([&] { run = [&](TODBCDatabase* db) { RunExport(*db, source, file); }; });

    std::string key;
    bool update = false;
    auto* importer = app.add_subcommand(
        "import",
        "Insert the rows of a file written by export into a table, all or nothing in one transaction");
    importer->add_option("FILE", file, "File written by export")->required();
    importer->add_option("TABLE", table, "Target table")->required();
    importer->add_option(
        "--key", key,
        "Condition that finds an existing row, with parameters named like the file's columns, "
        "e.g. \"where id = :id\"; rows found are skipped. Without it every line is appended");
    importer->add_flag("--update", update, "Replace the rows --key finds instead of skipping them")
        ->needs(importer->get_option("--key"));
    importer->callback([&] { run = [&](TODBCDatabase* db) { RunImport(*db, file, table, key, update); }; });

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    }

    try {
        std::unique_ptr<TODBCDatabase> db;
        if (needsConnection) {
            db = Connect(connection);
            DataBase = db.get();
        }
        run(db.get());
        DataBase = nullptr;
        return 0;
    } catch (...) {
        DataBase = nullptr;
        return Report(connection);
    }
}
