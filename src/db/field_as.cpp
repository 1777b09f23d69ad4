// The typed reads of field_as.h that are not written inline.

#include "quorda/db/field_as.h"

#include "quorda/db/dataset.h"

#include <cmath>
#include <cstring>

namespace quorda {

namespace {

TLocalMSecs LocalMSecs(std::int64_t Day, std::int64_t MSecs) {
    return TLocalMSecs{std::chrono::milliseconds{(Day - detail::kEpochDayNumber) * MSecsPerDay + MSecs}};
}

} // namespace

namespace detail {

std::optional<TDateTime> ReadDateTimeSlot(const TField& Field) {
    const TFieldDataView view = Field.DataView();
    if (!IsDateTimeSlot(view, Field.DataType())) {
        return TFieldAsAccessor<double, &TField::AsFloat>::Read(Field);
    }
    if (view.Data == nullptr) {
        return std::nullopt;
    }
    return SlotDateTime(view, Field.DataType());
}

std::optional<TLocalMSecs> ReadLocalMSecs(const TField& Field) {
    const TFieldType type = Field.DataType();
    const TFieldDataView view = Field.DataView();
    if (IsDateTimeSlot(view, type)) {
        if (view.Data == nullptr) {
            return std::nullopt;
        }
        switch (type) {
        case ftDate:
            return LocalMSecs(LoadNative<std::int32_t>(view.Data), 0);
        case ftTime:
            // A time alone reads as a time on day zero of TDateTime, as AsDateTime gives it.
            return LocalMSecs(DateDelta, LoadNative<std::int32_t>(view.Data));
        default:
            return LocalMSecs(0, static_cast<std::int64_t>(std::trunc(LoadNative<double>(view.Data))));
        }
    }
    if (Field.IsNull()) {
        return std::nullopt;
    }
    const TTimeStamp stamp = DateTimeToTimeStamp(Field.AsDateTime());
    return LocalMSecs(stamp.Date, stamp.Time);
}

} // namespace detail

std::optional<std::string_view> TFieldAs<std::string_view>::ReadText(const TField& Field) {
    if (Field.IsNull()) {
        return std::nullopt;
    }
    Field.FViewText = Field.AsString();
    return std::string_view(Field.FViewText);
}

} // namespace quorda
