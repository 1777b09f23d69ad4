// Components: ownership, names and notifications, and whole component sets through the filer
// (published properties, sub-objects, references, Loaded, the text form, and damaged input); the
// application's exception display and cursor, the critical section and the message table.
#include "quorda/rtl/application.h"
#include "quorda/rtl/component.h"
#include "quorda/rtl/critical_section.h"
#include "quorda/rtl/data_module.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/filer.h"
#include "quorda/rtl/messages.h"
#include "quorda/rtl/object_text.h"
#include "quorda/rtl/published.h"
#include "quorda/rtl/strings.h"
#include "rtl_test_support.h"

#include <cstdio>
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace quorda {
namespace {

using testing_support::MessageOf;

enum TColour { clRed, clGreen, clBlue };

std::vector<std::string> LoadedLog;

// A component with a property of every streamed kind and a defined binary property.
class TSampleItem : public TComponent {
public:
    using TComponent::TComponent;
    std::string ClassName() const override { return "TSampleItem"; }

    std::int32_t Count = 0;
    bool Flag = false;
    double Ratio = 0;
    std::string Caption;
    TColour Colour = clRed;
    std::int64_t Big = 0;
    TSampleItem* Partner = nullptr;
    TStringList Lines;
    std::string Blob;

    void Loaded() override {
        TComponent::Loaded();
        LoadedLog.push_back(Name() + (Partner != nullptr ? "->" + Partner->Name() : ""));
    }
    void DefineProperties(TFiler* Filer) override {
        Filer->DefineBinaryProperty(
            "Blob",
            [this](TStream& Stream) {
                Blob.resize(static_cast<std::size_t>(Stream.Size()));
                Stream.ReadBuffer(Blob.data(), Stream.Size());
            },
            [this](TStream& Stream) {
                Stream.WriteBuffer(Blob.data(), static_cast<std::int64_t>(Blob.size()));
            },
            !Blob.empty());
    }
};

const TPropertyList& SampleProperties() {
    using S = TSampleItem;
    static const TPropertyList list =
        TPublished<S>(&ComponentProperties())
            .Property(
                "Count", &S::Count, [](S& s, std::int32_t v) { s.Count = v; }, 0)
            .Property(
                "Flag", &S::Flag, [](S& s, bool v) { s.Flag = v; }, false)
            .Property("Ratio", &S::Ratio, [](S& s, double v) { s.Ratio = v; })
            .Property("Caption", &S::Caption, [](S& s, const std::string& v) { s.Caption = v; })
            .Enum(
                "Colour", &S::Colour, [](S& s, TColour v) { s.Colour = v; }, {"clRed", "clGreen", "clBlue"},
                clRed)
            .Event("OnChange")
            .Property(
                "Big", &S::Big, [](S& s, std::int64_t v) { s.Big = v; }, 0)
            .Property("Hidden", &S::Count, nullptr)
            .NotStored()
            .Property("Partner", &S::Partner, [](S& s, S* v) { s.Partner = v; })
            .Object("Lines", &S::Lines)
            .Build();
    return list;
}

const bool kRegistered = (RegisterClass<TSampleItem>("TSampleItem", SampleProperties()), true);

std::string Saved(TDataModule& Module, TStreamFormat Format = TStreamFormat::Binary) {
    TStringStream stream;
    Module.SaveToStream(stream, Format);
    return stream.DataString();
}

const char kSampleText[] = R"(object Set: TDataModule
  object A: TSampleItem
    Tag = 7
    Count = 300
    Flag = True
    Ratio = 2.5
    Caption = 'it''s'#10'here'
    Colour = clBlue
    Big = 1099511627776
    Partner = B
    Lines.Strings = (
      'first'
      'second')
    Blob = {
      00FF}
  end
  object B: TSampleItem
    Ratio = 0.0
    Caption = ''
    Partner = A
  end
end
)";

// Loaded from its text form and saved in binary.
std::string SampleModule() {
    TDataModule module;
    TStringStream text(kSampleText);
    module.LoadFromStream(text);
    return Saved(module);
}

std::string Replaced(std::string Bytes, const std::string& From, const std::string& To) {
    Bytes.replace(Bytes.find(From), From.size(), To);
    return Bytes;
}

// Logs what it hears and forgets a partner that goes away, as data-aware components do.
class TProbe : public TComponent {
public:
    TProbe(TComponent* AOwner, std::string Label, std::vector<std::string>& Log)
        : TComponent(AOwner), FLabel(std::move(Label)), FLog(Log) {}
    ~TProbe() override { FLog.push_back("~" + FLabel); }

    void SetPartner(TComponent* APartner) {
        Partner = APartner;
        APartner->FreeNotification(this);
    }

    void Notification(TComponent* AComponent, TOperation Operation) override {
        TComponent::Notification(AComponent, Operation);
        FLog.push_back(FLabel + (Operation == opInsert ? ":insert:" : ":remove:") + AComponent->Name());
        if (Operation == opRemove) {
            SawDestroying = AComponent->ComponentState().Contains(csDestroying);
            if (AComponent == Partner) {
                Partner = nullptr;
            }
        }
    }

    TComponent* Partner = nullptr;
    bool SawDestroying = false; // the removed component was already destroying

private:
    std::string FLabel;
    std::vector<std::string>& FLog;
};

TEST(Component, ComponentsNotifyAndNameAndModulesRoundTrip) {
    std::vector<std::string> componentLog;
    TProbe owner(nullptr, "owner", componentLog);
    auto* a = new TProbe(&owner, "a", componentLog);
    a->SetName("A");
    auto* b = new TProbe(&owner, "b", componentLog);
    b->SetName("B");
    // The owner hears the insert and forwards it to the components it already owns.
    EXPECT_EQ(componentLog, (std::vector<std::string>{"owner:insert:", "a:insert:", "owner:insert:"}));
    componentLog.clear();
    delete a;
    ASSERT_EQ(owner.ComponentCount(), 1);
    EXPECT_EQ(owner.Components(0), b);
    // Siblings hear the removal through the owner; the component is already gone when they do.
    EXPECT_EQ(componentLog, (std::vector<std::string>{"~a", "b:remove:A", "owner:remove:A"}));
    EXPECT_THROW(owner.Components(1), EComponentError);
    // Partners inside one owner, and one outside, are safe when the owner goes.
    auto* form = new TProbe(nullptr, "form", componentLog);
    auto* link = new TProbe(form, "link", componentLog);
    auto* data = new TProbe(form, "data", componentLog);
    data->SetName("Data");
    link->SetPartner(data);
    // A partner outside the form too.
    TProbe outside(nullptr, "outside", componentLog);
    outside.SetPartner(link);
    link->SetName("Link");
    componentLog.clear();
    delete form;
    EXPECT_EQ(outside.Partner, nullptr);
    EXPECT_TRUE(outside.SawDestroying);
    // data is deleted first (last owned), link hears it, then link goes and outside hears it.
    EXPECT_EQ(componentLog, (std::vector<std::string>{"~form", "~data", "link:remove:Data", "~link",
                                                      "outside:remove:Link"}));
    TComponent holder(nullptr);
    auto* first = new TComponent(&holder);
    auto* second = new TComponent(&holder);
    first->SetName("Query1");
    EXPECT_EQ(MessageOf<EComponentError>([&] { second->SetName("QUERY1"); }),
              "A component named QUERY1 already exists");
    EXPECT_EQ(MessageOf<EComponentError>([&] { second->SetName("1st"); }),
              "'1st' is not a valid component name");
    EXPECT_THROW(second->SetName("has space"), EComponentError);
    first->SetName("query1"); // a case change of its own name is fine
    second->SetName("_Query2");
    EXPECT_EQ(holder.FindComponent("QUERY1"), first);
    EXPECT_EQ(holder.FindComponent("_query2"), second);
    EXPECT_EQ(holder.FindComponent(""), nullptr);
    TComponent other(nullptr);
    auto* third = new TComponent(&other);
    EXPECT_NO_THROW(third->SetName("Query1"));
    // Moving it into an owner that already has that name is refused; it stays where it was.
    EXPECT_THROW(holder.InsertComponent(third), EComponentError);
    third->SetName("Query3");
    holder.InsertComponent(third);
    EXPECT_EQ(third->Owner(), &holder);
    EXPECT_EQ(other.ComponentCount(), 0);
    EXPECT_EQ(holder.ComponentCount(), 3);
    holder.RemoveComponent(third);
    EXPECT_EQ(third->Owner(), nullptr);
    delete third;
    // Moving a component within its owner; an index past the end moves it last.
    second->SetComponentIndex(0);
    EXPECT_EQ(holder.Components(0), second);
    second->SetComponentIndex(99);
    EXPECT_EQ(holder.Components(1), second);
    // Designing spreads to owned components, also to those that join later, unless asked not to.
    holder.SetDesigning(true);
    EXPECT_TRUE(first->IsDesigning());
    auto* late = new TComponent(&holder);
    EXPECT_TRUE(late->IsDesigning());
    holder.RemoveComponent(late);
    EXPECT_FALSE(late->IsDesigning());
    delete late;
    holder.SetDesigning(false, false);
    EXPECT_TRUE(first->IsDesigning());
    holder.DestroyComponents();
    EXPECT_EQ(holder.ComponentCount(), 0);
    std::vector<std::string> shown;
    TExceptionHandler previous =
        Application::SetExceptionHandler([&](const std::exception& e) { shown.push_back(e.what()); });
    EXPECT_FALSE(previous); // the default is no handler: messages go to stderr
    Application::HandleException(EDatabaseError("boom"));
    EXPECT_EQ(shown, std::vector<std::string>{"boom"});
    TExceptionHandler mine = Application::SetExceptionHandler(previous);
    ASSERT_TRUE(mine);
    ::testing::internal::CaptureStderr();
    Application::HandleException(EDatabaseError("to stderr"));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "to stderr\n");
    EXPECT_EQ(shown.size(), 1u);
    std::vector<TCursor> seen;
    TCursorHook previousHook = Screen::SetCursorHook([&](TCursor c) { seen.push_back(c); });
    ASSERT_EQ(Screen::Cursor(), crDefault);
    {
        TScreenCursorGuard wait;
        EXPECT_EQ(Screen::Cursor(), crHourGlass);
        {
            TScreenCursorGuard sql(crSQLWait);
            EXPECT_EQ(Screen::Cursor(), crSQLWait);
            TScreenCursorGuard same(crSQLWait);
        }
        EXPECT_EQ(Screen::Cursor(), crHourGlass);
    }
    EXPECT_EQ(Screen::Cursor(), crDefault);
    EXPECT_EQ(seen, (std::vector<TCursor>{crHourGlass, crSQLWait, crHourGlass, crDefault}));
    // A hook that throws while a guard restores does not escape the destructor.
    Screen::SetCursorHook([](TCursor c) {
        if (c == crDefault) {
            throw Exception("hook failed");
        }
    });
    EXPECT_NO_THROW({ TScreenCursorGuard guard(crArrow); });
    EXPECT_EQ(Screen::Cursor(), crDefault);
    Screen::SetCursorHook(previousHook);
    TCriticalSection section;
    // Another thread tries to enter, and leaves at once when it could.
    const auto otherThreadEnters = [&] {
        return std::async(std::launch::async, [&] { return section.TryEnter() && (section.Leave(), true); })
            .get();
    };
    {
        TCriticalSectionGuard outer(section);
        EXPECT_TRUE(section.TryEnter()); // same thread enters again
        section.Leave();
        EXPECT_FALSE(otherThreadEnters());
    }
    EXPECT_TRUE(otherThreadEnters());
    EXPECT_EQ(LoadStr(SODBCParameterNotFound), "ODBC Parameter %s not found");
    EXPECT_EQ(MessageName(SODBCDatabaseExists), "SODBCDatabaseExists");
    EXPECT_EQ(FormatMessage(LoadStr(SODBCInternalComponentError), 816),
              "ODBC Internal component error 330. Contact programmers team.");
    // The unnamed twin of SDataTypes carries the same list.
    EXPECT_EQ(LoadStr(SDataTypesEntity), LoadStr(SDataTypes));
    EXPECT_TRUE(MessageName(SDataTypesEntity).empty());
    // The library's own refusals sit below the classic table.
    EXPECT_EQ(FormatMessage(LoadStr(SODBCTooManyParams), 32768, 32767),
              "ODBC The statement has 32768 parameters, more than the 32767 the driver takes");
    EXPECT_EQ(MessageName(SODBCConnectInputNul), "SODBCConnectInputNul");
    for (int id = 65513; id <= 65519; ++id) {
        EXPECT_TRUE(LoadStr(id).empty()) << id;
        EXPECT_FALSE(SetMessageText(id, "x")) << id;
    }
    EXPECT_TRUE(LoadStr(1).empty());
    // A reset brings the built-in text back.
    ASSERT_TRUE(SetMessageText(SODBCTextTrue, "Wahr"));
    ResetMessageTexts();
    EXPECT_EQ(LoadStr(SODBCTextTrue), "True");
    EXPECT_EQ(
        testing_support::MessageOf<EDatabaseError>([] { DatabaseErrorFmt("name %s", std::string("A")); }),
        "name A");
    // A format the arguments do not fit keeps its raw text instead of failing differently.
    EXPECT_EQ(FormatMessage("value %d", std::string("text")), "value %d");
    // The arguments travel to the compiled formatter packed; each keeps the width and signedness
    // that its conversion depends on, as a direct printf call would see it.
    EXPECT_EQ(FormatMessage("%x|%d|%u", -5, -5, 7u), "fffffffb|-5|7");
    EXPECT_EQ(FormatMessage("%x %lx", -5L, 5LL), "fffffffffffffffb 5");
    EXPECT_EQ(FormatMessage("%d %d", static_cast<short>(-3), static_cast<unsigned char>(250)), "-3 250");
    EXPECT_EQ(FormatMessage("%c%c %d %s", 'a', 66, true, false), "aB 1 false");
    EXPECT_EQ(FormatMessage("%f %g %s", 1.5, 2.25f, std::string_view("view")), "1.500000 2.25 view");
    EXPECT_EQ(FormatMessage("[%s]", static_cast<const char*>(nullptr)), "[(null)]");
    // Two items that point at each other; A has a value in every property. Declaration order, defaults
    // and not-stored properties skipped, events never written. Damaged or cut input raises and leaves
    // nothing behind, and so does a failed save.
    LoadedLog.clear();
    const std::string saved = SampleModule();
    // References are set before any Loaded runs; Loaded follows the reading order.
    EXPECT_EQ(LoadedLog, (std::vector<std::string>{"A->B", "B->A"}));
    TDataModule loaded;
    TStringStream input(saved);
    loaded.LoadFromStream(input);
    EXPECT_EQ(loaded.Name(), "Set");
    EXPECT_FALSE(loaded.IsLoading());
    EXPECT_EQ(Saved(loaded), saved);
    EXPECT_EQ(Saved(loaded, TStreamFormat::Text), kSampleText);
    TStringStream textInput(kSampleText);
    TStringStream binary;
    ObjectTextToBinary(textInput, binary);
    EXPECT_EQ(binary.DataString(), saved);
    const std::string text = kSampleText;
    const std::string count = "\5Count";
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {"neither form", "TPF1" + saved.substr(4), "Syntax error on line 1: expected object"},
        {"wrong tag", Replaced(saved, count + "\x03", count + "\x07"),
         "Invalid property value at offset 47: expected the value of property Count"},
        {"unknown class", Replaced(saved, "TSampleItem", "TSampleIteX"),
         "Class TSampleIteX not found at offset 33: expected a registered class"},
        {"unknown property", Replaced(saved, "Caption", "Captiox"),
         "Property Captiox does not exist at offset 81: expected a property of TSampleItem"},
        {"unknown enumerator", Replaced(saved, "clBlue", "clPink"),
         "Invalid property value at offset 107: expected the value of property Colour"},
        {"absurd length",
         Replaced(saved, std::string("\x06\x09", 2) + "it's", std::string("\x0C\xF0\xFF\xFF\xFF")),
         "Stream read error at offset 86: expected the value of property Caption"},
        {"unresolved reference",
         Replaced(saved, std::string("\x07\x01") + "B", std::string("\x07\x01") + "X"),
         "Unresolved reference to X at offset 231: expected a component named X for property Partner"},
        {"text without end", text.substr(0, text.size() - 4), "Syntax error on line 22: expected end"},
        {"text with odd hex digits", Replaced(text, "00FF", "00F"),
         "Syntax error on line 15: expected an even number of hexadecimal digits and '}'"},
        {"text with a bad value", Replaced(text, "Flag = True", "Flag = ;"),
         "Syntax error on line 5: expected a value"}};
    for (const auto& [what, bytes, message] : cases) {
        TDataModule module;
        module.SetName("Keep");
        TStringStream damaged(bytes);
        EXPECT_EQ(MessageOf<EReadError>([&] { module.LoadFromStream(damaged); }), message) << what;
        EXPECT_EQ(module.ComponentCount(), 0) << what;
        EXPECT_EQ(module.Name(), "Keep") << what;
    }
    // Cut anywhere, the stream fails cleanly.
    for (std::size_t cut = 0; cut < saved.size(); ++cut) {
        TDataModule module;
        TStringStream cutInput(saved.substr(0, cut));
        EXPECT_THROW(module.LoadFromStream(cutInput), EReadError) << "cut at " << cut;
        EXPECT_EQ(module.ComponentCount(), 0) << "cut at " << cut;
        EXPECT_FALSE(module.IsLoading()) << "cut at " << cut;
    }
    class TUnlisted : public TComponent {
    public:
        using TComponent::TComponent;
        std::string ClassName() const override { return "TUnlisted"; }
    };
    const std::string path = ::testing::TempDir() + "component_stream_module.txt";
    loaded.SaveToFile(path, TStreamFormat::Text);
    new TUnlisted(&loaded);
    EXPECT_EQ(MessageOf<EWriteError>([&] { loaded.SaveToFile(path); }), "Class TUnlisted not found");
    EXPECT_EQ(TDataModule::CreateFromFile(path)->Name(), "Set");
    std::remove(path.c_str());
}

} // namespace
} // namespace quorda
