#pragma once

#include "quorda/rtl/stream.h"

namespace quorda {

// Damaged text: the message tells the line and what was expected.
class QUORDA_API EParserError : public EReadError {
public:
    using EReadError::EReadError;
};

// The readable form of a binary component stream, and back. The text reads
//
//   object Orders: TDataModule
//     object Db: TODBCDatabase
//       DatabaseName = 'shop'
//       Connected = True
//     end
//     object Query: TODBCQuery
//       ODBCDatabase = Db
//       Params.Data = {
//         0100...}
//       SQL.Strings = (
//         'select * from orders'
//         'where id = :id')
//     end
//   end
//
// Integers, floats (suffix s for single, d for date, c for currency), 'quoted' strings with #nn
// for control characters, identifiers, [sets], (lists), {hexadecimal bytes} and <collections>.
// Whatever the writer produced converts to text and back to the same bytes.
//
// Both read from the current position to the end of one component tree and raise EReadError (binary)
// or its descendant EParserError (text) with the offset or line of damaged input.
QUORDA_API void ObjectBinaryToText(TStream& Input, TStream& Output);
QUORDA_API void ObjectTextToBinary(TStream& Input, TStream& Output);

} // namespace quorda
