#include "row_generator.h"

#include <random>

namespace quorda::bench {

namespace {

constexpr std::string_view kAlphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr std::int64_t kBaseDay = 18628; // 2021-01-01
constexpr std::int64_t kStepMs = 60017;  // a little over a minute, so milliseconds vary

} // namespace

void CivilFromDays(std::int64_t Days, int& Year, int& Month, int& Day) {
    // Count in 400-year eras starting on 0000-03-01, where leap days fall at the end of a year.
    const std::int64_t z = Days + 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const std::int64_t doe = z - era * 146097;
    const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const std::int64_t mp = (5 * doy + 2) / 153;
    Day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    Month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    Year = static_cast<int>(yoe + era * 400 + (Month <= 2 ? 1 : 0));
}

void MakeBenchRow(std::int64_t Id, TBenchRow& Row) {
    Row.Id = Id;
    Row.Qty = (Id * 7919) % 10007;
    Row.Price = static_cast<double>((Id * 104729) % 1000000) / 100.0;

    const std::size_t length = 5 + static_cast<std::size_t>((Id * 31) % 36);
    Row.Name.resize(length);
    for (std::size_t k = 0; k < length; ++k)
        Row.Name[k] =
            kAlphabet[static_cast<std::size_t>(Id + static_cast<std::int64_t>(k) * 7) % kAlphabet.size()];

    const std::int64_t ms = Id * kStepMs;
    const std::int64_t msOfDay = ms % 86400000;
    CivilFromDays(kBaseDay + ms / 86400000, Row.Created.Year, Row.Created.Month, Row.Created.Day);
    Row.Created.Hour = static_cast<int>(msOfDay / 3600000);
    Row.Created.Minute = static_cast<int>(msOfDay / 60000 % 60);
    Row.Created.Second = static_cast<int>(msOfDay / 1000 % 60);
    Row.Created.Millisecond = static_cast<int>(msOfDay % 1000);
}

std::vector<TBenchRow> GenerateRows(std::int64_t Count) {
    std::vector<TBenchRow> rows(static_cast<std::size_t>(Count));
    for (std::int64_t id = 1; id <= Count; ++id)
        MakeBenchRow(id, rows[static_cast<std::size_t>(id - 1)]);
    return rows;
}

std::uint64_t ExpectedRangeChecksum(std::int64_t First, std::int64_t Last) {
    TChecksum sum;
    TBenchRow row;
    for (std::int64_t id = First; id <= Last; ++id) {
        MakeBenchRow(id, row);
        sum.AddRow(row.View());
    }
    return sum.Value();
}

std::vector<std::int64_t> ScrollJumpTargets(std::int64_t Visited, int Count) {
    std::vector<std::int64_t> targets;
    if (Visited < 1)
        return targets;
    std::mt19937_64 random(20240601);
    targets.reserve(static_cast<std::size_t>(Count));
    for (int i = 0; i < Count; ++i)
        targets.push_back(static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(Visited)) + 1);
    return targets;
}

std::uint64_t ExpectedScrollChecksum(std::int64_t Visited, const std::vector<std::int64_t>& Targets) {
    TChecksum sum;
    TBenchRow row;
    for (std::int64_t id = 1; id <= Visited; ++id) {
        MakeBenchRow(id, row);
        sum.AddRow(row.View());
    }
    for (std::int64_t id = Visited - 1; id >= 1; --id) {
        MakeBenchRow(id, row);
        sum.AddRow(row.View());
    }
    for (std::int64_t id : Targets) {
        MakeBenchRow(id, row);
        sum.AddRow(row.View());
    }
    return sum.Value();
}

} // namespace quorda::bench
