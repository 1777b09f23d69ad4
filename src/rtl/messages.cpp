#include "quorda/rtl/messages.h"

#include <array>
#include <mutex>
#include <optional>

namespace quorda {
namespace {

struct BuiltInMessage {
    int id;
    std::string_view name;
    std::string_view text;
};

constexpr std::array kBuiltIn{
    // The library's own messages, below the classic table.
    BuiltInMessage{65497, "SODBCBlobRowLeft",
                   "ODBC A forward-only cursor has left the row of this memo or blob value"},
    BuiltInMessage{65498, "SODBCNoStatement",
                   "ODBC There is no statement yet: prepare or open the dataset first"},
    BuiltInMessage{65499, "SODBCNoResultSet",
                   "ODBC The statement returns no result set: run it with ExecSQL"},
    BuiltInMessage{65500, "SODBCParamHoldsNul",
                   "ODBC Parameter %s holds a NUL byte, which the driver cannot pass on"},
    BuiltInMessage{65501, "SODBCTooManyParams",
                   "ODBC The statement has %d parameters, more than the %d the driver takes"},
    BuiltInMessage{65502, "SODBCEmptyConnectValue", "ODBC The connection string names an empty %s"},
    BuiltInMessage{65503, "SODBCConnectInputNul", "ODBC %s holds a NUL byte"},
    BuiltInMessage{65504, "SODBCMaxStringSize",
                   "ODBC Not correct BlobBufferSize=%d (0 < BlobBufferSize <= 8192)"},
    BuiltInMessage{65505, "SODBCMaxBlobBuffer", "ODBC Not correct MaxBlobBuffer=%d (0 < BlobBufferSize)"},
    BuiltInMessage{65506, "SODBCInvalidBLOB", "ODBC Invalid BLOB parameter"},
    BuiltInMessage{65507, "SODBCNotImplemented", "ODBC This function not implemented"},
    BuiltInMessage{65508, "SODBCInternalComponentError",
                   "ODBC Internal component error %x. Contact programmers team."},
    BuiltInMessage{65509, "",
                   ";String;SmallInt;Integer;Word;Boolean;Float;Currency;BCD;Date;Time;DateTime;;;;;;"},
    BuiltInMessage{65510, "SInvalidParamFieldType", "Invalid param FieldType"},
    BuiltInMessage{65511, "SParamEditor", "Param Editor %s.%s"},
    BuiltInMessage{65512, "SDataTypes",
                   ";String;SmallInt;Integer;Word;Boolean;Float;Currency;BCD;Date;Time;DateTime;;;;;;"},
    BuiltInMessage{65520, "SODBCParameterNotFound", "ODBC Parameter %s not found"},
    BuiltInMessage{65521, "SODBCInvalidVersion", "ODBC Parameter %s incorrect version"},
    BuiltInMessage{65522, "SODBCParamTooBig", "ODBC Parameter %s is too big"},
    BuiltInMessage{65523, "SODBCFieldUndefinedType", "ODBC Field %s undefined type"},
    BuiltInMessage{65524, "SODBCFieldUnsupportedType", "ODBC Field unsupported type"},
    BuiltInMessage{65525, "SODBCTextTrue", "True"},
    BuiltInMessage{65526, "SODBCTextFalse", "False"},
    BuiltInMessage{65527, "SODBCEmptySQLStatement", "ODBC Empty sql statement"},
    BuiltInMessage{65528, "SODBCFieldReadOnly", "ODBC Field %s read only"},
    BuiltInMessage{65529, "SODBCNotEditing", "ODBC Field %s not editing"},
    BuiltInMessage{65530, "SODBCNotCorrect", "ODBC Fields and values are not correct"},
    BuiltInMessage{65531, "SODBCDataBaseOpen", "ODBC This operation is not allowed on open database"},
    BuiltInMessage{65532, "SODBCDataBaseNotOpen", "ODBC This operation is not allowed on closed database"},
    BuiltInMessage{65533, "SODBCDataSetOpen", "ODBC This operation is not allowed on open dataset"},
    BuiltInMessage{65534, "SODBCDataSetNotOpen", "ODBC This operation is not allowed on closed dataset"},
    BuiltInMessage{65535, "SODBCDatabaseExists", "ODBC Database with name %s allready exists"},
};

constexpr int kFirstId = 65488;
constexpr int kLastId = 65535;

// Translations replace texts by id; the mutex keeps a translation loaded on another thread safe.
std::mutex translationLock;
std::array<std::optional<std::string>, kLastId - kFirstId + 1> translations;

const BuiltInMessage* Find(int id) {
    for (const auto& message : kBuiltIn) {
        if (message.id == id) {
            return &message;
        }
    }
    return nullptr;
}

} // namespace

std::string LoadStr(int id) {
    const BuiltInMessage* message = Find(id);
    if (message == nullptr) {
        return {};
    }
    std::lock_guard guard(translationLock);
    const auto& translated = translations[static_cast<size_t>(id - kFirstId)];
    return translated ? *translated : std::string(message->text);
}

std::string_view MessageName(int id) {
    const BuiltInMessage* message = Find(id);
    return message ? message->name : std::string_view{};
}

bool SetMessageText(int id, std::string text) {
    if (Find(id) == nullptr) {
        return false;
    }
    std::lock_guard guard(translationLock);
    translations[static_cast<size_t>(id - kFirstId)] = std::move(text);
    return true;
}

void ResetMessageTexts() {
    std::lock_guard guard(translationLock);
    for (auto& translated : translations) {
        translated.reset();
    }
}

} // namespace quorda
