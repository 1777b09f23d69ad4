#pragma once

#include "quorda/rtl/stream.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quorda {

class TPersistent;
class TComponent;
class TReader;
class TWriter;
struct TPropInfo;

// Tags of the binary property stream, in their persisted numbering (one byte each).
enum TValueType : std::uint8_t {
    vaNull,
    vaList,
    vaInt8,
    vaInt16,
    vaInt32,
    vaExtended,
    vaString,
    vaIdent,
    vaFalse,
    vaTrue,
    vaBinary,
    vaSet,
    vaLString,
    vaNil,
    vaCollection,
    vaSingle,
    vaCurrency,
    vaDate,
    vaWString,
    vaInt64,
    vaUTF8String,
    vaUString,
    vaQWord,
};

inline constexpr char SInvalidPropertyValue[] = "Invalid property value";
inline constexpr char SUnknownProperty[] = "Property %s does not exist";
inline constexpr char SClassNotFound[] = "Class %s not found";
inline constexpr char SUnresolvedReference[] = "Unresolved reference to %s";
inline constexpr char SReadContext[] = "%s at offset %s: expected %s";

using TReaderProc = std::function<void(TReader& Reader)>;
using TWriterProc = std::function<void(TWriter& Writer)>;
using TStreamProc = std::function<void(TStream& Stream)>;

// What readers and writers share: the stream, the root component and the ancestor against which
// HasData decisions are made.
class QUORDA_API TFiler {
public:
    explicit TFiler(TStream& Stream) : FStream(Stream) {}
    TFiler(const TFiler&) = delete;
    TFiler& operator=(const TFiler&) = delete;
    virtual ~TFiler() = default;

    TStream& Stream() const { return FStream; }
    TPersistent* Ancestor() const { return FAncestor; }
    void SetAncestor(TPersistent* Value) { FAncestor = Value; }
    TComponent* Root() const { return FRoot; }
    void SetRoot(TComponent* Value) { FRoot = Value; }

    // Declares a property stored by ReadData/WriteData; HasData tells the writer whether to store it.
    virtual void DefineProperty(const std::string& Name, const TReaderProc& ReadData,
                                const TWriterProc& WriteData, bool HasData) = 0;
    // The same for raw bytes, stored as vaBinary.
    virtual void DefineBinaryProperty(const std::string& Name, const TStreamProc& ReadData,
                                      const TStreamProc& WriteData, bool HasData) = 0;

private:
    TStream& FStream;
    TPersistent* FAncestor = nullptr;
    TComponent* FRoot = nullptr;
};

// Writes tagged values to the stream.
class QUORDA_API TWriter : public TFiler {
public:
    explicit TWriter(TStream& Stream) : TFiler(Stream) {}

    void DefineProperty(const std::string& Name, const TReaderProc& ReadData, const TWriterProc& WriteData,
                        bool HasData) override;
    void DefineBinaryProperty(const std::string& Name, const TStreamProc& ReadData,
                              const TStreamProc& WriteData, bool HasData) override;

    void WriteValue(TValueType Value);
    // The smallest of vaInt8, vaInt16, vaInt32 and vaInt64 that holds the value.
    void WriteInteger(std::int64_t Value);
    void WriteBoolean(bool Value);
    // vaExtended with the 10-byte extended layout.
    void WriteFloat(double Value);
    void WriteSingle(float Value);
    // vaDate with an 8-byte double.
    void WriteDate(double Value);
    // vaCurrency with the 8-byte scaled integer (value * 10000).
    void WriteCurrency(std::int64_t Scaled);
    // vaString for up to 255 bytes, otherwise vaLString with a 32-bit length; UTF-8 bytes.
    void WriteString(const std::string& Value);
    // vaUTF8String with a 32-bit length.
    void WriteUTF8Str(const std::string& Value);
    // vaIdent, or vaNil/vaFalse/vaTrue/vaNull for those identifiers (any case).
    void WriteIdent(const std::string& Ident);
    // vaSet followed by the member names and an empty name.
    void WriteSet(const std::vector<std::string>& Members);
    // vaBinary with a 32-bit length and the bytes.
    void WriteBinary(const void* Data, std::int64_t Count);
    void WriteListBegin() { WriteValue(vaList); }
    void WriteListEnd() { WriteValue(vaNull); }
    void WriteCollectionBegin() { WriteValue(vaCollection); }
    // A length byte and at most 255 bytes, no tag (longer text is cut at 255 bytes).
    void WriteStr(const std::string& Value);
    // The name with the path of the sub-object being written ("SQL." + "Strings").
    void WritePropName(const std::string& Name);
    // The classic form signature "TPF0".
    void WriteSignature();

    // Writes Instance's published properties (in declaration order, skipping defaults and those
    // not stored), then its defined properties (those with HasData), as name/value pairs and the
    // terminating vaNull.
    virtual void WriteProperties(TPersistent* Instance);

    // The signature and Root with everything it lists as children (GetChildren).
    void WriteRootComponent(TComponent* Root);
    // One component: class name, name, properties, children and the terminating vaNull. Raises
    // EWriteError for a class the reader would not know (not registered).
    void WriteComponent(TComponent* Component);

    std::int64_t Position() { return Stream().Position(); }

private:
    // Published and defined properties of Instance, without the terminating vaNull.
    void WritePropertyList(TPersistent* Instance);
    std::string FPropPath;
};

// Reads tagged values from the stream; a value of the wrong kind raises EReadError
// "Invalid property value", a short stream "Stream read error".
class QUORDA_API TReader : public TFiler {
public:
    explicit TReader(TStream& Stream) : TFiler(Stream) {}

    void DefineProperty(const std::string& Name, const TReaderProc& ReadData, const TWriterProc& WriteData,
                        bool HasData) override;
    void DefineBinaryProperty(const std::string& Name, const TStreamProc& ReadData,
                              const TStreamProc& WriteData, bool HasData) override;

    TValueType ReadValue();
    // The next tag without consuming it.
    TValueType NextValue();
    // Steps back over the tag just read.
    void UndoRead();

    // vaInt8/16/32.
    std::int32_t ReadInteger();
    // vaInt8/16/32/64.
    std::int64_t ReadInt64();
    bool ReadBoolean();
    // vaExtended, vaSingle, vaDate or an integer.
    double ReadFloat();
    float ReadSingle();
    double ReadDate();
    std::int64_t ReadCurrency();
    // vaString, vaLString, vaUTF8String, vaWString and vaUString (UTF-16 converted to UTF-8).
    std::string ReadString();
    // vaIdent, and "nil", "False", "True", "Null" for their own tags.
    std::string ReadIdent();
    std::vector<std::string> ReadSet();
    // Bytes of a vaBinary value.
    std::string ReadBinary();
    void ReadListBegin() { CheckValue(vaList); }
    void ReadListEnd() { CheckValue(vaNull); }
    void ReadCollectionBegin() { CheckValue(vaCollection); }
    bool EndOfList() { return NextValue() == vaNull; }
    std::string ReadStr();
    std::string ReadPropName() { return ReadStr(); }
    // Raises EReadError "Invalid stream format" unless the stream starts with the signature.
    void ReadSignature();
    // Skips one value of any kind, lists and collections included.
    void SkipValue();

    // Reads name/value pairs up to and including the terminating vaNull; each name goes to the
    // instance's matching DefineProperty/DefineBinaryProperty (names compare case-insensitively).
    // An unknown name raises EReadError "Property <name> does not exist". A name may be a path
    // through published sub-objects ("SQL.Strings"); published properties are set through their
    // setters; references to components are kept until FixupReferences.
    virtual void ReadProperties(TPersistent* Instance);

    // Reads the signature and one component tree. Into Root when given (its class name in the stream
    // is not checked, its name is set from the stream), else into a new component of the class the
    // stream names. Components are created by registered class name, owned by the component that
    // holds them in the stream; references are resolved once everything is read, then each component's
    // Loaded runs in reading order. On any failure every component created so far is freed, Root keeps
    // its name and leaves the loading state, and EReadError messages tell the offset and what was
    // expected there.
    TComponent* ReadRootComponent(TComponent* Root);
    // Sets the component references read so far, looked up by name in Root (or Root itself).
    // Raises EReadError for a name that is not there.
    void FixupReferences();

protected:
    // Reads one name and its value into Instance.
    virtual void ReadProperty(TPersistent* Instance);
    void CheckValue(TValueType Expected);
    [[noreturn]] void PropValueError();

private:
    struct TFixup {
        TPersistent* Instance;
        const TPropInfo* Property;
        std::string Name;
    };
    TComponent* ReadComponent(TComponent* Owner, TComponent* Existing);
    void ReadPublishedValue(TPersistent* Instance, const TPropInfo& Property);
    // Records what the reader looks for next, for the error message.
    void Expect(std::string What);

    std::string FPropName;
    bool FPropHandled = false;
    int FSkipDepth = 0;
    int FComponentDepth = 0;
    std::string FExpected;
    std::vector<TFixup> FFixups;
    std::vector<TComponent*> FLoaded;
    std::vector<TComponent*> FCreated;
};

inline constexpr char SInvalidImage[] = "Invalid stream format";

} // namespace quorda
