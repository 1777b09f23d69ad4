#include "field_bytes_p.h"
#include "quorda/db/binary_fields.h"
#include "quorda/db/db_consts.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace quorda {

TBinaryField::TBinaryField(TComponent* AOwner) : TField(AOwner) {}

void TBinaryField::CheckTypeSize(int Value) const {
    if (Value < 0) {
        DatabaseErrorFmt(SInvalidFieldSize, Value);
    }
}

bool TBinaryField::GetValue(TBytes& Value) const {
    TBytes data(static_cast<std::size_t>(DataSize()));
    if (data.empty() || !GetData(data.data())) {
        Value.clear();
        return false;
    }
    if (DataType() == ftVarBytes) {
        std::uint16_t length = 0;
        std::memcpy(&length, data.data(), sizeof(length));
        // A length beyond the slot would read past it.
        length = static_cast<std::uint16_t>(std::min<std::size_t>(length, data.size() - sizeof(length)));
        Value.assign(data.begin() + sizeof(length), data.begin() + sizeof(length) + length);
    } else {
        Value = std::move(data);
    }
    return true;
}

TBytes TBinaryField::GetAsBytes() const {
    TBytes value;
    GetValue(value);
    return value;
}

std::string TBinaryField::GetAsString() const {
    TBytes value;
    GetValue(value);
    return std::string(value.begin(), value.end());
}

Variant TBinaryField::GetAsVariant() const {
    TBytes value;
    if (!GetValue(value)) {
        return Variant::Null();
    }
    Variant result = VarArrayCreate(0, static_cast<int>(value.size()) - 1);
    for (std::size_t i = 0; i < value.size(); ++i) {
        result.SetArrayElement(static_cast<int>(i), Variant(static_cast<unsigned char>(value[i])));
    }
    return result;
}

void TBinaryField::DoSetAsBytes(const TBytes& Value) {
    const auto size = static_cast<std::size_t>(std::max(DataSize(), 0));
    // One spare byte keeps the buffer allocated even for a zero-sized field.
    std::vector<std::uint8_t> data(size + 1, 0);
    if (DataType() == ftVarBytes && size >= 2) {
        std::size_t length = std::min(Value.size(), size - 2);
        auto length16 = static_cast<std::uint16_t>(length);
        std::memcpy(data.data(), &length16, sizeof(length16));
        std::copy_n(Value.begin(), length, data.begin() + 2);
    } else if (DataType() != ftVarBytes) {
        std::copy_n(Value.begin(), std::min(Value.size(), size), data.begin());
    }
    SetData(data.data());
}

void TBinaryField::DoSetAsString(const std::string& Value) {
    DoSetAsBytes(TBytes(Value.begin(), Value.end()));
}

TBytes VarArrayToBytes(const Variant& Value) {
    TBytes bytes;
    for (int i = VarArrayLowBound(Value); i <= VarArrayHighBound(Value); ++i) {
        bytes.push_back(static_cast<std::uint8_t>(Value[i].AsInteger()));
    }
    return bytes;
}

void TBinaryField::SetVarValue(const Variant& Value) {
    if (VarIsArray(Value)) {
        DoSetAsBytes(VarArrayToBytes(Value));
    } else {
        DoSetAsString(Value.AsString());
    }
}

TBytesField::TBytesField(TComponent* AOwner) : TBinaryField(AOwner) {
    SetDataType(ftBytes);
    SetSize(16);
}

TVarBytesField::TVarBytesField(TComponent* AOwner) : TBytesField(AOwner) {
    SetDataType(ftVarBytes);
}

} // namespace quorda
