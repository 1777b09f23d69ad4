#include "filer_p.h"
#include "quorda/rtl/extended.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/persistent.h"
#include "quorda/rtl/string_utils.h"
#include "string_utils_utf8_p.h"

#include <bit>

namespace quorda {

namespace {

// Raises the stream read error unless Count more bytes are available, so that a damaged length
// never turns into a huge allocation.
void RequireBytes(TStream& Stream, std::int64_t Count) {
    if (Count < 0 || Stream.Size() - Stream.Position() < Count) {
        throw EReadError(SReadError);
    }
}

std::string ReadBytes(TStream& Stream, std::int64_t Count) {
    RequireBytes(Stream, Count);
    std::string result(static_cast<std::size_t>(Count), '\0');
    Stream.ReadBuffer(result.data(), Count);
    return result;
}

void SkipBytes(TStream& Stream, std::int64_t Count) {
    RequireBytes(Stream, Count);
    Stream.Seek(Count, soCurrent);
}

std::string Utf16ToUtf8(TStream& Stream, std::uint32_t Units) {
    RequireBytes(Stream, std::int64_t{Units} * 2);
    std::string result;
    result.reserve(Units);
    for (std::uint32_t i = 0; i < Units; ++i) {
        char32_t c = Stream.ReadWord();
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < Units) {
            const std::int64_t position = Stream.Position();
            const char32_t low = Stream.ReadWord();
            if (low >= 0xDC00 && low <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            } else {
                Stream.SetPosition(position);
                c = 0xFFFD;
            }
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            c = 0xFFFD;
        }
        utf8::Encode(c, result);
    }
    return result;
}

} // namespace

void TReader::PropValueError() {
    throw EReadError(SInvalidPropertyValue);
}

TValueType TReader::ReadValue() {
    const std::uint8_t tag = Stream().ReadByte();
    if (tag > vaQWord) {
        UndoRead();
        PropValueError();
    }
    return static_cast<TValueType>(tag);
}

TValueType TReader::NextValue() {
    const TValueType value = ReadValue();
    UndoRead();
    return value;
}

void TReader::UndoRead() {
    Stream().Seek(-1, soCurrent);
}

void TReader::CheckValue(TValueType Expected) {
    if (ReadValue() != Expected) {
        UndoRead();
        PropValueError();
    }
}

std::int32_t TReader::ReadInteger() {
    switch (ReadValue()) {
    case vaInt8:
        return static_cast<std::int8_t>(Stream().ReadByte());
    case vaInt16:
        return static_cast<std::int16_t>(Stream().ReadWord());
    case vaInt32:
        return static_cast<std::int32_t>(Stream().ReadDWord());
    default:
        UndoRead();
        PropValueError();
    }
}

std::int64_t TReader::ReadInt64() {
    if (NextValue() == vaInt64) {
        ReadValue();
        return static_cast<std::int64_t>(Stream().ReadQWord());
    }
    return ReadInteger();
}

bool TReader::ReadBoolean() {
    switch (ReadValue()) {
    case vaTrue:
        return true;
    case vaFalse:
        return false;
    default:
        UndoRead();
        PropValueError();
    }
}

double TReader::ReadFloat() {
    switch (NextValue()) {
    case vaExtended: {
        ReadValue();
        TExtended80 bytes{};
        Stream().ReadBuffer(bytes.data(), static_cast<std::int64_t>(bytes.size()));
        return ExtendedToDouble(bytes);
    }
    case vaSingle:
        return ReadSingle();
    case vaDate:
        return ReadDate();
    default:
        return static_cast<double>(ReadInt64());
    }
}

float TReader::ReadSingle() {
    CheckValue(vaSingle);
    return std::bit_cast<float>(Stream().ReadDWord());
}

double TReader::ReadDate() {
    CheckValue(vaDate);
    return std::bit_cast<double>(Stream().ReadQWord());
}

std::int64_t TReader::ReadCurrency() {
    CheckValue(vaCurrency);
    return static_cast<std::int64_t>(Stream().ReadQWord());
}

std::string TReader::ReadString() {
    switch (ReadValue()) {
    case vaString:
        return ReadStr();
    case vaLString:
    case vaUTF8String:
        return ReadBytes(Stream(), Stream().ReadDWord());
    case vaWString:
    case vaUString:
        return Utf16ToUtf8(Stream(), Stream().ReadDWord());
    default:
        UndoRead();
        PropValueError();
    }
}

std::string TReader::ReadIdent() {
    switch (ReadValue()) {
    case vaIdent:
        return ReadStr();
    case vaFalse:
        return "False";
    case vaTrue:
        return "True";
    case vaNil:
        return "nil";
    case vaNull:
        return "Null";
    default:
        UndoRead();
        PropValueError();
    }
}

std::vector<std::string> TReader::ReadSet() {
    CheckValue(vaSet);
    std::vector<std::string> members;
    for (std::string member = ReadStr(); !member.empty(); member = ReadStr()) {
        members.push_back(std::move(member));
    }
    return members;
}

std::string TReader::ReadBinary() {
    CheckValue(vaBinary);
    return ReadBytes(Stream(), Stream().ReadDWord());
}

std::string TReader::ReadStr() {
    return ReadBytes(Stream(), Stream().ReadByte());
}

void TReader::ReadSignature() {
    char signature[4] = {};
    if (Stream().Read(signature, 4) != 4 || std::string(signature, 4) != "TPF0") {
        throw EReadError(SInvalidImage);
    }
}

void TReader::SkipValue() {
    TNestingGuard guard(FSkipDepth);
    switch (ReadValue()) {
    case vaNull:
    case vaFalse:
    case vaTrue:
    case vaNil:
        break;
    case vaList:
        while (!EndOfList()) {
            SkipValue();
        }
        ReadListEnd();
        break;
    case vaInt8:
        SkipBytes(Stream(), 1);
        break;
    case vaInt16:
        SkipBytes(Stream(), 2);
        break;
    case vaInt32:
    case vaSingle:
        SkipBytes(Stream(), 4);
        break;
    case vaExtended:
        SkipBytes(Stream(), 10);
        break;
    case vaCurrency:
    case vaDate:
    case vaInt64:
    case vaQWord:
        SkipBytes(Stream(), 8);
        break;
    case vaString:
    case vaIdent:
        SkipBytes(Stream(), Stream().ReadByte());
        break;
    case vaBinary:
    case vaLString:
    case vaUTF8String:
        SkipBytes(Stream(), Stream().ReadDWord());
        break;
    case vaWString:
    case vaUString:
        SkipBytes(Stream(), std::int64_t{Stream().ReadDWord()} * 2);
        break;
    case vaSet:
        while (!ReadStr().empty()) {
        }
        break;
    case vaCollection:
        // Items: an optional order index, then a property list each.
        while (!EndOfList()) {
            const TValueType next = NextValue();
            if (next == vaInt8 || next == vaInt16 || next == vaInt32) {
                SkipValue();
            }
            ReadListBegin();
            while (!EndOfList()) {
                ReadPropName();
                SkipValue();
            }
            ReadListEnd();
        }
        ReadListEnd();
        break;
    }
}

void TReader::DefineProperty(const std::string& Name, const TReaderProc& ReadData,
                             const TWriterProc& WriteData, bool HasData) {
    if (!FPropHandled && ReadData && SameText(Name, FPropName)) {
        FPropHandled = true;
        ReadData(*this);
    }
}

void TReader::DefineBinaryProperty(const std::string& Name, const TStreamProc& ReadData,
                                   const TStreamProc& WriteData, bool HasData) {
    if (!FPropHandled && ReadData && SameText(Name, FPropName)) {
        FPropHandled = true;
        TMemoryStream data;
        const std::string bytes = ReadBinary();
        data.WriteBuffer(bytes.data(), static_cast<std::int64_t>(bytes.size()));
        data.SetPosition(0);
        ReadData(data);
    }
}

void TReader::ReadProperties(TPersistent* Instance) {
    while (!EndOfList()) {
        ReadProperty(Instance);
    }
    ReadListEnd();
}

} // namespace quorda
