#pragma once

#include "quorda/rtl/exception.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorda {

class QUORDA_API EStreamError : public Exception {
public:
    using Exception::Exception;
};
class QUORDA_API EReadError : public EStreamError {
public:
    using EStreamError::EStreamError;
};
class QUORDA_API EWriteError : public EStreamError {
public:
    using EStreamError::EStreamError;
};
class QUORDA_API EFOpenError : public EStreamError {
public:
    using EStreamError::EStreamError;
};
class QUORDA_API EFCreateError : public EStreamError {
public:
    using EStreamError::EStreamError;
};

inline constexpr char SReadError[] = "Stream read error";
inline constexpr char SWriteError[] = "Stream write error";
inline constexpr char SFOpenError[] = "Cannot open file \"%s\": %s";
inline constexpr char SFCreateError[] = "Cannot create file \"%s\": %s";
inline constexpr char SStreamSetSize[] = "Stream size cannot be changed";

enum TSeekOrigin { soBeginning, soCurrent, soEnd };

// A sequence of bytes with a position. Read and Write move as far as they can and return the number
// of bytes moved; ReadBuffer and WriteBuffer raise when they fall short.
class QUORDA_API TStream {
public:
    TStream() = default;
    TStream(const TStream&) = delete;
    TStream& operator=(const TStream&) = delete;
    virtual ~TStream() = default;

    virtual std::int64_t Read(void* Buffer, std::int64_t Count) = 0;
    virtual std::int64_t Write(const void* Buffer, std::int64_t Count) = 0;
    // Returns the new position.
    virtual std::int64_t Seek(std::int64_t Offset, TSeekOrigin Origin) = 0;

    std::int64_t Position() { return Seek(0, soCurrent); }
    void SetPosition(std::int64_t Value) { Seek(Value, soBeginning); }
    virtual std::int64_t Size();
    virtual void SetSize(std::int64_t NewSize);

    // Raise EReadError / EWriteError unless exactly Count bytes move.
    void ReadBuffer(void* Buffer, std::int64_t Count);
    void WriteBuffer(const void* Buffer, std::int64_t Count);
    // Copies Count bytes from Source's position (0: Source from its beginning to its end); returns
    // the number of bytes copied.
    std::int64_t CopyFrom(TStream& Source, std::int64_t Count);

    // Little-endian fixed-width values.
    std::uint8_t ReadByte();
    std::uint16_t ReadWord();
    std::uint32_t ReadDWord();
    std::uint64_t ReadQWord();
    void WriteByte(std::uint8_t Value);
    void WriteWord(std::uint16_t Value);
    void WriteDWord(std::uint32_t Value);
    void WriteQWord(std::uint64_t Value);

    // Cuts the stream at the current position.
    virtual void Truncate() { SetSize(Position()); }
};

// A stream over a block of memory owned by a descendant.
class QUORDA_API TCustomMemoryStream : public TStream {
public:
    std::int64_t Read(void* Buffer, std::int64_t Count) override;
    std::int64_t Seek(std::int64_t Offset, TSeekOrigin Origin) override;
    std::int64_t Size() override { return FSize; }

    void* Memory() const { return FMemory; }
    // Writes the whole content (not just from the position).
    void SaveToStream(TStream& Stream);
    void SaveToFile(const std::string& FileName);

protected:
    void SetPointer(void* Ptr, std::int64_t ASize);

    void* FMemory = nullptr;
    std::int64_t FSize = 0;
    std::int64_t FPosition = 0;
};

// A growable memory stream. Seeking past the end is allowed; the next write fills the gap with zeros.
class QUORDA_API TMemoryStream : public TCustomMemoryStream {
public:
    TMemoryStream() = default;
    ~TMemoryStream() override = default;

    std::int64_t Write(const void* Buffer, std::int64_t Count) override;
    void SetSize(std::int64_t NewSize) override;
    std::int64_t Capacity() const { return static_cast<std::int64_t>(FData.size()); }

    void Clear();
    // Replace the content with the whole of Stream / the file, position 0.
    void LoadFromStream(TStream& Stream);
    void LoadFromFile(const std::string& FileName);

    // Bytes [0, Size) as a string.
    std::string DataString() const;

protected:
    virtual void SetCapacity(std::int64_t NewCapacity);

private:
    std::vector<char> FData;
};

// A memory stream over a string.
class QUORDA_API TStringStream : public TMemoryStream {
public:
    TStringStream() = default;
    explicit TStringStream(const std::string& S);

    // Reads up to Count bytes from the position.
    std::string ReadString(std::int64_t Count);
    void WriteString(const std::string& S) { WriteBuffer(S.data(), static_cast<std::int64_t>(S.size())); }
};

// File open modes. The share flags are accepted for compatibility and have no effect.
enum : std::uint16_t {
    fmOpenRead = 0x0000,
    fmOpenWrite = 0x0001,
    fmOpenReadWrite = 0x0002,
    fmShareCompat = 0x0000,
    fmShareExclusive = 0x0010,
    fmShareDenyWrite = 0x0020,
    fmShareDenyRead = 0x0030,
    fmShareDenyNone = 0x0040,
    fmCreate = 0xFF00,
};

// A stream over an operating-system file. fmCreate creates or truncates the file for reading and
// writing; the other modes open an existing file.
class QUORDA_API TFileStream : public TStream {
public:
    TFileStream(const std::string& FileName, std::uint16_t Mode);
    ~TFileStream() override;

    std::int64_t Read(void* Buffer, std::int64_t Count) override;
    std::int64_t Write(const void* Buffer, std::int64_t Count) override;
    std::int64_t Seek(std::int64_t Offset, TSeekOrigin Origin) override;
    void SetSize(std::int64_t NewSize) override;

    const std::string& FileName() const { return FFileName; }
    int Handle() const { return FHandle; }

private:
    std::string FFileName;
    int FHandle = -1;
};

} // namespace quorda
