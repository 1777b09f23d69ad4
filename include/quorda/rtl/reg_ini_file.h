#pragma once

#include "quorda/rtl/exception.h"
#include "quorda/rtl/ini_document.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace quorda {

class TStrings;

// Raised when settings cannot be written (folder, lock, write, flush or rename failed).
class QUORDA_API ERegistryException : public Exception {
public:
    using Exception::Exception;
};

// Per-user settings addressed by a registry-style key path ("Software\Acme\Orders"), presented as an
// INI file: sections hold named values. On this platform the key path is one INI file under the
// user's configuration folder: $XDG_CONFIG_HOME (when absolute), else ~/.config, then "quorda/", each
// part of the key path ("\" or "/" separated) a folder and the last part the file name + ".ini".
//
// Reads look at the file as it is now and return the default on anything missing or unreadable.
// Every write locks the file (an advisory lock on "<file>.lock" beside it), re-reads it, applies
// the change and replaces it atomically (temporary file in the same folder, flush, rename), so a
// crash, a full disk or a second writer never leaves a half-written or mixed file. Between
// BeginUpdate and EndUpdate the lock is held and the writes of the batch replace the file once; any
// other object writing the same file meanwhile waits for EndUpdate, also in the same thread.
class QUORDA_API TRegIniFile {
public:
    explicit TRegIniFile(std::string FileName);
    // An update still open is abandoned: its changes are not written.
    ~TRegIniFile();
    TRegIniFile(const TRegIniFile&) = delete;
    TRegIniFile& operator=(const TRegIniFile&) = delete;

    // The key path given at construction.
    const std::string& FileName() const { return FFileName; }
    // The file that holds it.
    const std::filesystem::path& Path() const { return FPath; }

    // The folder under which every key path lives ($XDG_CONFIG_HOME or ~/.config, then quorda).
    static std::filesystem::path ConfigFolder();
    // The file of a key path: separators become folders, "." and ".." parts and parts that could
    // meet a settings file's own name are escaped so that no key path leaves the folder or collides.
    static std::filesystem::path PathOfKey(std::string_view KeyPath);

    std::string ReadString(const std::string& Section, const std::string& Ident,
                           const std::string& Default) const;
    // Decimal or hexadecimal ("$1F", "0x1F") text; anything else gives the default.
    std::int32_t ReadInteger(const std::string& Section, const std::string& Ident,
                             std::int32_t Default) const;
    // An integer, non-zero meaning True.
    bool ReadBool(const std::string& Section, const std::string& Ident, bool Default) const;
    void WriteString(const std::string& Section, const std::string& Ident, const std::string& Value);
    void WriteInteger(const std::string& Section, const std::string& Ident, std::int32_t Value);
    // Written as 1 or 0.
    void WriteBool(const std::string& Section, const std::string& Ident, bool Value);

    // The key names of a section; the section names; Name=Value lines of a section.
    void ReadSection(const std::string& Section, TStrings& Strings) const;
    void ReadSections(TStrings& Strings) const;
    void ReadSectionValues(const std::string& Section, TStrings& Strings) const;
    bool SectionExists(const std::string& Section) const;
    bool ValueExists(const std::string& Section, const std::string& Ident) const;

    void EraseSection(const std::string& Section);
    void DeleteKey(const std::string& Section, const std::string& Ident);

    // Nested. The outermost EndUpdate writes the batch (when it changed anything) and unlocks; when
    // the write fails it raises and the file keeps its previous content.
    void BeginUpdate();
    void EndUpdate();

private:
    class TLock;

    TIniDocument Current() const;
    template <typename F>
    void Change(F&& Apply);
    void Replace(const TIniDocument& Document) const;

    std::string FFileName;
    std::filesystem::path FPath;
    int FUpdateCount = 0;
    std::unique_ptr<TLock> FLock;
    std::optional<TIniDocument> FPending;
    bool FPendingChanged = false;
};

} // namespace quorda
