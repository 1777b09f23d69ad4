#include "quorda/rtl/reg_ini_file.h"

#include "quorda/rtl/numbers.h"
#include "quorda/rtl/string_utils.h"
#include "quorda/rtl/strings.h"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorda {

namespace {

// A settings file larger than this is not read (its values read as defaults) and not replaced.
constexpr std::size_t kMaxSettingsFileSize = 16 * 1024 * 1024;

[[noreturn]] void RaiseWriteError(const std::filesystem::path& Path, const std::string& Step, int Error) {
    throw ERegistryException(
        FormatMessage("Cannot write settings file %s: %s: %s", Path.string(), Step, std::strerror(Error)));
}

std::string HomeFolder() {
    if (const char* Home = std::getenv("HOME"); Home != nullptr && *Home != '\0') {
        return Home;
    }
    if (const passwd* Entry = getpwuid(getuid()); Entry != nullptr && Entry->pw_dir != nullptr) {
        return Entry->pw_dir;
    }
    return ".";
}

// One part of a key path as a file or folder name.
std::string PathPart(std::string_view Part) {
    const bool EscapeDots = Part == "." || Part == ".." || Part.find(".ini") != std::string_view::npos;
    std::string Result;
    for (const char C : Part) {
        if (C == '%' || C == '\0' || (C == '.' && EscapeDots)) {
            Result += FormatMessage("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(C)));
        } else {
            Result += C;
        }
    }
    return Result;
}

enum class TReadResult { Read, Missing, Unreadable };

// The whole file, or why there is none to read.
TReadResult ReadWhole(const std::filesystem::path& Path, std::string& Text) {
    const int Fd = ::open(Path.c_str(), O_RDONLY | O_CLOEXEC);
    if (Fd < 0) {
        return errno == ENOENT ? TReadResult::Missing : TReadResult::Unreadable;
    }
    TReadResult Result = TReadResult::Read;
    char Buffer[65536];
    for (;;) {
        const ssize_t Count = ::read(Fd, Buffer, sizeof Buffer);
        if (Count < 0 && errno == EINTR) {
            continue;
        }
        if (Count < 0) {
            Result = TReadResult::Unreadable;
            break;
        }
        if (Text.size() + static_cast<std::size_t>(Count) > kMaxSettingsFileSize) {
            errno = EFBIG;
            Result = TReadResult::Unreadable;
            break;
        }
        if (Count == 0) {
            break;
        }
        Text.append(Buffer, static_cast<std::size_t>(Count));
    }
    const int Saved = errno;
    ::close(Fd);
    errno = Saved;
    return Result;
}

} // namespace

// The advisory lock on "<file>.lock", held from construction to destruction.
class TRegIniFile::TLock {
public:
    explicit TLock(const std::filesystem::path& Path) {
        std::error_code Error;
        std::filesystem::create_directories(Path.parent_path(), Error);
        if (Error) {
            throw ERegistryException(FormatMessage("Cannot write settings file %s: create folder: %s",
                                                   Path.string(), Error.message()));
        }
        const std::filesystem::path LockPath = Path.string() + ".lock";
        FFd = ::open(LockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (FFd < 0) {
            RaiseWriteError(Path, "lock", errno);
        }
        while (::flock(FFd, LOCK_EX) != 0) {
            if (errno != EINTR) {
                const int Saved = errno;
                ::close(FFd);
                RaiseWriteError(Path, "lock", Saved);
            }
        }
    }
    ~TLock() { ::close(FFd); }
    TLock(const TLock&) = delete;
    TLock& operator=(const TLock&) = delete;

private:
    int FFd = -1;
};

TRegIniFile::TRegIniFile(std::string FileName)
    : FFileName(std::move(FileName)), FPath(PathOfKey(FFileName)) {}

TRegIniFile::~TRegIniFile() = default;

std::filesystem::path TRegIniFile::ConfigFolder() {
    const char* Config = std::getenv("XDG_CONFIG_HOME");
    std::filesystem::path Base;
    if (Config != nullptr && std::filesystem::path(Config).is_absolute()) {
        Base = Config;
    } else {
        Base = std::filesystem::path(HomeFolder()) / ".config";
    }
    return Base / "quorda";
}

std::filesystem::path TRegIniFile::PathOfKey(std::string_view KeyPath) {
    std::filesystem::path Result = ConfigFolder();
    std::string Last;
    std::size_t Start = 0;
    while (Start <= KeyPath.size()) {
        std::size_t End = KeyPath.find_first_of("\\/", Start);
        if (End == std::string_view::npos) {
            End = KeyPath.size();
        }
        if (End > Start) {
            if (!Last.empty()) {
                Result /= Last;
            }
            Last = PathPart(KeyPath.substr(Start, End - Start));
        }
        Start = End + 1;
    }
    // The root key (an empty path) is a file no key part can name: parts are never empty.
    return Result / (Last + ".ini");
}

TIniDocument TRegIniFile::Current() const {
    if (FPending) {
        return *FPending;
    }
    std::string Text;
    if (ReadWhole(FPath, Text) != TReadResult::Read) {
        return {};
    }
    return TIniDocument::Parse(Text);
}

template <typename F>
void TRegIniFile::Change(F&& Apply) {
    if (FPending) {
        FPendingChanged = Apply(*FPending) || FPendingChanged;
        return;
    }
    TLock Lock(FPath);
    std::string Text;
    const TReadResult Read = ReadWhole(FPath, Text);
    if (Read == TReadResult::Unreadable) {
        RaiseWriteError(FPath, "read", errno);
    }
    TIniDocument Document = TIniDocument::Parse(Text);
    if (Apply(Document)) {
        Replace(Document);
    }
}

void TRegIniFile::Replace(const TIniDocument& Document) const {
    const std::string Text = Document.Text();
    std::string Temporary = FPath.string() + ".XXXXXX";
    const int Fd = ::mkostemp(Temporary.data(), O_CLOEXEC);
    if (Fd < 0) {
        RaiseWriteError(FPath, "create temporary file", errno);
    }
    const auto Fail = [&](const char* Step) {
        const int Saved = errno;
        ::close(Fd);
        ::unlink(Temporary.c_str());
        RaiseWriteError(FPath, Step, Saved);
    };
    // Keep the permissions of the file being replaced.
    if (struct stat Old; ::stat(FPath.c_str(), &Old) == 0) {
        ::fchmod(Fd, Old.st_mode & 07777);
    }
    std::size_t Written = 0;
    while (Written < Text.size()) {
        const ssize_t Count = ::write(Fd, Text.data() + Written, Text.size() - Written);
        if (Count < 0 && errno == EINTR) {
            continue;
        }
        if (Count <= 0) {
            if (Count == 0) {
                errno = ENOSPC;
            }
            Fail("write");
        }
        Written += static_cast<std::size_t>(Count);
    }
    if (::fsync(Fd) != 0) {
        Fail("flush");
    }
    if (::close(Fd) != 0) {
        const int Saved = errno;
        ::unlink(Temporary.c_str());
        RaiseWriteError(FPath, "close", Saved);
    }
    if (::rename(Temporary.c_str(), FPath.c_str()) != 0) {
        const int Saved = errno;
        ::unlink(Temporary.c_str());
        RaiseWriteError(FPath, "rename", Saved);
    }
    // The rename itself reaches the disk with the folder.
    if (const int Folder = ::open(FPath.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        Folder >= 0) {
        ::fsync(Folder);
        ::close(Folder);
    }
}

std::string TRegIniFile::ReadString(const std::string& Section, const std::string& Ident,
                                    const std::string& Default) const {
    const TIniDocument Document = Current();
    const std::string* Value = Document.Find(Section, Ident);
    return Value != nullptr ? *Value : Default;
}

std::int32_t TRegIniFile::ReadInteger(const std::string& Section, const std::string& Ident,
                                      std::int32_t Default) const {
    const std::string Text = Trim(ReadString(Section, Ident, ""));
    std::string_view Hex;
    if (Text.starts_with('$')) {
        Hex = std::string_view(Text).substr(1);
    } else if (Text.starts_with("0x") || Text.starts_with("0X")) {
        Hex = std::string_view(Text).substr(2);
    } else {
        return StrToIntDef(Text, Default);
    }
    // Up to eight digits, the bits of the 32-bit value ($FFFFFFFF is -1).
    std::uint32_t Value = 0;
    const auto [End, Error] = std::from_chars(Hex.data(), Hex.data() + Hex.size(), Value, 16);
    if (Hex.empty() || Error != std::errc() || End != Hex.data() + Hex.size()) {
        return Default;
    }
    return static_cast<std::int32_t>(Value);
}

bool TRegIniFile::ReadBool(const std::string& Section, const std::string& Ident, bool Default) const {
    return ReadInteger(Section, Ident, Default ? 1 : 0) != 0;
}

void TRegIniFile::WriteString(const std::string& Section, const std::string& Ident,
                              const std::string& Value) {
    Change([&](TIniDocument& Document) {
        const std::string* Old = Document.Find(Section, Ident);
        if (Old != nullptr && *Old == Value) {
            return false;
        }
        Document.SetValue(Section, Ident, Value);
        return true;
    });
}

void TRegIniFile::WriteInteger(const std::string& Section, const std::string& Ident, std::int32_t Value) {
    WriteString(Section, Ident, IntToStr(Value));
}

void TRegIniFile::WriteBool(const std::string& Section, const std::string& Ident, bool Value) {
    WriteString(Section, Ident, Value ? "1" : "0");
}

void TRegIniFile::ReadSection(const std::string& Section, TStrings& Strings) const {
    Strings.BeginUpdate();
    Strings.Clear();
    for (const auto& [Key, Value] : Current().Entries(Section)) {
        Strings.Add(Key);
    }
    Strings.EndUpdate();
}

void TRegIniFile::ReadSections(TStrings& Strings) const {
    Strings.BeginUpdate();
    Strings.Clear();
    for (const std::string& Name : Current().SectionNames()) {
        Strings.Add(Name);
    }
    Strings.EndUpdate();
}

void TRegIniFile::ReadSectionValues(const std::string& Section, TStrings& Strings) const {
    Strings.BeginUpdate();
    Strings.Clear();
    for (const auto& [Key, Value] : Current().Entries(Section)) {
        Strings.Add(Key + Strings.NameValueSeparator() + Value);
    }
    Strings.EndUpdate();
}

bool TRegIniFile::SectionExists(const std::string& Section) const {
    return Current().SectionExists(Section);
}

bool TRegIniFile::ValueExists(const std::string& Section, const std::string& Ident) const {
    return Current().Find(Section, Ident) != nullptr;
}

void TRegIniFile::EraseSection(const std::string& Section) {
    Change([&](TIniDocument& Document) { return Document.EraseSection(Section); });
}

void TRegIniFile::DeleteKey(const std::string& Section, const std::string& Ident) {
    Change([&](TIniDocument& Document) { return Document.DeleteKey(Section, Ident); });
}

void TRegIniFile::BeginUpdate() {
    if (FUpdateCount++ > 0) {
        return;
    }
    try {
        FLock = std::make_unique<TLock>(FPath);
        std::string Text;
        if (ReadWhole(FPath, Text) == TReadResult::Unreadable) {
            RaiseWriteError(FPath, "read", errno);
        }
        FPending = TIniDocument::Parse(Text);
        FPendingChanged = false;
    } catch (...) {
        FLock.reset();
        FUpdateCount = 0;
        throw;
    }
}

void TRegIniFile::EndUpdate() {
    if (FUpdateCount == 0 || --FUpdateCount > 0) {
        return;
    }
    std::optional<TIniDocument> Pending = std::move(FPending);
    FPending.reset();
    const bool Changed = FPendingChanged;
    FPendingChanged = false;
    // The lock is released whether or not the write succeeds.
    const std::unique_ptr<TLock> Lock = std::move(FLock);
    if (Changed) {
        Replace(*Pending);
    }
}

} // namespace quorda
