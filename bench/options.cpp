#include "options.h"

#include "edit_common.h"
#include "grid_checksum.h"
#include "params_text.h"
#include "row_generator.h"
#include "transfer_files.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace quorda::bench {

namespace {

std::int64_t ParseCount(const std::string& Name, const std::string& Text, std::int64_t Minimum) {
    std::size_t used = 0;
    std::int64_t value = 0;
    try {
        value = std::stoll(Text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used != Text.size() || Text.empty() || value < Minimum)
        throw std::invalid_argument(Name + " needs a whole number of at least " + std::to_string(Minimum) +
                                    ", not '" + Text + "'");
    return value;
}

TSource ParseSource(const std::string& Text) {
    if (Text == "sqlite")
        return TSource::Sqlite;
    if (Text == "pgsql")
        return TSource::Pgsql;
    if (Text == "mariadb")
        return TSource::Mariadb;
    if (Text == "-")
        return TSource::None;
    throw std::invalid_argument("unknown source '" + Text + "'");
}

std::vector<std::string> SplitList(const std::string& Text) {
    std::vector<std::string> items;
    std::istringstream in(Text);
    std::string item;
    while (std::getline(in, item, ','))
        if (!item.empty())
            items.push_back(item);
    return items;
}

} // namespace

std::string Usage() {
    return "usage: quorda_bench [options]\n"
           "  --rows N          rows in the bench table (default 1000000)\n"
           "  --runs N          timed runs per configuration after one warm-up (default 5)\n"
           "  --only LIST       workloads to run: scan,scroll,count,insert,edit,params,\n"
           "                    export,import,grid\n"
           "  --impl LIST       implementations to run: raw,quorda,view,multi,qtsql,grid\n"
           "  --source S        sqlite, pgsql, mariadb or all (default all)\n"
           "  --quick           small row counts and one run, for a smoke test\n"
           "  --insert-rows N   rows of the insert workload (default 100000)\n"
           "  --iterations N    text assignments of the params workload (default 100000)\n"
           "  --visit N         rows the scroll workload reads forward and back (default 100000)\n"
           "  --jumps N         bookmark jumps of the scroll workload (default 1000)\n"
           "  --sqlite-db FILE  SQLite database file (default bench.db)\n"
           "  --pg-connect STR  PostgreSQL driver connection string (default: $QUORDA_BENCH_PG)\n"
           "  --mariadb-connect STR  MariaDB driver connection string (default: $QUORDA_BENCH_MARIADB)\n"
           "  --results FILE    also write the results as markdown to FILE\n"
           "  --list            list the registered implementations and exit\n"
           "  --instructions N  then count instructions per row of every scan under callgrind,\n"
           "                    N rows each (default 0: not counted)\n";
}

TOptions ParseOptions(const std::vector<std::string>& Args) {
    TOptions o;
    // --quick only changes defaults, so explicit options win wherever they stand.
    if (std::find(Args.begin(), Args.end(), "--quick") != Args.end()) {
        o.Quick = true;
        o.Rows = 2000;
        o.Runs = 1;
        o.InsertRows = 500;
        o.Iterations = 2000;
        o.Visit = 1000;
        o.SmallScan = 1000;
        o.Jumps = 50;
    }
    for (std::size_t i = 0; i < Args.size(); ++i) {
        const std::string& a = Args[i];
        const auto value = [&]() -> const std::string& {
            if (i + 1 >= Args.size())
                throw std::invalid_argument(a + " needs a value");
            return Args[++i];
        };
        if (a == "--quick") {
        } else if (a == "--rows") {
            o.Rows = ParseCount(a, value(), 1);
        } else if (a == "--runs") {
            o.Runs = static_cast<int>(ParseCount(a, value(), 1));
        } else if (a == "--only") {
            o.Only = SplitList(value());
            for (const auto& w : o.Only)
                if (std::find(WorkloadNames().begin(), WorkloadNames().end(), w) == WorkloadNames().end())
                    throw std::invalid_argument("unknown workload '" + w + "'");
        } else if (a == "--impl") {
            o.Impls = SplitList(value());
            for (const auto& impl : o.Impls)
                if (ImplRank(impl) > ImplRank("grid"))
                    throw std::invalid_argument("unknown implementation '" + impl + "'");
        } else if (a == "--source") {
            const std::string& s = value();
            if (s == "all") {
                o.Sqlite = o.Pgsql = o.Mariadb = true;
            } else {
                try {
                    o.ChildContext.Source = ParseSource(s);
                } catch (const std::invalid_argument&) {
                    throw std::invalid_argument("--source takes sqlite, pgsql, mariadb or all, not '" + s +
                                                "'");
                }
                o.Sqlite = s == "sqlite";
                o.Pgsql = s == "pgsql";
                o.Mariadb = s == "mariadb";
            }
        } else if (a == "--insert-rows") {
            o.InsertRows = ParseCount(a, value(), 1);
        } else if (a == "--iterations") {
            o.Iterations = ParseCount(a, value(), 1);
        } else if (a == "--visit") {
            o.Visit = ParseCount(a, value(), 1);
        } else if (a == "--jumps") {
            o.Jumps = static_cast<int>(ParseCount(a, value(), 0));
        } else if (a == "--sqlite-db") {
            o.SqliteDb = value();
        } else if (a == "--pg-connect") {
            o.PgConnect = value();
        } else if (a == "--mariadb-connect") {
            o.MariadbConnect = value();
        } else if (a == "--results") {
            o.Results = value();
        } else if (a == "--instructions") {
            o.InstructionRows = ParseCount(a, value(), 0);
        } else if (a == "--list") {
            o.List = true;
        } else if (a == "--child" && i + 3 < Args.size()) {
            o.Child = true;
            o.ChildWorkload = Args[++i];
            o.ChildImpl = Args[++i];
            o.ChildMode = Args[++i];
        } else if (a == "--child-rows") {
            o.ChildContext.Rows = ParseCount(a, value(), 0);
        } else if (a == "--table-rows") {
            o.ChildContext.TableRows = ParseCount(a, value(), 0);
        } else if (a == "--stream-connect") {
            o.ChildContext.StreamConnect = value();
        } else if (a == "--scroll-connect") {
            o.ChildContext.ScrollConnect = value();
        } else if (a == "--result-fd") {
            o.ResultFd = static_cast<int>(ParseCount(a, value(), 0));
        } else if (a == "--command-fd") {
            o.CommandFd = static_cast<int>(ParseCount(a, value(), 0));
        } else if (a == "--help" || a == "-h") {
            throw std::invalid_argument("");
        } else {
            throw std::invalid_argument("unknown option '" + a + "'");
        }
    }
    if (o.Child) {
        // The child takes the source from its own option; the jump count rides on --jumps.
        o.ChildContext.Jumps = o.Jumps;
    }
    return o;
}

TSourceStrings SqliteStrings(const std::string& DatabaseFile) {
    const std::string base = "Driver=SQLite3;Database=" + DatabaseFile;
    return {base + ";StepAPI=1", base};
}

TSourceStrings PgsqlStrings(const std::string& Base) {
    // Protocol=7.4-1: roll back whole transactions on error instead of wrapping every statement in
    // a savepoint, which otherwise doubles the cost of each insert round trip. BatchSize=1000: send
    // a parameter array of 1,000 rows in one round trip instead of ten (psqlODBC's default is 100).
    const std::string scroll = Base + ";Protocol=7.4-1;BatchSize=1000";
    return {scroll + ";UseDeclareFetch=1;Fetch=1000", scroll};
}

TSourceStrings MariadbStrings(const std::string& Base) {
    // Connector/ODBC 3.1 loads every result whole at execute time; its no-cache option (OPTION=1048576,
    // NO_CACHE=1) changes nothing there, so forward-only reads use the same string.
    return {Base, Base};
}

std::vector<TConfig> PlanConfigs(const TOptions& Options, const TSourceStrings& Sqlite,
                                 const TSourceStrings& Pgsql, const TSourceStrings& Mariadb) {
    struct TSourcePlan {
        TSource Source;
        const TSourceStrings* Strings;
    };
    std::vector<TSourcePlan> sources;
    if (Options.Sqlite)
        sources.push_back({TSource::Sqlite, &Sqlite});
    if (Options.Pgsql)
        sources.push_back({TSource::Pgsql, &Pgsql});
    if (Options.Mariadb)
        sources.push_back({TSource::Mariadb, &Mariadb});

    const auto wanted = [&](const std::string& Workload) {
        return Options.Only.empty() ||
               std::find(Options.Only.begin(), Options.Only.end(), Workload) != Options.Only.end();
    };
    const std::vector<const TImplementation*> impls = SortedImplementations();
    std::vector<TConfig> plan;
    const auto add = [&](const std::string& Workload, TSource Source, const TSourceStrings* Strings,
                         std::int64_t Rows) {
        for (const TImplementation* impl : impls) {
            if (impl->Workload != Workload ||
                (!Options.Impls.empty() &&
                 std::find(Options.Impls.begin(), Options.Impls.end(), impl->Impl) == Options.Impls.end()))
                continue;
            // QODBC's wide-character parameters reach MariaDB Connector/ODBC 3.1 longer than they
            // are ("Data too long for column"): QtSql cannot insert there.
            if (Source == TSource::Mariadb && Workload == "insert" && impl->Impl == "qtsql")
                continue;
            TConfig config;
            config.Impl = impl;
            config.Context.Source = Source;
            if (Strings) {
                config.Context.StreamConnect = Strings->Stream;
                config.Context.ScrollConnect = Strings->Scroll;
            }
            config.Context.Rows = Rows;
            config.Context.TableRows = Options.Rows;
            config.Context.Jumps = Options.Jumps;
            plan.push_back(config);
        }
    };
    for (const std::string& workload : WorkloadNames()) {
        if (!wanted(workload))
            continue;
        if (workload == "params") {
            add(workload, TSource::None, nullptr, Options.Iterations);
            continue;
        }
        for (const TSourcePlan& s : sources) {
            if (workload == "scan") {
                if (Options.SmallScan < Options.Rows)
                    add(workload, s.Source, s.Strings, Options.SmallScan);
                add(workload, s.Source, s.Strings, Options.Rows);
            } else if (workload == "scroll") {
                add(workload, s.Source, s.Strings, std::min(Options.Visit, Options.Rows));
            } else if (workload == "count") {
                add(workload, s.Source, s.Strings, Options.Rows);
            } else if (workload == "export" || workload == "grid") {
                add(workload, s.Source, s.Strings, Options.Rows);
            } else if (workload == "insert" || workload == "import") {
                add(workload, s.Source, s.Strings, Options.InsertRows);
            } else if (workload == "edit") {
                // Every post commits and refreshes: a smoke run edits a tenth of the rows.
                add(workload, s.Source, s.Strings,
                    std::min(Options.Quick ? kEditMaxRows / 10 : kEditMaxRows, Options.Rows));
            }
        }
    }
    return plan;
}

std::uint64_t ExpectedChecksum(const TConfig& Config) {
    const std::string& w = Config.Impl->Workload;
    const TBenchContext& c = Config.Context;
    if (w == "scan" || w == "insert")
        return ExpectedRangeChecksum(1, c.Rows);
    if (w == "import")
        return ExpectedRangeChecksum(1, c.Rows);
    if (w == "export")
        return ExpectedIdChecksum(c.Rows);
    if (w == "scroll")
        return ExpectedScrollChecksum(c.Rows, ScrollJumpTargets(c.Rows, c.Jumps));
    if (w == "edit")
        return ExpectedEditChecksum(c.Rows);
    if (w == "grid")
        return ExpectedGridChecksum(c.Rows);
    if (w == "count") {
        TChecksum sum;
        sum.AddInt(c.Rows);
        return sum.Value();
    }
    return FoldParamNames(kParamsNames);
}

} // namespace quorda::bench
