#include "quorda_common.h"

#include <quorda/db/field.h>
#include <quorda/db/fields.h>
#include <quorda/rtl/datetime.h>
#include <quorda/rtl/strings.h>

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

} // namespace quorda::bench
