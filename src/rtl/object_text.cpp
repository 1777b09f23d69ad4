#include "quorda/rtl/object_text.h"

#include "filer_p.h"
#include "quorda/rtl/component.h"
#include "quorda/rtl/extended.h"
#include "quorda/rtl/string_utils.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace quorda {

namespace {

constexpr std::size_t kBytesPerHexLine = 32;

// "SQL.Strings": identifiers joined by dots.
bool IsValidPath(const std::string& Path) {
    std::size_t start = 0;
    for (std::size_t dot = Path.find('.');; dot = Path.find('.', start)) {
        if (!IsValidIdent(Path.substr(start, dot - start))) {
            return false;
        }
        if (dot == std::string::npos) {
            return true;
        }
        start = dot + 1;
    }
}

template <class T>
std::string ShortestText(T Value) {
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), Value);
    std::string text(buffer.data(), result.ptr);
    // A float must not read back as an integer.
    if (text.find_first_of(".e") == std::string::npos) {
        text += ".0";
    }
    return text;
}

std::string QuotedText(const std::string& Value) {
    std::string out;
    bool quoted = false;
    for (const char c : Value) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            if (quoted) {
                out += '\'';
                quoted = false;
            }
            out += '#' + std::to_string(byte);
            continue;
        }
        if (!quoted) {
            out += '\'';
            quoted = true;
        }
        out += c;
        if (c == '\'') {
            out += '\'';
        }
    }
    if (quoted) {
        out += '\'';
    }
    return out.empty() ? "''" : out;
}

std::string CurrencyText(std::int64_t Scaled) {
    const bool negative = Scaled < 0;
    // Through unsigned arithmetic, so that the most negative value has a magnitude too.
    const std::uint64_t magnitude =
        negative ? std::uint64_t{0} - static_cast<std::uint64_t>(Scaled) : static_cast<std::uint64_t>(Scaled);
    std::string fraction = std::to_string(magnitude % 10000);
    fraction.insert(0, 4 - fraction.size(), '0');
    return (negative ? "-" : "") + std::to_string(magnitude / 10000) + "." + fraction + "c";
}

class TBinaryToText {
public:
    TBinaryToText(TStream& Input, TStream& Output) : FReader(Input), FOutput(Output) {}

    void Convert() {
        FReader.ReadSignature();
        Component(0);
    }

private:
    void Write(const std::string& Text) {
        FOutput.WriteBuffer(Text.data(), static_cast<std::int64_t>(Text.size()));
    }
    void NewLine(int Indent) { Write("\n" + std::string(static_cast<std::size_t>(Indent), ' ')); }

    std::string Name(bool Path) {
        std::string name = FReader.ReadStr();
        if (Path ? !IsValidPath(name) : !IsValidIdent(name)) {
            throw EReadError(SInvalidImage);
        }
        return name;
    }

    void Component(int Indent) {
        TNestingGuard guard(FDepth);
        const std::string className = Name(false);
        std::string name = FReader.ReadStr();
        if (!name.empty() && !IsValidIdent(name)) {
            throw EReadError(SInvalidImage);
        }
        Write(std::string(static_cast<std::size_t>(Indent), ' ') + "object " +
              (name.empty() ? className : name + ": " + className));
        Properties(Indent + 2);
        while (!FReader.EndOfList()) {
            Write("\n");
            Component(Indent + 2);
        }
        FReader.ReadListEnd();
        NewLine(Indent);
        Write("end");
        if (Indent == 0) {
            Write("\n");
        }
    }

    void Properties(int Indent) {
        while (!FReader.EndOfList()) {
            const std::string name = Name(true);
            NewLine(Indent);
            Write(name + " = ");
            Value(Indent);
        }
        FReader.ReadListEnd();
    }

    void Value(int Indent) {
        TNestingGuard guard(FDepth);
        switch (FReader.NextValue()) {
        case vaList:
            FReader.ReadListBegin();
            Write("(");
            while (!FReader.EndOfList()) {
                NewLine(Indent + 2);
                Value(Indent + 2);
            }
            FReader.ReadListEnd();
            Write(")");
            break;
        case vaInt8:
        case vaInt16:
        case vaInt32:
        case vaInt64:
            Write(std::to_string(FReader.ReadInt64()));
            break;
        case vaQWord:
            FReader.ReadValue();
            Write(std::to_string(FReader.Stream().ReadQWord()));
            break;
        case vaExtended:
            Write(Finite(FReader.ReadFloat()));
            break;
        case vaSingle:
            Write(Finite(FReader.ReadSingle()) + "s");
            break;
        case vaDate:
            Write(Finite(FReader.ReadDate()) + "d");
            break;
        case vaCurrency:
            Write(CurrencyText(FReader.ReadCurrency()));
            break;
        case vaString:
        case vaLString:
        case vaUTF8String:
        case vaWString:
        case vaUString:
            Write(QuotedText(FReader.ReadString()));
            break;
        case vaIdent:
        case vaFalse:
        case vaTrue:
        case vaNil:
        case vaNull: {
            const std::string ident = FReader.ReadIdent();
            if (!IsValidPath(ident)) {
                throw EReadError(SInvalidPropertyValue);
            }
            Write(ident);
            break;
        }
        case vaBinary:
            Binary(FReader.ReadBinary(), Indent);
            break;
        case vaSet: {
            std::string text = "[";
            for (const std::string& member : FReader.ReadSet()) {
                if (!IsValidIdent(member)) {
                    throw EReadError(SInvalidPropertyValue);
                }
                text += (text.size() > 1 ? ", " : "") + member;
            }
            Write(text + "]");
            break;
        }
        case vaCollection:
            FReader.ReadCollectionBegin();
            Write("<");
            while (!FReader.EndOfList()) {
                FReader.ReadListBegin();
                NewLine(Indent + 2);
                Write("item");
                Properties(Indent + 4);
                NewLine(Indent + 2);
                Write("end");
            }
            FReader.ReadListEnd();
            Write(">");
            break;
        }
    }

    template <class T>
    static std::string Finite(T Value) {
        if (!std::isfinite(Value)) {
            throw EReadError(SInvalidPropertyValue);
        }
        return ShortestText(Value);
    }

    void Binary(const std::string& Bytes, int Indent) {
        static constexpr char kDigits[] = "0123456789ABCDEF";
        Write("{");
        for (std::size_t i = 0; i < Bytes.size(); ++i) {
            if (i % kBytesPerHexLine == 0) {
                NewLine(Indent + 2);
            }
            const auto byte = static_cast<unsigned char>(Bytes[i]);
            const char pair[2] = {kDigits[byte >> 4], kDigits[byte & 15]};
            FOutput.WriteBuffer(pair, 2);
        }
        Write("}");
    }

    TReader FReader;
    TStream& FOutput;
    int FDepth = 0;
};

// ---- text to binary

enum class TToken { End, Ident, Integer, Float, String, Symbol };

class TTextToBinary {
public:
    TTextToBinary(std::string Text, TStream& Output) : FText(std::move(Text)), FWriter(Output) {}

    void Convert() {
        Next();
        FWriter.WriteSignature();
        Object();
    }

private:
    [[noreturn]] void Error(const std::string& Expected) const {
        throw EParserError(FormatMessage("Syntax error on line %d: expected %s", FLine, Expected));
    }

    bool IsKeyword(const char* Word) const { return FToken == TToken::Ident && SameText(FValue, Word); }
    bool IsSymbol(char Symbol) const { return FToken == TToken::Symbol && FValue[0] == Symbol; }

    void ExpectSymbol(char Symbol) {
        if (!IsSymbol(Symbol)) {
            Error(std::string("'") + Symbol + "'");
        }
        Next();
    }

    std::string TakeIdent(const char* What) {
        if (FToken != TToken::Ident) {
            Error(What);
        }
        std::string ident = std::move(FValue);
        Next();
        return ident;
    }

    void WriteName(const std::string& Name, const char* What) {
        if (Name.size() > 255) {
            Error(What);
        }
        FWriter.WriteStr(Name);
    }

    void Object() {
        TNestingGuard guard(FDepth);
        if (!IsKeyword("object")) {
            Error("object");
        }
        Next();
        std::string name;
        std::string className = TakeIdent("a component name or class");
        if (IsSymbol(':')) {
            Next();
            name = std::move(className);
            className = TakeIdent("a class name");
        }
        if (!IsValidIdent(className) || (!name.empty() && !IsValidIdent(name))) {
            Error("a component name and class");
        }
        WriteName(className, "a shorter class name");
        WriteName(name, "a shorter name");
        while (FToken == TToken::Ident && !IsKeyword("object") && !IsKeyword("end")) {
            Property();
        }
        FWriter.WriteListEnd();
        while (IsKeyword("object")) {
            Object();
        }
        FWriter.WriteListEnd();
        if (!IsKeyword("end")) {
            Error("end");
        }
        Next();
    }

    void Property() {
        const std::string name = TakeIdent("a property name");
        if (!IsValidPath(name)) {
            Error("a property name");
        }
        WriteName(name, "a shorter property name");
        ExpectSymbol('=');
        Value();
    }

    void Value() {
        TNestingGuard guard(FDepth);
        switch (FToken) {
        case TToken::Integer:
            Integer();
            return;
        case TToken::Float:
            Float();
            return;
        case TToken::String:
            FWriter.WriteString(FValue);
            Next();
            return;
        case TToken::Ident:
            if (!IsValidPath(FValue)) {
                Error("a value");
            }
            FWriter.WriteIdent(FValue);
            Next();
            return;
        case TToken::End:
            Error("a value");
        case TToken::Symbol:
            break;
        }
        const char symbol = FValue[0];
        if (symbol == '{') {
            // The digits are not tokens: they are read straight from the text.
            Binary();
            return;
        }
        if (symbol != '(' && symbol != '[' && symbol != '<') {
            Error("a value");
        }
        Next();
        switch (symbol) {
        case '(':
            FWriter.WriteListBegin();
            while (!IsSymbol(')')) {
                Value();
            }
            Next();
            FWriter.WriteListEnd();
            return;
        case '[': {
            std::vector<std::string> members;
            while (!IsSymbol(']')) {
                members.push_back(TakeIdent("a set member"));
                if (!IsValidIdent(members.back())) {
                    Error("a set member");
                }
                if (IsSymbol(',')) {
                    Next();
                }
            }
            Next();
            FWriter.WriteSet(members);
            return;
        }
        case '<':
            FWriter.WriteCollectionBegin();
            while (IsKeyword("item")) {
                Next();
                FWriter.WriteListBegin();
                while (FToken == TToken::Ident && !IsKeyword("end")) {
                    Property();
                }
                if (!IsKeyword("end")) {
                    Error("end");
                }
                Next();
                FWriter.WriteListEnd();
            }
            ExpectSymbol('>');
            FWriter.WriteListEnd();
            return;
        }
    }

    void Integer() {
        std::int64_t value = 0;
        const char* first = FValue.data();
        const char* last = first + FValue.size();
        if (*first == '+') {
            ++first;
        }
        if (std::from_chars(first, last, value).ptr == last) {
            FWriter.WriteInteger(value);
        } else if (std::uint64_t unsignedValue = 0; std::from_chars(first, last, unsignedValue).ptr == last) {
            FWriter.WriteValue(vaQWord);
            FWriter.Stream().WriteQWord(unsignedValue);
        } else {
            Error("an integer in range");
        }
        Next();
    }

    void Float() {
        const char suffix = FValue.back();
        std::string_view digits = FValue;
        if (suffix == 's' || suffix == 'd' || suffix == 'c') {
            digits.remove_suffix(1);
        }
        if (digits.front() == '+') {
            digits.remove_prefix(1);
        }
        const char* last = digits.data() + digits.size();
        if (suffix == 'c') {
            FWriter.WriteCurrency(Currency(digits));
        } else if (suffix == 's') {
            float value = 0;
            if (std::from_chars(digits.data(), last, value).ptr != last || !std::isfinite(value)) {
                Error("a single-precision number");
            }
            FWriter.WriteSingle(value);
        } else {
            double value = 0;
            if (std::from_chars(digits.data(), last, value).ptr != last || !std::isfinite(value)) {
                Error("a number");
            }
            if (suffix == 'd') {
                FWriter.WriteDate(value);
            } else {
                FWriter.WriteFloat(value);
            }
        }
        Next();
    }

    // A decimal with at most four fraction digits, scaled by 10000 without rounding.
    std::int64_t Currency(std::string_view Digits) {
        const bool negative = !Digits.empty() && Digits.front() == '-';
        if (negative) {
            Digits.remove_prefix(1);
        }
        const std::size_t dot = Digits.find('.');
        std::string_view whole = Digits.substr(0, dot);
        std::string fraction(dot == std::string_view::npos ? std::string_view() : Digits.substr(dot + 1));
        if (whole.empty() || fraction.size() > 4 ||
            fraction.find_first_not_of("0123456789") != std::string::npos) {
            Error("a currency value with up to four decimals");
        }
        fraction.append(4 - fraction.size(), '0');
        std::uint64_t units = 0;
        std::uint64_t parts = 0;
        if (std::from_chars(whole.data(), whole.data() + whole.size(), units).ptr !=
                whole.data() + whole.size() ||
            std::from_chars(fraction.data(), fraction.data() + 4, parts).ptr != fraction.data() + 4) {
            Error("a currency value");
        }
        constexpr std::uint64_t kLimit = std::uint64_t{1} << 63;
        if (units > (kLimit - parts) / 10000 || units * 10000 + parts > kLimit - (negative ? 0 : 1)) {
            Error("a currency value in range");
        }
        const std::uint64_t scaled = units * 10000 + parts;
        return negative ? static_cast<std::int64_t>(std::uint64_t{0} - scaled)
                        : static_cast<std::int64_t>(scaled);
    }

    void Binary() {
        std::string bytes;
        int high = -1;
        for (; FPos < FText.size() && FText[FPos] != '}'; ++FPos) {
            const char c = FText[FPos];
            if (c == '\n') {
                ++FLine;
                continue;
            }
            if (c == ' ' || c == '\r' || c == '\t') {
                continue;
            }
            int digit = -1;
            if (c >= '0' && c <= '9') {
                digit = c - '0';
            } else if (c >= 'A' && c <= 'F') {
                digit = c - 'A' + 10;
            } else if (c >= 'a' && c <= 'f') {
                digit = c - 'a' + 10;
            } else {
                Error("hexadecimal digits");
            }
            if (high < 0) {
                high = digit;
            } else {
                bytes += static_cast<char>(high * 16 + digit);
                high = -1;
            }
        }
        if (FPos >= FText.size() || high >= 0) {
            Error("an even number of hexadecimal digits and '}'");
        }
        ++FPos;
        FWriter.WriteBinary(bytes.data(), static_cast<std::int64_t>(bytes.size()));
        Next();
    }

    // ---- tokens

    static bool IsIdentStart(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }
    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

    void SkipBlanks() {
        while (FPos < FText.size()) {
            const char c = FText[FPos];
            if (c == '\n') {
                ++FLine;
            } else if (c != ' ' && c != '\r' && c != '\t') {
                return;
            }
            ++FPos;
        }
    }

    void Next() {
        SkipBlanks();
        FValue.clear();
        if (FPos >= FText.size()) {
            FToken = TToken::End;
            return;
        }
        const char c = FText[FPos];
        if (IsIdentStart(c)) {
            while (FPos < FText.size() &&
                   (IsIdentStart(FText[FPos]) || IsDigit(FText[FPos]) || FText[FPos] == '.')) {
                FValue += FText[FPos++];
            }
            FToken = TToken::Ident;
        } else if (IsDigit(c) ||
                   ((c == '-' || c == '+') && FPos + 1 < FText.size() && IsDigit(FText[FPos + 1]))) {
            Number();
        } else if (c == '\'' || c == '#') {
            String();
        } else {
            FValue = c;
            ++FPos;
            FToken = TToken::Symbol;
        }
    }

    void Number() {
        FToken = TToken::Integer;
        FValue += FText[FPos++];
        while (FPos < FText.size()) {
            const char c = FText[FPos];
            if (c == '.' || c == 'e' || c == 'E') {
                FToken = TToken::Float;
            } else if ((c == '-' || c == '+') && (FValue.back() == 'e' || FValue.back() == 'E')) {
                // The exponent's sign.
            } else if (!IsDigit(c)) {
                break;
            }
            FValue += c;
            ++FPos;
        }
        if (FPos < FText.size() && (FText[FPos] == 's' || FText[FPos] == 'd' || FText[FPos] == 'c')) {
            FToken = TToken::Float;
            FValue += FText[FPos++];
        }
    }

    // Quoted parts and #nn characters, joined directly or by '+' (also across lines).
    void String() {
        FToken = TToken::String;
        while (true) {
            if (FPos < FText.size() && FText[FPos] == '\'') {
                ++FPos;
                while (true) {
                    if (FPos >= FText.size() || FText[FPos] == '\n') {
                        Error("the closing quote");
                    }
                    if (FText[FPos] == '\'') {
                        if (FPos + 1 < FText.size() && FText[FPos + 1] == '\'') {
                            FValue += '\'';
                            FPos += 2;
                            continue;
                        }
                        ++FPos;
                        break;
                    }
                    FValue += FText[FPos++];
                }
            } else if (FPos < FText.size() && FText[FPos] == '#') {
                ++FPos;
                unsigned code = 0;
                const char* first = FText.data() + FPos;
                const char* last = FText.data() + FText.size();
                const auto result = std::from_chars(first, last, code);
                if (result.ptr == first || code > 255) {
                    Error("a character code from 0 to 255");
                }
                FPos += static_cast<std::size_t>(result.ptr - first);
                FValue += static_cast<char>(code);
            } else {
                break;
            }
            // A '+' continues the string, possibly on the next line.
            const std::size_t save = FPos;
            const int saveLine = FLine;
            SkipBlanks();
            if (FPos < FText.size() && FText[FPos] == '+') {
                ++FPos;
                SkipBlanks();
                if (FPos >= FText.size() || (FText[FPos] != '\'' && FText[FPos] != '#')) {
                    Error("a string after '+'");
                }
            } else {
                FPos = save;
                FLine = saveLine;
            }
        }
    }

    std::string FText;
    std::size_t FPos = 0;
    int FLine = 1;
    TToken FToken = TToken::End;
    std::string FValue;
    TWriter FWriter;
    int FDepth = 0;
};

} // namespace

void ObjectBinaryToText(TStream& Input, TStream& Output) {
    TBinaryToText(Input, Output).Convert();
}

void ObjectTextToBinary(TStream& Input, TStream& Output) {
    const std::int64_t size = Input.Size() - Input.Position();
    std::string text(static_cast<std::size_t>(std::max<std::int64_t>(size, 0)), '\0');
    Input.ReadBuffer(text.data(), static_cast<std::int64_t>(text.size()));
    TTextToBinary(std::move(text), Output).Convert();
}

} // namespace quorda
