#include "quorda/rtl/strings.h"

#include "quorda/rtl/filer.h"
#include "quorda/rtl/stream.h"
#include "quorda/rtl/string_utils.h"

namespace quorda {

namespace {

// Holds an update open for the lifetime of a compound operation, also when it throws.
class TUpdateScope {
public:
    explicit TUpdateScope(TStrings& Strings) : FStrings(Strings) { FStrings.BeginUpdate(); }
    ~TUpdateScope() {
        try {
            FStrings.EndUpdate();
        } catch (...) {
            // A change handler failing here must not replace the exception already in flight.
        }
    }
    TUpdateScope(const TUpdateScope&) = delete;
    TUpdateScope& operator=(const TUpdateScope&) = delete;

private:
    TStrings& FStrings;
};

bool NeedsQuotes(const std::string& S, char Delimiter, char QuoteChar, bool Strict) {
    for (char c : S) {
        if (c == '\0' || c == QuoteChar || c == Delimiter ||
            (!Strict && static_cast<unsigned char>(c) <= ' ')) {
            return true;
        }
    }
    return false;
}

} // namespace

void TStrings::Error(const char* Msg, int Data) const {
    throw EStringListError(FormatMessage(Msg, Data));
}

int TStrings::CompareStrings(std::string_view S1, std::string_view S2) const {
    return FCaseSensitive ? CompareStr(S1, S2) : CompareText(S1, S2);
}

void TStrings::Put(int Index, const std::string& S) {
    TUpdateScope update(*this);
    TObject* object = GetObject(Index);
    Delete(Index);
    InsertObject(Index, S, object);
}

int TStrings::Add(const std::string& S) {
    const int index = Count();
    Insert(index, S);
    return index;
}

int TStrings::AddObject(const std::string& S, TObject* AObject) {
    const int index = Add(S);
    PutObject(index, AObject);
    return index;
}

void TStrings::InsertObject(int Index, const std::string& S, TObject* AObject) {
    Insert(Index, S);
    PutObject(Index, AObject);
}

void TStrings::Exchange(int Index1, int Index2) {
    TUpdateScope update(*this);
    TObject* object = GetObject(Index1);
    std::string text = Get(Index1);
    PutObject(Index1, GetObject(Index2));
    Put(Index1, Get(Index2));
    PutObject(Index2, object);
    Put(Index2, text);
}

void TStrings::Move(int CurIndex, int NewIndex) {
    if (CurIndex == NewIndex) {
        return;
    }
    TUpdateScope update(*this);
    TObject* object = GetObject(CurIndex);
    std::string text = Get(CurIndex);
    // Detach the object first so that a list owning its objects does not delete it.
    PutObject(CurIndex, nullptr);
    Delete(CurIndex);
    InsertObject(NewIndex, text, object);
}

void TStrings::AddStrings(const TStrings& Source) {
    TUpdateScope update(*this);
    const int count = Source.Count();
    for (int i = 0; i < count; ++i) {
        AddObject(Source.Get(i), Source.GetObject(i));
    }
}

int TStrings::IndexOf(std::string_view S) const {
    const int count = Count();
    for (int i = 0; i < count; ++i) {
        if (CompareStrings(Get(i), S) == 0) {
            return i;
        }
    }
    return -1;
}

int TStrings::IndexOfName(std::string_view Name) const {
    const int count = Count();
    for (int i = 0; i < count; ++i) {
        const std::string line = Get(i);
        const auto separator = line.find(FNameValueSeparator);
        if (separator != std::string::npos &&
            CompareStrings(std::string_view(line).substr(0, separator), Name) == 0) {
            return i;
        }
    }
    return -1;
}

int TStrings::IndexOfObject(const TObject* AObject) const {
    const int count = Count();
    for (int i = 0; i < count; ++i) {
        if (GetObject(i) == AObject) {
            return i;
        }
    }
    return -1;
}

std::string TStrings::Names(int Index) const {
    const std::string line = Get(Index);
    const auto separator = line.find(FNameValueSeparator);
    return separator == std::string::npos ? std::string() : line.substr(0, separator);
}

std::string TStrings::Values(std::string_view Name) const {
    const int index = IndexOfName(Name);
    return index < 0 ? std::string() : ValueFromIndex(index);
}

void TStrings::SetValues(const std::string& Name, const std::string& Value) {
    int index = IndexOfName(Name);
    if (!Value.empty()) {
        if (index < 0) {
            Add(Name + FNameValueSeparator + Value);
        } else {
            Put(index, Name + FNameValueSeparator + Value);
        }
    } else if (index >= 0) {
        Delete(index);
    }
}

std::string TStrings::ValueFromIndex(int Index) const {
    const std::string line = Get(Index);
    const auto separator = line.find(FNameValueSeparator);
    return separator == std::string::npos ? std::string() : line.substr(separator + 1);
}

void TStrings::SetValueFromIndex(int Index, const std::string& Value) {
    Put(Index, Names(Index) + FNameValueSeparator + Value);
}

std::string TStrings::Text() const {
    const int count = Count();
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += Get(i);
        result += FLineBreak;
    }
    return result;
}

void TStrings::SetText(const std::string& Value) {
    TUpdateScope update(*this);
    Clear();
    std::size_t start = 0;
    while (start < Value.size()) {
        std::size_t end = Value.find_first_of("\r\n", start);
        if (end == std::string::npos) {
            Add(Value.substr(start));
            break;
        }
        Add(Value.substr(start, end - start));
        start = end + ((Value[end] == '\r' && end + 1 < Value.size() && Value[end + 1] == '\n') ? 2 : 1);
    }
}

std::string TStrings::DelimitedText() const {
    return JoinDelimited(FDelimiter, FQuoteChar, FStrictDelimiter);
}

void TStrings::SetDelimitedText(const std::string& Value) {
    SplitDelimited(Value, FDelimiter, FQuoteChar, FStrictDelimiter);
}

// CommaText always writes with a comma, double quotes and blanks quoted; reading keeps the list's
// StrictDelimiter, as the classic list does.
std::string TStrings::CommaText() const {
    return JoinDelimited(',', '"', false);
}

void TStrings::SetCommaText(const std::string& Value) {
    SplitDelimited(Value, ',', '"', FStrictDelimiter);
}

std::string TStrings::JoinDelimited(char Delimiter, char Quote, bool Strict) const {
    const int count = Count();
    std::string result;
    for (int i = 0; i < count; ++i) {
        const std::string item = Get(i);
        if (Quote != '\0' && NeedsQuotes(item, Delimiter, Quote, Strict)) {
            result += AnsiQuotedStr(item, Quote);
        } else {
            result += item;
        }
        if (i < count - 1) {
            result += Delimiter;
        }
    }
    // A single empty item would vanish without its quotes.
    if (result.empty() && count == 1 && Quote != '\0') {
        result.assign(2, Quote);
    }
    return result;
}

void TStrings::SplitDelimited(const std::string& Value, char Delimiter, char Quote, bool Strict) {
    TUpdateScope update(*this);
    Clear();
    const std::size_t length = Value.size();
    auto isBlank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
    auto skipBlanks = [&](std::size_t& i) {
        if (!Strict) {
            while (i < length && isBlank(Value[i])) {
                ++i;
            }
        }
    };
    std::size_t i = 0;
    bool notFirst = false;
    while (i < length) {
        if (notFirst && Value[i] == Delimiter) {
            ++i;
        }
        skipBlanks(i);
        if (i >= length) {
            if (notFirst) {
                Add(std::string());
            }
        } else if (Quote != '\0' && Value[i] == Quote) {
            std::string item;
            std::size_t j = i + 1;
            while (j < length) {
                if (Value[j] == Quote) {
                    if (j + 1 < length && Value[j + 1] == Quote) {
                        item += Quote;
                        j += 2;
                        continue;
                    }
                    break;
                }
                item += Value[j++];
            }
            Add(item);
            i = j + 1;
        } else {
            std::size_t j = i;
            while (j < length && (Strict || !isBlank(Value[j])) && Value[j] != Delimiter) {
                ++j;
            }
            Add(Value.substr(i, j - i));
            i = j;
        }
        skipBlanks(i);
        notFirst = true;
    }
}

void TStrings::Assign(const TPersistent* Source) {
    const auto* source = dynamic_cast<const TStrings*>(Source);
    if (source == nullptr) {
        TPersistent::Assign(Source);
        return;
    }
    if (source == this) {
        return;
    }
    TUpdateScope update(*this);
    Clear();
    FLineBreak = source->FLineBreak;
    FDelimiter = source->FDelimiter;
    FQuoteChar = source->FQuoteChar;
    FNameValueSeparator = source->FNameValueSeparator;
    FStrictDelimiter = source->FStrictDelimiter;
    AddStrings(*source);
}

void TStrings::DefineProperties(TFiler* Filer) {
    bool hasData = Count() > 0;
    if (Filer->Ancestor() != nullptr) {
        const auto* ancestor = dynamic_cast<const TStrings*>(Filer->Ancestor());
        hasData = ancestor == nullptr || !Equals(*ancestor);
    }
    Filer->DefineProperty(
        "Strings",
        [this](TReader& Reader) {
            Reader.ReadListBegin();
            {
                TUpdateScope update(*this);
                Clear();
                while (!Reader.EndOfList()) {
                    Add(Reader.ReadString());
                }
            }
            Reader.ReadListEnd();
        },
        [this](TWriter& Writer) {
            Writer.WriteListBegin();
            const int count = Count();
            for (int i = 0; i < count; ++i) {
                Writer.WriteString(Get(i));
            }
            Writer.WriteListEnd();
        },
        hasData);
}

bool TStrings::Equals(const TStrings& Other) const {
    const int count = Count();
    if (count != Other.Count()) {
        return false;
    }
    for (int i = 0; i < count; ++i) {
        if (Get(i) != Other.Get(i)) {
            return false;
        }
    }
    return true;
}

void TStrings::BeginUpdate() {
    if (FUpdateCount == 0) {
        SetUpdateState(true);
    }
    ++FUpdateCount;
}

void TStrings::EndUpdate() {
    if (FUpdateCount > 0) {
        --FUpdateCount;
    }
    if (FUpdateCount == 0) {
        SetUpdateState(false);
    }
}

void TStrings::SaveToStream(TStream& Stream) const {
    const std::string text = Text();
    Stream.WriteBuffer(text.data(), static_cast<std::int64_t>(text.size()));
}

void TStrings::LoadFromStream(TStream& Stream) {
    const std::int64_t available = Stream.Size() - Stream.Position();
    std::string text(static_cast<std::size_t>(available > 0 ? available : 0), '\0');
    text.resize(static_cast<std::size_t>(Stream.Read(text.data(), static_cast<std::int64_t>(text.size()))));
    // A UTF-8 byte order mark written by other tools is not part of the first line.
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        text.erase(0, 3);
    }
    SetText(text);
}

void TStrings::SaveToFile(const std::string& FileName) const {
    TFileStream stream(FileName, fmCreate);
    SaveToStream(stream);
}

void TStrings::LoadFromFile(const std::string& FileName) {
    TFileStream stream(FileName, fmOpenRead | fmShareDenyWrite);
    LoadFromStream(stream);
}

std::vector<std::string> TStrings::ToVector() const {
    std::vector<std::string> result;
    const int count = Count();
    result.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        result.push_back(Get(i));
    }
    return result;
}

} // namespace quorda
