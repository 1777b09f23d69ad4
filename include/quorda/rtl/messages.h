#pragma once

#include "quorda/export.h"

#include <string>
#include <string_view>

namespace quorda {

// Identifiers of the component message table. Texts are looked up by id so that a translation can
// replace them at run time (SetMessageText).
enum MessageId : int {
    // The library's own messages (refusals the classic table has no text for).
    SODBCBlobRowLeft = 65497,
    SODBCNoStatement = 65498,
    SODBCNoResultSet = 65499,
    SODBCParamHoldsNul = 65500,
    SODBCTooManyParams = 65501,
    SODBCEmptyConnectValue = 65502,
    SODBCConnectInputNul = 65503,
    SODBCMaxStringSize = 65504,
    SODBCMaxBlobBuffer = 65505,
    SODBCInvalidBLOB = 65506,
    SODBCNotImplemented = 65507,
    SODBCInternalComponentError = 65508,
    SDataTypesEntity = 65509,
    SInvalidParamFieldType = 65510,
    SParamEditor = 65511,
    SDataTypes = 65512,
    SODBCParameterNotFound = 65520,
    SODBCInvalidVersion = 65521,
    SODBCParamTooBig = 65522,
    SODBCFieldUndefinedType = 65523,
    SODBCFieldUnsupportedType = 65524,
    SODBCTextTrue = 65525,
    SODBCTextFalse = 65526,
    SODBCEmptySQLStatement = 65527,
    SODBCFieldReadOnly = 65528,
    SODBCNotEditing = 65529,
    SODBCNotCorrect = 65530,
    SODBCDataBaseOpen = 65531,
    SODBCDataBaseNotOpen = 65532,
    SODBCDataSetOpen = 65533,
    SODBCDataSetNotOpen = 65534,
    SODBCDatabaseExists = 65535,
};

// The current text of a message (the built-in English text unless a translation replaced it).
// Unknown ids (65513 to 65519 carry no message) yield an empty string.
QUORDA_API std::string LoadStr(int id);

// The resource name of a message ("SODBCParameterNotFound"); empty for unnamed or unknown ids.
QUORDA_API std::string_view MessageName(int id);

// Replaces the text of a known id (a translation); returns false for an unknown id.
QUORDA_API bool SetMessageText(int id, std::string text);

// Restores every built-in text.
QUORDA_API void ResetMessageTexts();

} // namespace quorda
