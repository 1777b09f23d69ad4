// The :name marker scanner on arbitrary bytes. Besides memory errors it checks what the rewrite
// promises: the text never grows, every marker becomes exactly one "?", the collection gets one
// parameter per marker, and bytes after a zero byte are left alone.
#include "quorda/core/odbc_params.h"
#include "quorda/core/param_markers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::size_t CountMarks(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '?'));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
    const std::string input(reinterpret_cast<const char*>(Data), Size);

    std::string text = input;
    quorda::TODBCParams params;
    quorda::CreateParams(&params, text);
    Check(text.size() <= input.size());
    const std::size_t zero = input.find('\0');
    if (zero != std::string::npos) {
        const std::size_t tail = input.size() - zero;
        Check(text.size() >= tail && text.compare(text.size() - tail, tail, input, zero, tail) == 0);
    }

    // Without "?" in the input (the scanner treats it like any other byte), the marks in the result
    // are exactly the markers found.
    std::string plain = input;
    std::replace(plain.begin(), plain.end(), '?', '!');
    std::size_t markers = 0;
    std::size_t nameBytes = 0;
    quorda::ScanParamMarkers(plain, [&](const std::string& Name) {
        ++markers;
        nameBytes += Name.size();
    });
    Check(CountMarks(plain) == markers);
    Check(static_cast<std::size_t>(params.Count()) == markers);
    Check(nameBytes + plain.size() <= input.size());
    return 0;
}
