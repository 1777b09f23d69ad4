// The persisted "Data" property of a parameter collection.
//
// Version 1 (the one written): version and count as 16-bit words, then per parameter: name length
// (one byte), the name, the type byte, and unless the type is ftUnknown a 16-bit data size and the
// native data; then the is-null and bound bytes. Version 2 (read only) widens the count, the name
// length and the data size to 32 bits; version 0 reads like version 1. Little-endian throughout.
#include "quorda/core/odbc_params.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/stream.h"

#include <algorithm>
#include <array>

namespace quorda {
namespace {

constexpr int kMaxDataSize = 2048;

// Reads Count bytes in bounded steps: a corrupt length must not allocate more than the stream holds
// before the read error stops it.
std::string ReadChars(TStream& Stream, std::uint64_t Count) {
    constexpr std::uint64_t kStep = 64 * 1024;
    std::string result;
    while (Count > 0) {
        const std::uint64_t step = std::min(Count, kStep);
        const std::size_t old = result.size();
        result.resize(old + step);
        Stream.ReadBuffer(result.data() + old, static_cast<std::int64_t>(step));
        Count -= step;
    }
    return result;
}

} // namespace

void TODBCParams::DefineProperties(TFiler* Filer) {
    TPersistent::DefineProperties(Filer);
    bool hasData = Count() > 0;
    // An ancestor that is not a parameter collection compares like an empty one.
    if (const auto* ancestor = dynamic_cast<const TODBCParams*>(Filer->Ancestor())) {
        hasData = !IsEqual(ancestor);
    }
    Filer->DefineBinaryProperty(
        "Data", [this](TStream& Stream) { ReadBinaryData(Stream); },
        [this](TStream& Stream) { WriteBinaryData(Stream); }, hasData);
}

void TODBCParams::WriteBinaryData(TStream& Stream) const {
    // The count has 16 bits; more parameters could not be read back.
    if (FItems.size() > 0xFFFF) {
        throw EWriteError(SWriteError);
    }
    Stream.WriteWord(GetVersion());
    Stream.WriteWord(static_cast<std::uint16_t>(FItems.size()));
    std::array<std::uint8_t, kMaxDataSize> buffer{};
    for (const TODBCParam* param : FItems) {
        // Only the low byte of the length is stored, but every character is written: a name longer
        // than 255 characters does not read back.
        Stream.WriteByte(static_cast<std::uint8_t>(param->FName.size()));
        Stream.WriteBuffer(param->FName.data(), static_cast<std::int64_t>(param->FName.size()));
        Stream.WriteByte(param->FDataType);
        if (param->FDataType != ftUnknown) {
            const int size = param->GetDataSize();
            if (size > kMaxDataSize) {
                DatabaseErrorFmt(LoadStr(SODBCParamTooBig), param->FName, kMaxDataSize);
            }
            param->GetData(buffer.data());
            Stream.WriteWord(static_cast<std::uint16_t>(size));
            Stream.WriteBuffer(buffer.data(), size);
        }
        Stream.WriteByte(param->FNull ? 1 : 0);
        Stream.WriteByte(param->FBound ? 1 : 0);
    }
}

void TODBCParams::ReadBinaryData(TStream& Stream) {
    Clear();
    const std::uint16_t version = Stream.ReadWord();
    if (version > 2) {
        // Deliberately unformatted: the message keeps its "%s".
        DatabaseError(LoadStr(SODBCInvalidVersion));
    }
    const bool wide = version == 2;
    const std::uint32_t count = wide ? Stream.ReadDWord() : Stream.ReadWord();
    std::array<std::uint8_t, kMaxDataSize> buffer{};
    for (std::uint32_t i = 0; i < count; ++i) {
        // Appended at once: on a read error the parameters read so far stay in the collection.
        auto* param = new TODBCParam(this);
        const std::uint32_t nameLength = wide ? Stream.ReadDWord() : Stream.ReadByte();
        param->FName = ReadChars(Stream, nameLength);
        // Straight into the member, without the value reset of SetDataType.
        param->FDataType = static_cast<TFieldType>(Stream.ReadByte());
        if (param->FDataType != ftUnknown) {
            const std::uint32_t size = wide ? Stream.ReadDWord() : Stream.ReadWord();
            if (size > static_cast<std::uint32_t>(kMaxDataSize)) {
                DatabaseErrorFmt(LoadStr(SODBCParamTooBig), param->FName, kMaxDataSize);
            }
            buffer.fill(0);
            Stream.ReadBuffer(buffer.data(), size);
            param->SetData(buffer.data(), size);
        }
        param->FNull = Stream.ReadByte() != 0;
        param->FBound = Stream.ReadByte() != 0;
    }
}

} // namespace quorda
