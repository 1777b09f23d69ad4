#include "quorda_common.h"

#include <chrono>
#include <optional>
#include <quorda/db/field.h>
#include <quorda/db/fields.h>
#include <quorda/rtl/datetime.h>
#include <quorda/rtl/strings.h>
#include <string_view>

namespace quorda::bench {

TQuordaConnection::TQuordaConnection(const std::string& ConnectString)
    : FDatabase(std::make_unique<TODBCDatabase>(nullptr)) {
    FDatabase->SetDatabaseName("quorda_bench");
    FDatabase->SetConnectStyle(csDriverConnect);
    FDatabase->SetDriverConnectOption(dcoDriverNoPrompt);
    FDatabase->SetConnectStr(ConnectString);
    FDatabase->Open();
}

TQuordaConnection::~TQuordaConnection() = default;

std::unique_ptr<TODBCQuery> TQuordaConnection::NewQuery(const std::string& Sql) {
    auto query = std::make_unique<TODBCQuery>(nullptr);
    query->SetODBCDatabase(FDatabase.get());
    query->SQL().SetText(Sql);
    return query;
}

TBenchFields::TBenchFields(TDataSet& DataSet) {
    static constexpr std::array<const char*, 5> kNames{"id", "qty", "price", "name", "created"};
    for (std::size_t i = 0; i < kNames.size(); ++i)
        FFields[i] = DataSet.FieldByName(kNames[i]);
}

void TBenchFields::Fold(TChecksum& Sum) const {
    const std::string name = FFields[3]->AsString();
    std::uint16_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, msec = 0;
    DecodeDateTime(FFields[4]->AsDateTime(), year, month, day, hour, minute, second, msec);
    Sum.AddRow({FFields[0]->AsInteger(),
                FFields[1]->AsInteger(),
                FFields[2]->AsFloat(),
                name,
                {year, month, day, hour, minute, second, msec}});
}

void TBenchFields::FoldViews(TChecksum& Sum) const {
    using namespace std::chrono;
    const auto stamp = FFields[4]->As<std::optional<TLocalMSecs>>().value_or(TLocalMSecs{});
    const auto day = floor<days>(stamp);
    const year_month_day date{day};
    const hh_mm_ss time{stamp - day};
    Sum.AddRow({FFields[0]->As<std::optional<std::int64_t>>().value_or(0),
                FFields[1]->As<std::optional<std::int64_t>>().value_or(0),
                FFields[2]->As<std::optional<double>>().value_or(0),
                FFields[3]->As<std::optional<std::string_view>>().value_or(std::string_view()),
                {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
                 static_cast<int>(static_cast<unsigned>(date.day())), static_cast<int>(time.hours().count()),
                 static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                 static_cast<int>(time.subseconds().count())}});
}

} // namespace quorda::bench
