// Reading a parameter collection's "Data" property from arbitrary bytes. Exceptions of the
// library's own types are expected for malformed input; anything else (a crash, a sanitizer report,
// a foreign exception) is a fault. What reads successfully must also write, and a written collection
// must read back to the same bytes.
#include "quorda/core/odbc_params.h"
#include "quorda/rtl/exception.h"
#include "quorda/rtl/stream.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

std::string Write(const quorda::TODBCParams& Params) {
    quorda::TStringStream stream;
    Params.WriteBinaryData(stream);
    return stream.DataString();
}

bool NamesFitTheFormat(const quorda::TODBCParams& Params) {
    for (int i = 0; i < Params.Count(); ++i) {
        if (Params[i]->Name().size() > 255) {
            return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
    quorda::TStringStream input(std::string(reinterpret_cast<const char*>(Data), Size));
    quorda::TODBCParams params;
    try {
        params.ReadBinaryData(input);
    } catch (const quorda::Exception&) {
        return 0;
    }

    std::string written;
    try {
        written = Write(params);
    } catch (const quorda::Exception&) {
        // Values read from raw bytes may be ones the layouts refuse to write, such as a day count
        // outside the years 1 to 9999.
        return 0;
    }
    if (!NamesFitTheFormat(params)) {
        return 0;
    }
    quorda::TODBCParams again;
    quorda::TStringStream stream(written);
    again.ReadBinaryData(stream);
    if (Write(again) != written) {
        std::abort();
    }
    return 0;
}
