// Unit tests of the benchmark's own machinery: the data it generates, the fold that compares
// implementations, the child protocol and a group of real children, options and the ratios in the table.

#include "data_setup.h"
#include "harness.h"
#include "options.h"
#include "params_text.h"
#include "raw_odbc.h"
#include "report.h"
#include "row_generator.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <unistd.h>

namespace quorda::bench {
namespace {

TEST(BenchData, CivilDatesAcrossLeapRulesAndTheEpoch) {
    struct Case {
        std::int64_t Days;
        int Y, M, D;
    };
    for (const Case& c : {Case{0, 1970, 1, 1}, Case{-1, 1969, 12, 31}, Case{11016, 2000, 2, 29},
                          Case{11017, 2000, 3, 1}, Case{18628, 2021, 1, 1}, Case{47541, 2100, 3, 1},
                          Case{47540, 2100, 2, 28}, Case{-719468, 0, 3, 1}}) {
        int y = 0, m = 0, d = 0;
        CivilFromDays(c.Days, y, m, d);
        EXPECT_EQ(y * 10000 + m * 100 + d, c.Y * 10000 + c.M * 100 + c.D) << "day " << c.Days;
    }
}

TEST(BenchData, RowsStayInsideTheColumnTypesAndCoverTheirRanges) {
    std::set<std::size_t> lengths;
    std::set<int> millis;
    TBenchRow row;
    for (std::int64_t id = 1; id <= 1'000'000; id += 7) {
        MakeBenchRow(id, row);
        ASSERT_GE(row.Name.size(), 5u);
        ASSERT_LE(row.Name.size(), 40u);
        ASSERT_GE(row.Price, 0.0);
        ASSERT_LT(row.Price, 10000.0);
        const TBenchTimestamp& t = row.Created;
        ASSERT_TRUE(t.Month >= 1 && t.Month <= 12 && t.Day >= 1 && t.Day <= 31 && t.Hour < 24 &&
                    t.Minute < 60 && t.Second < 60 && t.Millisecond < 1000)
            << "row " << id;
        lengths.insert(row.Name.size());
        millis.insert(t.Millisecond);
    }
    EXPECT_EQ(lengths.size(), 36u); // every length from 5 to 40 occurs
    EXPECT_GT(millis.size(), 900u); // milliseconds really vary
}

TEST(BenchData, ChecksumNoticesSwappedSkippedAndAlteredRows) {
    const auto fold = [](const std::vector<std::int64_t>& Ids, bool AlterName = false) {
        TChecksum sum;
        TBenchRow row;
        for (std::int64_t id : Ids) {
            MakeBenchRow(id, row);
            if (AlterName && id == 2)
                row.Name.back() ^= 1;
            sum.AddRow(row.View());
        }
        return sum.Value();
    };
    const std::uint64_t expected = ExpectedRangeChecksum(1, 3);
    EXPECT_EQ(fold({1, 2, 3}), expected);
    EXPECT_NE(fold({1, 3, 2}), expected);
    EXPECT_NE(fold({1, 2}), expected);
    EXPECT_NE(fold({1, 2, 2, 3}), expected);
    EXPECT_NE(fold({1, 2, 3}, true), expected);
}

TEST(BenchData, ScrollTargetsAreRepeatableAndInRange) {
    const auto a = ScrollJumpTargets(500, 1000);
    EXPECT_EQ(a, ScrollJumpTargets(500, 1000));
    ASSERT_EQ(a.size(), 1000u);
    EXPECT_EQ(*std::min_element(a.begin(), a.end()), 1);
    EXPECT_EQ(*std::max_element(a.begin(), a.end()), 500);
    EXPECT_TRUE(ScrollJumpTargets(0, 10).empty());
}

TEST(BenchHarness, MediansAndPairedRatios) {
    EXPECT_DOUBLE_EQ(Median({3, 1, 2}), 2);
    EXPECT_DOUBLE_EQ(Median({4, 1, 3, 2}), 2.5);
    EXPECT_DOUBLE_EQ(Median({}), 0);
    // A spike in one run of one side moves the ratio of the medians (2.2 / 1.5), not the paired one.
    EXPECT_DOUBLE_EQ(PairedRatio({1.1, 2.4, 2.2}, {1.0, 1.5, 2.0}), 1.1);
    // Unequal run counts cannot be paired.
    EXPECT_DOUBLE_EQ(PairedRatio({2, 4}, {1, 2, 3}), 1.5);
}

TEST(BenchHarness, ChildLinesRoundTripAndRejectGarbage) {
    TMeasurement m;
    const auto apply = [&](const std::string& Line, const char* Kind) {
        return ApplyChildLine(Line.substr(0, Line.size() - 1), Kind, m);
    };
    EXPECT_TRUE(apply(FormatReadyLine(1234, 18446744073709551615ULL), "ready"));
    EXPECT_TRUE(apply(FormatRunLine(0.5), "run"));
    EXPECT_TRUE(apply(FormatRunLine(0.125), "run"));
    EXPECT_TRUE(apply(kDoneLine, "done"));
    EXPECT_EQ(m.Error, "");
    EXPECT_EQ(m.RowsHandled, 1234);
    EXPECT_EQ(m.Checksum, 18446744073709551615ULL);
    EXPECT_EQ(m.Seconds, (std::vector<double>{0.5, 0.125}));

    TMeasurement failed;
    EXPECT_FALSE(ApplyChildLine(FormatErrorLine("SQLExecute failed\n[42P01] no table"), "run", failed));
    EXPECT_EQ(failed.Error, "SQLExecute failed [42P01] no table");

    const char* const garbage[][2] = {{"", "ready"},       {"ready 12", "ready"}, {"ready x 1", "ready"},
                                      {"run x", "run"},    {"done", "run"},       {"run 0.5", "ready"},
                                      {"ok 1 2 3", "done"}};
    for (const auto& [line, kind] : garbage) {
        TMeasurement g;
        EXPECT_FALSE(ApplyChildLine(line, kind, g));
        EXPECT_NE(g.Error, "") << "'" << line << "'";
    }
}

// A group through real children of the benchmark program (params needs no database): every child
// reports each round, and one that cannot connect or never starts fails alone, without a hang.
TEST(BenchHarness, GroupOfChildrenReportsEveryRoundAndIsolatesFailures) {
    static const TImplementation raw{"params", "raw", "markers", nullptr};
    static const TImplementation lib{"params", "quorda", "markers", nullptr};
    static const TImplementation noDriver{"scan", "raw", "forward", nullptr};
    static const TImplementation unknown{"params", "nobody", "markers", nullptr};
    const auto config = [](const TImplementation& I) {
        TConfig c{&I, {}};
        c.Context.Rows = 300;
        c.Context.StreamConnect = c.Context.ScrollConnect = "Driver=quorda-no-such-driver";
        return c;
    };
    const auto results = MeasureGroup({config(raw), config(noDriver), config(lib), config(unknown)}, 3,
                                      nullptr, QUORDA_BENCH_EXE);
    ASSERT_EQ(results.size(), 4u);
    for (const TMeasurement* m : {&results[0], &results[2]}) {
        EXPECT_EQ(m->Error, "") << m->Config.Impl->Impl;
        EXPECT_EQ(m->Seconds.size(), 3u);
        EXPECT_EQ(m->RowsHandled, 300);
        EXPECT_EQ(m->Checksum, FoldParamNames(kParamsNames));
        EXPECT_GT(m->PeakRssMb, 0);
    }
    EXPECT_NE(results[1].Error.find("SQLDriverConnect"), std::string::npos) << results[1].Error;
    EXPECT_NE(results[3].Error.find("without a result"), std::string::npos) << results[3].Error;
}

TEST(BenchHarness, ForkedBodyReturnsItsResultOrItsFailure) {
    EXPECT_EQ(RunForked([] { return std::string("driver 1.2"); }), "driver 1.2");
    try {
        RunForked([]() -> std::string { throw std::runtime_error("no table bench"); });
        ADD_FAILURE() << "a throwing body must fail";
    } catch (const TChildError& e) {
        EXPECT_STREQ(e.what(), "no table bench");
    }
    try {
        RunForked([]() -> std::string { _exit(3); });
        ADD_FAILURE() << "a child that dies without a result must fail";
    } catch (const TChildError& e) {
        EXPECT_NE(std::string(e.what()).find("child process failed"), std::string::npos);
    }
}

TEST(BenchOptions, QuickChangesDefaultsOnlyAndValuesAreChecked) {
    const TOptions quick = ParseOptions({"--rows", "50", "--quick"});
    EXPECT_EQ(quick.Rows, 50);
    EXPECT_EQ(quick.Runs, 1);
    EXPECT_LT(quick.InsertRows, 100'000);

    const TOptions only = ParseOptions({"--only", "scan,insert", "--source", "pgsql"});
    EXPECT_EQ(only.Only, (std::vector<std::string>{"scan", "insert"}));
    EXPECT_FALSE(only.Sqlite);
    EXPECT_TRUE(only.Pgsql);

    for (const std::vector<std::string>& bad : {std::vector<std::string>{"--rows", "0"},
                                                {"--rows", "12x"},
                                                {"--runs"},
                                                {"--only", "scan,sort"},
                                                {"--impl", "raw,jdbc"},
                                                {"--source", "mysql"},
                                                {"--frobnicate"}})
        EXPECT_THROW(ParseOptions(bad), std::invalid_argument) << bad[0];
}

TEST(BenchOptions, ChildArgumentsReproduceTheConfiguration) {
    static const TImplementation impl{"scroll", "raw", "scrollable", nullptr};
    TConfig config{&impl, {}};
    config.Context = {TSource::Pgsql, "Driver=A;X=1", "Driver=A", 1000, 5000, 70};
    const TOptions child = ParseOptions(ChildArguments(config, 3));
    EXPECT_TRUE(child.Child);
    EXPECT_EQ(child.ChildWorkload + child.ChildImpl + child.ChildMode, "scrollrawscrollable");
    EXPECT_EQ(child.Runs, 3);
    EXPECT_EQ(child.ChildContext.Source, TSource::Pgsql);
    EXPECT_EQ(child.ChildContext.StreamConnect, "Driver=A;X=1");
    EXPECT_EQ(child.ChildContext.ScrollConnect, "Driver=A");
    EXPECT_EQ(child.ChildContext.Rows, 1000);
    EXPECT_EQ(child.ChildContext.TableRows, 5000);
    EXPECT_EQ(child.ChildContext.Jumps, 70);
}

// Stand-ins for the implementations the program links; the plan only needs their names.
const TRegisterRun fakeScanRaw("scan", "raw", "forward", nullptr);
const TRegisterRun fakeScanQt("scan", "qtsql", "forward", nullptr);
const TRegisterRun fakeInsert("insert", "quorda", "prepared", nullptr);
const TRegisterRun fakeParams("params", "raw", "markers", nullptr);

TEST(BenchOptions, PlanCoversBothScanSizesOnEachSourceAndParamsOnce) {
    const TOptions o = ParseOptions({"--rows", "500000", "--impl", "raw,qtsql"});
    const auto plan =
        PlanConfigs(o, SqliteStrings("a.db"), PgsqlStrings("Driver=P"), MariadbStrings("Driver=M"));
    std::vector<std::string> seen;
    for (const TConfig& c : plan)
        seen.push_back(c.Impl->Workload + "/" + SourceName(c.Context.Source) + "/" +
                       std::to_string(c.Context.Rows) + "/" + c.Impl->Impl);
    EXPECT_EQ(seen, (std::vector<std::string>{
                        "scan/sqlite/100000/raw", "scan/sqlite/100000/qtsql", "scan/sqlite/500000/raw",
                        "scan/sqlite/500000/qtsql", "scan/pgsql/100000/raw", "scan/pgsql/100000/qtsql",
                        "scan/pgsql/500000/raw", "scan/pgsql/500000/qtsql", "scan/mariadb/100000/raw",
                        "scan/mariadb/100000/qtsql", "scan/mariadb/500000/raw", "scan/mariadb/500000/qtsql",
                        "params/-/100000/raw"}));
    EXPECT_EQ(plan[0].Context.StreamConnect, "Driver=SQLite3;Database=a.db;StepAPI=1");
    EXPECT_EQ(plan[0].Context.TableRows, 500000);
    // raw and QtSql of one scan size and source are measured side by side.
    EXPECT_EQ(GroupConfigs(plan), (std::vector<std::vector<std::size_t>>{
                                      {0, 1}, {2, 3}, {4, 5}, {6, 7}, {8, 9}, {10, 11}, {12}}));

    // A table no larger than the small scan is scanned once.
    const auto small =
        PlanConfigs(ParseOptions({"--rows", "100000", "--only", "scan", "--source", "sqlite"}),
                    SqliteStrings("a.db"), PgsqlStrings("Driver=P"), MariadbStrings("Driver=M"));
    EXPECT_EQ(small.size(), 2u);
}

TEST(BenchReport, RatiosCompareWithRawOfTheSameModeAndWithQtSql) {
    static const TImplementation raw{"scan", "raw", "forward", nullptr};
    static const TImplementation rawBlock{"scan", "raw", "block", nullptr};
    static const TImplementation lib{"scan", "quorda", "forward", nullptr};
    static const TImplementation qt{"scan", "qtsql", "forward", nullptr};
    const auto measured = [](const TImplementation& I, std::int64_t Rows, double Seconds) {
        TMeasurement m;
        m.Config.Impl = &I;
        m.Config.Context.Source = TSource::Sqlite;
        m.Config.Context.Rows = Rows;
        m.Seconds = {Seconds};
        m.MedianSeconds = Seconds;
        m.RowsHandled = Rows;
        return m;
    };
    TMeasurement broken = measured(lib, 1000, 0);
    broken.Error = "boom";
    const auto table =
        BuildTable({measured(raw, 1000, 2.0), measured(rawBlock, 1000, 1.0), measured(lib, 1000, 2.4),
                    measured(qt, 1000, 6.0), measured(raw, 10, 100.0), broken});
    ASSERT_EQ(table.size(), 6u);
    EXPECT_EQ(table[2].Cells[6], "417");  // rows/s
    EXPECT_EQ(table[2].Cells[8], "1.20"); // against raw forward, not raw block
    EXPECT_EQ(table[2].Cells[9], "2.50"); // QtSql takes 2.5 times as long
    EXPECT_EQ(table[1].Cells[9], "6.00");
    EXPECT_EQ(table[4].Cells[9], "-"); // no QtSql measurement at that row count
    EXPECT_TRUE(table[5].Failed);
}

TEST(BenchReport, ConnectionStringsKeepFileNamesOnly) {
    EXPECT_EQ(WithoutFolders("Driver=SQLite3;Database=/srv/build/bench-env/bench.db;StepAPI=1"),
              "Driver=SQLite3;Database=bench.db;StepAPI=1");
    const std::string pg = "Driver=PostgreSQL ANSI;Servername=127.0.0.1;Port=5432;Database=quorda_test";
    EXPECT_EQ(WithoutFolders(pg), pg);
}

// The data setup against the SQLite driver: a table is reused only while it reads back exactly as
// generated, and a filled table passes the same check.
TEST(BenchSetup, ReusesOnlyATableThatReadsBackAsGenerated) {
    const char* envDir = std::getenv("QUORDA_TEST_ENV_DIR");
    const std::filesystem::path file =
        std::filesystem::path(envDir ? envDir : "/tmp") / ("bench-setup-" + std::to_string(getpid()) + ".db");
    std::filesystem::remove(file);
    const std::string connect = SqliteStrings(file.string()).Scroll;
    std::ostringstream log;

    EXPECT_TRUE(EnsureBenchTable(connect, 1500, log));  // created
    EXPECT_FALSE(EnsureBenchTable(connect, 1500, log)); // kept
    {
        TRawConnection connection(connect);
        connection.Exec("update bench set name = 'changed' where id = 700");
    }
    EXPECT_TRUE(EnsureBenchTable(connect, 1500, log)); // one altered value forces a refill
    EXPECT_TRUE(EnsureBenchTable(connect, 1200, log)); // so does another row count
    {
        TRawConnection connection(connect);
        std::int64_t rows = 0;
        EXPECT_EQ(ScanChecksum(connection, BenchSelect(1200, 1200), &rows), ExpectedRangeChecksum(1, 1200));
        EXPECT_EQ(rows, 1200);
    }
    std::filesystem::remove(file);
}

} // namespace
} // namespace quorda::bench
