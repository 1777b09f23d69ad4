#include "quorda/rtl/ini_document.h"
#include "quorda/rtl/reg_ini_file.h"
#include "quorda/rtl/strings.h"
#include "quorda_test/config_home.h"
#include "rtl_test_support.h"

#include <csignal>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace quorda {
namespace {

namespace fs = std::filesystem;
using namespace testing_support;

std::vector<std::string> FolderEntries(const fs::path& Folder) {
    std::vector<std::string> Names;
    for (const auto& Entry : fs::directory_iterator(Folder)) {
        Names.push_back(Entry.path().filename().string());
    }
    std::sort(Names.begin(), Names.end());
    return Names;
}

// Runs Body in a child process while this process runs Meanwhile; the child's exit code (0 when Body
// returned true).
template <typename F, typename G = void (*)()>
int InChild(
    F&& Body, G&& Meanwhile = [] {}) {
    const pid_t Child = ::fork();
    if (Child == 0) {
        bool Ok = false;
        try {
            Ok = Body();
        } catch (...) {
        }
        ::_exit(Ok ? 0 : 1);
    }
    Meanwhile();
    int Status = 0;
    ::waitpid(Child, &Status, 0);
    return WIFEXITED(Status) ? WEXITSTATUS(Status) : 128 + WTERMSIG(Status);
}

// The value Document holds for Section and Ident, if any.
std::optional<std::string> ValueIn(const TIniDocument& Document, const std::string& Section,
                                   const std::string& Ident) {
    const std::string* Value = Document.Find(Section, Ident);
    return Value != nullptr ? std::optional<std::string>(*Value) : std::nullopt;
}

constexpr char kGarbage[] = "\0\xff[\x01]\n\x80=\x02\n[s]\nk=\0v\n";

TEST(RegIniFile, DocumentsKeyPathsTypedReadsSectionsAndBatches) {
    TTemporaryConfigHome Home;
    const std::pair<const char*, const char*> Cases[] = {
        {"Software\\Acme\\Orders", "quorda/Software/Acme/Orders.ini"},
        {"Software/Acme", "quorda/Software/Acme.ini"},
        {"\\\\a\\/b\\", "quorda/a/b.ini"},
        {"", "quorda/.ini"},
        {"..\\..\\etc", "quorda/%2E%2E/%2E%2E/etc.ini"},
        {"x.ini\\y", "quorda/x%2Eini/y.ini"},
        {"50%", "quorda/50%25.ini"}};
    for (const auto& [KeyPath, File] : Cases) {
        SCOPED_TRACE(KeyPath);
        EXPECT_EQ(TRegIniFile::PathOfKey(KeyPath), Home.Folder() / File);
    }
    TRegIniFile("Software\\Acme\\Orders").WriteString("s", "k", "v");
    EXPECT_EQ(ReadFile(Home.Folder() / "quorda/Software/Acme/Orders.ini"), "[s]\nk=v\n");
    WriteFile(TRegIniFile::PathOfKey("Typed"),
              "[n]\ndec= 42 \nneg=-7\ndollar=$1F\nhex=0x10\ntext=abc\nbig=99999999999\nempty=\n");
    const TRegIniFile Typed("Typed");
    EXPECT_EQ(Map<const char*>({"dec", "neg", "dollar", "hex", "text", "big", "empty", "missing"},
                               [&](const char* Ident) { return Typed.ReadInteger("n", Ident, -1); }),
              (std::vector<std::int32_t>{42, -7, 31, 16, -1, -1, -1, -1}));
    EXPECT_EQ((std::vector<bool>{Typed.ReadBool("n", "dec", false), Typed.ReadBool("n", "text", false),
                                 Typed.ReadBool("n", "text", true)}),
              (std::vector<bool>{true, false, true}));
    EXPECT_EQ((Strings{Typed.ReadString("n", "missing", "\x01"), Typed.ReadString("nowhere", "dec", "d"),
                       TRegIniFile("Elsewhere").ReadString("n", "dec", "no file")}),
              (Strings{"\x01", "d", "no file"}));
    TRegIniFile Ini("Sections\\App");
    Ini.WriteString("orders", "id-find", "12");
    Ini.WriteInteger("orders", "FindOption", 2);
    Ini.WriteBool("orders", "FindSensitive", true);
    Ini.WriteString("customers", "name-filter", "A");
    EXPECT_EQ(ReadFile(Ini.Path()), "[orders]\nid-find=12\nFindOption=2\nFindSensitive=1\n"
                                    "[customers]\nname-filter=A\n");
    TStringList List;
    Ini.ReadSections(List);
    EXPECT_EQ(List.ToVector(), (std::vector<std::string>{"orders", "customers"}));
    Ini.ReadSection("ORDERS", List);
    EXPECT_EQ(List.ToVector(), (std::vector<std::string>{"id-find", "FindOption", "FindSensitive"}));
    Ini.ReadSectionValues("orders", List);
    EXPECT_EQ(List.Values("FindOption"), "2");
    EXPECT_TRUE(Ini.ValueExists("Orders", "ID-FIND"));
    EXPECT_FALSE(Ini.ValueExists("orders", "name-filter"));
    Ini.DeleteKey("orders", "id-find");
    EXPECT_FALSE(Ini.ValueExists("orders", "id-find"));
    Ini.EraseSection("orders");
    EXPECT_FALSE(Ini.SectionExists("orders"));
    EXPECT_EQ(ReadFile(Ini.Path()), "[customers]\nname-filter=A\n");
    // Only the settings file and its lock file are left: no temporary files.
    EXPECT_EQ(FolderEntries(Ini.Path().parent_path()), (std::vector<std::string>{"App.ini", "App.ini.lock"}));
    // A batch holds the lock and replaces the file once; abandoned, it changes nothing.
    Ini.EraseSection("customers");
    Ini.WriteString("s", "old", "1");
    {
        TRegIniFile Batch("Sections\\App");
        Batch.BeginUpdate();
        Batch.EraseSection("s");
        Batch.WriteString("s", "new", "2");
        EXPECT_EQ(Batch.ReadString("s", "new", ""), "2");
        EXPECT_EQ(Ini.ReadString("s", "old", ""), "1");
        // Abandoned without EndUpdate.
    }
    EXPECT_EQ(ReadFile(Ini.Path()), "[s]\nold=1\n");
    Ini.BeginUpdate();
    Ini.EraseSection("s");
    Ini.WriteString("s", "new", "2");
    Ini.EndUpdate();
    EXPECT_EQ(ReadFile(Ini.Path()), "[s]\nnew=2\n");
    // A relative XDG_CONFIG_HOME is not a configuration folder: ~/.config is used instead.
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("HOME", Home.Folder().c_str(), 1);
    EXPECT_EQ(TRegIniFile::ConfigFolder(), Home.Folder() / ".config/quorda");
    // Hand-written, damaged and garbage files: reading never fails, values it cannot find are absent.
    // What, the text, and where to look for which value.
    const std::tuple<const char*, std::string, const char*, const char*, std::optional<std::string>> Texts[] =
        {{"plain", "[s]\nk=v\n", "s", "k", "v"},
         {"blanks trimmed, names ignore case", "  [ Sec ]  \r\n  Key  =  a b  \r\n", "SEC", "key", "a b"},
         {"first of two keys counts", "[s]\nk=1\nk=2\n", "s", "k", "1"},
         {"a section named twice is one", "[s]\na=1\n[t]\n[S]\nb=2\n", "s", "b", "2"},
         {"comments are not entries", "[s]\n;k=1\n#k=2\n", "s", "k", std::nullopt},
         {"entries before any section are ignored", "k=1\n[s]\n", "s", "k", std::nullopt},
         {"truncated last line", "[s]\nk=val", "s", "k", "val"},
         {"truncated header", "[s]\nk=1\n[t", "s", "k", "1"},
         {"header cut before its bracket is no section", "[t\nk=1\n", "t", "k", std::nullopt},
         {"empty key", "[s]\n=v\n", "s", "", std::nullopt},
         {"escapes", "[s]\nk=\\x20a\\\\b\\x0Ac\\x20\n", "s", "k", " a\\b\nc "},
         {"unknown escapes read literally", "[s]\nk=C:\\dir\\x4\n", "s", "k", "C:\\dir\\x4"},
         {"value with '='", "[s]\nk=a=b\n", "s", "k", "a=b"},
         {"binary garbage", std::string(kGarbage, sizeof kGarbage - 1), "s", "k", std::string("\0v", 2)}};
    for (const auto& [What, Text, Section, Ident, Expected] : Texts) {
        SCOPED_TRACE(What);
        EXPECT_EQ(ValueIn(TIniDocument::Parse(Text), Section, Ident), Expected);
    }
    // Names and values of any bytes survive a write and a read; lines the reader did not understand
    // are written back unchanged.
    const std::string Awkward[] = {"",   " lead", "trail ", "a=b",  "[x]", ";c",   "#c",
                                   "\\", "\\x41", "l1\nl2", "cr\r", "]",   "\x01", std::string("z\0z", 3)};
    TIniDocument Document = TIniDocument::Parse("; kept comment\n[keep]\ngarbage line\nk=v\n");
    for (const std::string& Name : Awkward) {
        if (!Name.empty()) {
            Document.SetValue("sec " + Name, Name, Name);
        }
        Document.SetValue("values", "k" + std::to_string(&Name - Awkward), Name);
    }
    const std::string Text = Document.Text();
    const TIniDocument Again = TIniDocument::Parse(Text);
    EXPECT_EQ(Again.Text(), Text);
    for (const std::string& Name : Awkward) {
        SCOPED_TRACE(Name);
        if (!Name.empty()) {
            EXPECT_EQ(ValueIn(Again, "sec " + Name, Name), Name);
        }
        EXPECT_EQ(ValueIn(Again, "values", "k" + std::to_string(&Name - Awkward)), Name);
    }
    EXPECT_EQ(Text.rfind("; kept comment\n[keep]\ngarbage line\nk=v\n", 0), 0u);
}

// Two processes writing different keys at once: every write survives, the file stays whole; a write
// that runs out of space fails with an error and leaves the previous file and no temporary file
// behind (the child's file size limit stands in for a full disk).
TEST(RegIniFile, ConcurrentWritersLoseNothingAndAFailedWriteLeavesThePreviousFile) {
    TTemporaryConfigHome Home;
    constexpr int Count = 40;
    const auto Writer = [](const char* Prefix) {
        TRegIniFile Ini("Shared\\App");
        for (int I = 0; I < Count; ++I) {
            Ini.WriteString("s", Prefix + std::to_string(I), std::string(200, Prefix[0]));
        }
        return true;
    };
    ASSERT_EQ(InChild([&] { return Writer("child"); }, [&] { Writer("parent"); }), 0);
    TStringList Keys;
    TRegIniFile("Shared\\App").ReadSection("s", Keys);
    EXPECT_EQ(Keys.Count(), 2 * Count);
    EXPECT_EQ(TRegIniFile("Shared\\App").ReadString("s", "child39", ""), std::string(200, 'c'));
    TRegIniFile Ini("Shared\\App");
    const std::string Before = ReadFile(Ini.Path());
    const int Result = InChild([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit Limit{4096, 4096};
        ::setrlimit(RLIMIT_FSIZE, &Limit);
        return MessageOf<ERegistryException>([&] { Ini.WriteString("s", "k", std::string(100000, 'x')); }) !=
               "<no exception>";
    });
    EXPECT_EQ(Result, 0);
    EXPECT_EQ(ReadFile(Ini.Path()), Before);
    EXPECT_EQ(FolderEntries(Ini.Path().parent_path()), (std::vector<std::string>{"App.ini", "App.ini.lock"}));
}

} // namespace
} // namespace quorda
