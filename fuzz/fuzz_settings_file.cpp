// The settings file reader on arbitrary bytes. Besides memory errors it checks what the format
// promises: text written from a read document reads back as the same document, and a value written
// into any document reads back exactly, whatever bytes the section, key and value hold.
#include "quorda/rtl/ini_document.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
    const std::string_view Input(reinterpret_cast<const char*>(Data), Size);

    quorda::TIniDocument Document = quorda::TIniDocument::Parse(Input);
    const std::string Text = Document.Text();
    Check(quorda::TIniDocument::Parse(Text).Text() == Text);
    for (const std::string& Section : Document.SectionNames()) {
        Check(Document.SectionExists(Section));
        for (const auto& [Key, Value] : Document.Entries(Section)) {
            const std::string* Found = Document.Find(Section, Key);
            Check(Found != nullptr && *Found == Value);
        }
    }

    // The input split in three serves as a section, a key and a value written into the document.
    const std::string_view Section = Input.substr(0, Size / 3);
    const std::string_view Key = Input.substr(Size / 3, Size / 3);
    const std::string_view Value = Input.substr(2 * (Size / 3));
    if (!Key.empty()) {
        Document.SetValue(Section, Key, Value);
        const quorda::TIniDocument Again = quorda::TIniDocument::Parse(Document.Text());
        const std::string* Found = Again.Find(Section, Key);
        Check(Found != nullptr && *Found == Value);
        Check(Again.Text() == Document.Text());
    }
    return 0;
}
