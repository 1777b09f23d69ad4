#pragma once

#include "quorda/rtl/exception.h"
#include "quorda/rtl/persistent.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorda {

class TStream;
class TStringsIterator;
class TStringsNameValues;

class QUORDA_API EStringListError : public Exception {
public:
    using Exception::Exception;
};

inline constexpr char SListIndexError[] = "List index (%d) out of bounds";
inline constexpr char SDuplicateString[] = "String list does not allow duplicates";
inline constexpr char SSortedListError[] = "Operation not allowed on sorted list";

enum TDuplicates { dupIgnore, dupAccept, dupError };

// An indexed list of strings, each with an optional associated object. Descendants supply the
// storage (Count, Get, Insert, Delete, Clear and the object accessors); everything else works on top.
class QUORDA_API TStrings : public TPersistent {
public:
    TStrings() = default;
    ~TStrings() override = default;

    std::string ClassName() const override { return "TStrings"; }

    virtual int Count() const = 0;
    virtual std::string Get(int Index) const = 0;
    // Replaces the string at Index, keeping its object.
    virtual void Put(int Index, const std::string& S);
    virtual TObject* GetObject(int Index) const { return nullptr; }
    virtual void PutObject(int Index, TObject* AObject) {}

    std::string Strings(int Index) const { return Get(Index); }
    void SetStrings(int Index, const std::string& S) { Put(Index, S); }
    std::string operator[](int Index) const { return Get(Index); }
    TObject* Objects(int Index) const { return GetObject(Index); }
    void SetObjects(int Index, TObject* AObject) { PutObject(Index, AObject); }

    virtual int Add(const std::string& S);
    virtual int AddObject(const std::string& S, TObject* AObject);
    void Append(const std::string& S) { Add(S); }
    virtual void Insert(int Index, const std::string& S) = 0;
    void InsertObject(int Index, const std::string& S, TObject* AObject);
    virtual void Delete(int Index) = 0;
    virtual void Clear() = 0;
    virtual void Exchange(int Index1, int Index2);
    virtual void Move(int CurIndex, int NewIndex);
    void AddStrings(const TStrings& Source);

    // Searches with CompareStrings (case-insensitive unless CaseSensitive); -1 when absent.
    virtual int IndexOf(std::string_view S) const;
    int IndexOfName(std::string_view Name) const;
    int IndexOfObject(const TObject* AObject) const;

    // Name=Value lines (the separator is NameValueSeparator).
    std::string Names(int Index) const;
    std::string Values(std::string_view Name) const;
    // Sets or adds Name=Value; an empty Value deletes the line.
    void SetValues(const std::string& Name, const std::string& Value);
    std::string ValueFromIndex(int Index) const;
    void SetValueFromIndex(int Index, const std::string& Value);

    // Every line followed by LineBreak. SetText splits on CR, LF and CRLF.
    virtual std::string Text() const;
    virtual void SetText(const std::string& Value);
    std::string CommaText() const;
    void SetCommaText(const std::string& Value);
    std::string DelimitedText() const;
    void SetDelimitedText(const std::string& Value);

    const std::string& LineBreak() const { return FLineBreak; }
    void SetLineBreak(const std::string& Value) { FLineBreak = Value; }
    char Delimiter() const { return FDelimiter; }
    void SetDelimiter(char Value) { FDelimiter = Value; }
    char QuoteChar() const { return FQuoteChar; }
    void SetQuoteChar(char Value) { FQuoteChar = Value; }
    char NameValueSeparator() const { return FNameValueSeparator; }
    void SetNameValueSeparator(char Value) { FNameValueSeparator = Value; }
    // With a strict delimiter only Delimiter separates items; otherwise spaces do too.
    bool StrictDelimiter() const { return FStrictDelimiter; }
    void SetStrictDelimiter(bool Value) { FStrictDelimiter = Value; }
    bool CaseSensitive() const { return FCaseSensitive; }
    virtual void SetCaseSensitive(bool Value) { FCaseSensitive = Value; }

    // Copies strings, objects and the text settings of another TStrings.
    void Assign(const TPersistent* Source) override;
    // Persists the lines as the list property "Strings": stored when the list differs from the
    // ancestor's, or without an ancestor when it is not empty.
    void DefineProperties(TFiler* Filer) override;
    // Same strings in the same order (objects are not compared).
    bool Equals(const TStrings& Other) const;

    // Nested; the change notification is held back until the outermost EndUpdate.
    void BeginUpdate();
    void EndUpdate();
    int UpdateCount() const { return FUpdateCount; }

    // Text as UTF-8 bytes with the LineBreak of this list.
    virtual void SaveToStream(TStream& Stream) const;
    // Replaces the content with the text of the stream from its position to its end.
    virtual void LoadFromStream(TStream& Stream);
    void SaveToFile(const std::string& FileName) const;
    void LoadFromFile(const std::string& FileName);

    std::vector<std::string> ToVector() const;

    // Range-for over the lines, by value: for (const std::string& line : list); NameValues() gives
    // the name/value pairs: for (const auto& [name, value] : list.NameValues()) (strings_range.h).
    TStringsIterator begin() const;
    TStringsIterator end() const;
    TStringsNameValues NameValues() const;

protected:
    // Called by BeginUpdate (true) and by the outermost EndUpdate (false).
    virtual void SetUpdateState(bool Updating) {}
    // Case-insensitive (CompareText) unless CaseSensitive (CompareStr).
    virtual int CompareStrings(std::string_view S1, std::string_view S2) const;
    [[noreturn]] void Error(const char* Msg, int Data) const;

private:
    std::string JoinDelimited(char Delimiter, char Quote, bool Strict) const;
    void SplitDelimited(const std::string& Value, char Delimiter, char Quote, bool Strict);

    std::string FLineBreak = "\n";
    char FDelimiter = ',';
    char FQuoteChar = '"';
    char FNameValueSeparator = '=';
    bool FStrictDelimiter = false;
    bool FCaseSensitive = false;
    int FUpdateCount = 0;
};

class TStringList;

// Compare function of CustomSort: negative, zero or positive for the items at Index1 and Index2.
using TStringListSortCompare = std::function<int(TStringList* List, int Index1, int Index2)>;

// The string list with its own storage: sorting, duplicate rules, change events and optional
// ownership of the associated objects.
class QUORDA_API TStringList : public TStrings {
public:
    TStringList() = default;
    explicit TStringList(bool OwnsObjects) : FOwnsObjects(OwnsObjects) {}
    ~TStringList() override;

    std::string ClassName() const override { return "TStringList"; }

    int Count() const override { return static_cast<int>(FList.size()); }
    std::string Get(int Index) const override;
    // Not allowed on a sorted list.
    void Put(int Index, const std::string& S) override;
    TObject* GetObject(int Index) const override;
    void PutObject(int Index, TObject* AObject) override;

    // On a sorted list the string goes to its sorted place and Duplicates applies.
    int Add(const std::string& S) override;
    int AddObject(const std::string& S, TObject* AObject) override;
    // Not allowed on a sorted list.
    void Insert(int Index, const std::string& S) override;
    void Delete(int Index) override;
    void Clear() override;
    void Exchange(int Index1, int Index2) override;
    void Move(int CurIndex, int NewIndex) override;
    int IndexOf(std::string_view S) const override;

    // Binary search of a sorted list: true when found, Index is the match or the insertion point.
    bool Find(std::string_view S, int& Index) const;
    virtual void Sort();
    virtual void CustomSort(const TStringListSortCompare& Compare);

    bool Sorted() const { return FSorted; }
    void SetSorted(bool Value);
    TDuplicates Duplicates() const { return FDuplicates; }
    void SetDuplicates(TDuplicates Value) { FDuplicates = Value; }
    void SetCaseSensitive(bool Value) override;
    // When set, the list deletes the objects of lines it deletes, clears or outlives.
    bool OwnsObjects() const { return FOwnsObjects; }
    void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }

    TNotifyEvent OnChanging;
    TNotifyEvent OnChange;

protected:
    void SetUpdateState(bool Updating) override;
    virtual void Changing();
    virtual void Changed();
    virtual void InsertItem(int Index, const std::string& S, TObject* AObject);

private:
    struct TStringItem {
        std::string FString;
        TObject* FObject = nullptr;
    };

    void CheckIndex(int Index) const;
    void ExchangeItems(int Index1, int Index2);
    TStringItem& Item(int Index) const { return *FList[static_cast<std::size_t>(Index)]; }

    // Items are held by pointer so that inserting into a long sorted list moves only pointers.
    // The list owns them.
    std::vector<TStringItem*> FList;
    TDuplicates FDuplicates = dupIgnore;
    bool FSorted = false;
    bool FOwnsObjects = false;
};

} // namespace quorda

#include "quorda/rtl/strings_range.h"
