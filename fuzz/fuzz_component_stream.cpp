// Loading a data module from arbitrary bytes, in the binary or the text form. Exceptions of the
// library's own types are expected for damaged input; anything else (a crash, a sanitizer report, a
// leak, a foreign exception) is a fault. A module that loads must save, load again and save the same
// bytes, and its text form must convert back to those bytes.
#include "quorda/rtl/data_module.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/object_text.h"
#include "quorda/rtl/published.h"
#include "quorda/rtl/strings.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace quorda;

enum TShade { shLight, shDark };

// One published property of every kind the reader sets, and a sub-object.
class TFuzzItem : public TComponent {
public:
    using TComponent::TComponent;
    std::string ClassName() const override { return "TFuzzItem"; }

    std::int32_t Count = 0;
    bool Flag = false;
    double Ratio = 0;
    std::string Caption;
    TShade Shade = shLight;
    std::int64_t Big = 0;
    TComponent* Link = nullptr;
    TStringList Lines;
};

const bool kRegistered = [] {
    using F = TFuzzItem;
    static const TPropertyList list =
        TPublished<F>(&ComponentProperties())
            .Property(
                "Count", &F::Count, [](F& f, std::int32_t v) { f.Count = v; }, 0)
            .Property(
                "Flag", &F::Flag, [](F& f, bool v) { f.Flag = v; }, false)
            .Property(
                "Ratio", &F::Ratio, [](F& f, double v) { f.Ratio = v; }, 0.0)
            .Property(
                "Caption", &F::Caption, [](F& f, const std::string& v) { f.Caption = v; }, "")
            .Enum(
                "Shade", &F::Shade, [](F& f, TShade v) { f.Shade = v; }, {"shLight", "shDark"}, shLight)
            .Property(
                "Big", &F::Big, [](F& f, std::int64_t v) { f.Big = v; }, 0)
            .Property("Link", &F::Link, [](F& f, TComponent* v) { f.Link = v; })
            .Object("Lines", &F::Lines)
            .Build();
    RegisterClass<TFuzzItem>("TFuzzItem", list);
    return true;
}();

std::string Saved(TDataModule& Module) {
    TStringStream stream;
    Module.SaveToStream(stream);
    return stream.DataString();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
    TStringStream input(std::string(reinterpret_cast<const char*>(Data), Size));
    TDataModule module;
    try {
        module.LoadFromStream(input);
    } catch (const Exception&) {
        return 0;
    }
    // Whatever loaded is consistent, so it saves.
    const std::string saved = Saved(module);
    TDataModule again;
    TStringStream stream(saved);
    again.LoadFromStream(stream);
    if (Saved(again) != saved) {
        std::abort();
    }
    TStringStream binary(saved);
    TStringStream text;
    try {
        ObjectBinaryToText(binary, text);
    } catch (const EReadError&) {
        // Floats that are not finite have no text form.
        return 0;
    }
    text.SetPosition(0);
    TStringStream back;
    ObjectTextToBinary(text, back);
    if (back.DataString() != saved) {
        std::abort();
    }
    return 0;
}
