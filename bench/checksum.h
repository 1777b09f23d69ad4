#pragma once

// The one fold every implementation of every workload uses, so that a checksum mismatch between
// raw ODBC, Quorda and QtSql means one of them read or wrote different values.

#include <cmath>
#include <cstdint>
#include <string_view>

namespace quorda::bench {

// Timestamp in the parts every client API can deliver; milliseconds are the precision the data has.
struct TBenchTimestamp {
    int Year = 0;
    int Month = 0;
    int Day = 0;
    int Hour = 0;
    int Minute = 0;
    int Second = 0;
    int Millisecond = 0;
};

// One row of the bench table as read or written by any implementation.
struct TBenchRowView {
    std::int64_t Id = 0;
    std::int64_t Qty = 0;
    double Price = 0;
    std::string_view Name;
    TBenchTimestamp Created;
};

class TChecksum {
public:
    void AddInt(std::int64_t Value) { Mix(static_cast<std::uint64_t>(Value)); }

    // Prices carry two decimals; folding cents keeps the sum immune to the last-bit differences of
    // text-to-double conversions that are not faults.
    void AddPrice(double Value) { Mix(static_cast<std::uint64_t>(std::llround(Value * 100.0))); }

    void AddText(std::string_view Text) {
        Mix(Text.size());
        for (unsigned char c : Text)
            Mix(c);
    }

    void AddTimestamp(const TBenchTimestamp& T) {
        Mix(static_cast<std::uint64_t>(((T.Year * 100 + T.Month) * 100 + T.Day)));
        Mix(static_cast<std::uint64_t>(((T.Hour * 100 + T.Minute) * 100 + T.Second) * 1000 + T.Millisecond));
    }

    void AddRow(const TBenchRowView& Row) {
        AddInt(Row.Id);
        AddInt(Row.Qty);
        AddPrice(Row.Price);
        AddText(Row.Name);
        AddTimestamp(Row.Created);
    }

    std::uint64_t Value() const { return FState; }

private:
    // Order-dependent: a skipped, repeated or swapped row changes the result.
    void Mix(std::uint64_t V) {
        FState = (FState ^ V) * 0x100000001b3ULL;
        FState ^= FState >> 29;
    }

    std::uint64_t FState = 0xcbf29ce484222325ULL;
};

} // namespace quorda::bench
