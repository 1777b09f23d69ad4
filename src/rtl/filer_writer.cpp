#include "quorda/rtl/extended.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/persistent.h"
#include "quorda/rtl/string_utils.h"

#include <bit>
#include <cstring>

namespace quorda {

void TWriter::DefineProperty(const std::string& Name, const TReaderProc& ReadData,
                             const TWriterProc& WriteData, bool HasData) {
    if (HasData && WriteData) {
        WritePropName(Name);
        WriteData(*this);
    }
}

void TWriter::DefineBinaryProperty(const std::string& Name, const TStreamProc& ReadData,
                                   const TStreamProc& WriteData, bool HasData) {
    if (HasData && WriteData) {
        // The length precedes the bytes, so they are collected first.
        TMemoryStream data;
        WriteData(data);
        WritePropName(Name);
        WriteBinary(data.Memory(), data.Size());
    }
}

void TWriter::WriteValue(TValueType Value) {
    Stream().WriteByte(Value);
}

void TWriter::WriteInteger(std::int64_t Value) {
    if (Value >= INT8_MIN && Value <= INT8_MAX) {
        WriteValue(vaInt8);
        Stream().WriteByte(static_cast<std::uint8_t>(Value));
    } else if (Value >= INT16_MIN && Value <= INT16_MAX) {
        WriteValue(vaInt16);
        Stream().WriteWord(static_cast<std::uint16_t>(Value));
    } else if (Value >= INT32_MIN && Value <= INT32_MAX) {
        WriteValue(vaInt32);
        Stream().WriteDWord(static_cast<std::uint32_t>(Value));
    } else {
        WriteValue(vaInt64);
        Stream().WriteQWord(static_cast<std::uint64_t>(Value));
    }
}

void TWriter::WriteBoolean(bool Value) {
    WriteValue(Value ? vaTrue : vaFalse);
}

void TWriter::WriteFloat(double Value) {
    WriteValue(vaExtended);
    const TExtended80 bytes = DoubleToExtended(Value);
    Stream().WriteBuffer(bytes.data(), static_cast<std::int64_t>(bytes.size()));
}

void TWriter::WriteSingle(float Value) {
    WriteValue(vaSingle);
    Stream().WriteDWord(std::bit_cast<std::uint32_t>(Value));
}

void TWriter::WriteDate(double Value) {
    WriteValue(vaDate);
    Stream().WriteQWord(std::bit_cast<std::uint64_t>(Value));
}

void TWriter::WriteCurrency(std::int64_t Scaled) {
    WriteValue(vaCurrency);
    Stream().WriteQWord(static_cast<std::uint64_t>(Scaled));
}

void TWriter::WriteString(const std::string& Value) {
    if (Value.size() <= 255) {
        WriteValue(vaString);
        WriteStr(Value);
        return;
    }
    if (Value.size() > UINT32_MAX) {
        throw EWriteError(SWriteError);
    }
    WriteValue(vaLString);
    Stream().WriteDWord(static_cast<std::uint32_t>(Value.size()));
    Stream().WriteBuffer(Value.data(), static_cast<std::int64_t>(Value.size()));
}

void TWriter::WriteUTF8Str(const std::string& Value) {
    if (Value.size() > UINT32_MAX) {
        throw EWriteError(SWriteError);
    }
    WriteValue(vaUTF8String);
    Stream().WriteDWord(static_cast<std::uint32_t>(Value.size()));
    Stream().WriteBuffer(Value.data(), static_cast<std::int64_t>(Value.size()));
}

void TWriter::WriteIdent(const std::string& Ident) {
    const std::string upper = UpperCase(Ident);
    if (upper == "NIL") {
        WriteValue(vaNil);
    } else if (upper == "FALSE") {
        WriteValue(vaFalse);
    } else if (upper == "TRUE") {
        WriteValue(vaTrue);
    } else if (upper == "NULL") {
        WriteValue(vaNull);
    } else {
        WriteValue(vaIdent);
        WriteStr(Ident);
    }
}

void TWriter::WriteSet(const std::vector<std::string>& Members) {
    WriteValue(vaSet);
    for (const auto& member : Members) {
        if (!member.empty()) {
            WriteStr(member);
        }
    }
    WriteStr(std::string());
}

void TWriter::WriteBinary(const void* Data, std::int64_t Count) {
    if (Count < 0 || Count > static_cast<std::int64_t>(UINT32_MAX)) {
        throw EWriteError(SWriteError);
    }
    WriteValue(vaBinary);
    Stream().WriteDWord(static_cast<std::uint32_t>(Count));
    Stream().WriteBuffer(Data, Count);
}

void TWriter::WriteStr(const std::string& Value) {
    const auto length = static_cast<std::uint8_t>(Value.size() > 255 ? 255 : Value.size());
    Stream().WriteByte(length);
    Stream().WriteBuffer(Value.data(), length);
}

void TWriter::WriteSignature() {
    Stream().WriteBuffer("TPF0", 4);
}

void TWriter::WriteProperties(TPersistent* Instance) {
    WritePropertyList(Instance);
    WriteListEnd();
}

} // namespace quorda
