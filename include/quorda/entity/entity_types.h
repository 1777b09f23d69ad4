#pragma once

#include "quorda/rtl/exception.h"
#include "quorda/rtl/variant.h"

#include <cstdint>
#include <initializer_list>
#include <string>

namespace quorda {

class TStringList;

// Where a command takes its key or field values from: a value array from the caller, the current row
// of a query, or the Value slots of the entity's fields.
enum TCommandDataType { cdtArray, cdtQry, cdtField };

// One entity command; also the index of the stored-procedure slots.
enum TExecType { fetSelect, fetInsert, fetUpdate, fetDelete, fetLock, fetCLock, fetClose };
inline constexpr int ExecTypeCount = fetClose + 1;

enum TLockResult { lrOk, lrLocked, lrDeleted };
enum TDirectionFind { dfNext, dfPrior };
// Whole value, beginning of the value, any part of the value.
enum TEntityFindOption { efoFullConCur, efoFirstConCur, efoSubConCur };

// The name of a stored procedure.
struct TSPType {
    std::string Name;
};

// The commands a field takes part in: one byte, bit n standing for TExecType n.
class TSetExecType {
public:
    constexpr TSetExecType() = default;
    constexpr TSetExecType(std::initializer_list<TExecType> Members) {
        for (const TExecType Member : Members) {
            Include(Member);
        }
    }
    static constexpr TSetExecType FromBits(std::uint8_t Bits) {
        TSetExecType Result;
        Result.FBits = Bits;
        return Result;
    }

    constexpr bool Contains(TExecType Member) const { return (FBits & Bit(Member)) != 0; }
    constexpr void Include(TExecType Member) { FBits = static_cast<std::uint8_t>(FBits | Bit(Member)); }
    constexpr void Exclude(TExecType Member) { FBits = static_cast<std::uint8_t>(FBits & ~Bit(Member)); }
    constexpr std::uint8_t Bits() const { return FBits; }
    constexpr bool operator==(const TSetExecType&) const = default;

private:
    static constexpr std::uint8_t Bit(TExecType Member) { return static_cast<std::uint8_t>(1u << Member); }
    std::uint8_t FBits = 0;
};
static_assert(sizeof(TSetExecType) == 1);

// A key column: selected, inserted and used in the WHERE of lock, cascade lock, update and delete.
inline constexpr TSetExecType cnstETPK{fetSelect, fetInsert, fetLock, fetCLock};
// An ordinary column: inserted and updated.
inline constexpr TSetExecType cnstETField{fetSelect, fetInsert, fetUpdate, fetDelete};
// A view column: no write command.
inline constexpr TSetExecType cnstETView{};
static_assert(cnstETPK.Bits() == 0x33 && cnstETField.Bits() == 0x0F && cnstETView.Bits() == 0x00);

// Raised for every entity error.
class QUORDA_API EEntityException : public Exception {
public:
    using Exception::Exception;
};

[[noreturn]] void EntityError(const std::string& Message);

// The default of a settings read that tells a missing key from an empty value.
inline constexpr char EntityAbsentMarker[] = "\x01";

inline constexpr char SEntityLockQueryEmpty[] = "Can not create select lock query";
inline constexpr char SEntityEmptyProcedure[] = "Can not create empty procedure";
inline constexpr char SEntityFieldNotFound[] = "Field %s not found";

// Registry key path under which every entity keeps its settings; the application sets it.
extern QUORDA_API std::string EntityINIFileName;
// Put before a procedure name to call it.
extern QUORDA_API std::string strExecuteProc;
// The value that clears find, filter and value slots.
extern QUORDA_API const Variant NullValue;
// Every live entity: the entry's string is the entity's viewEntity, its object the entity.
// Duplicates accepted, not sorted, names compared case-sensitively. It lives to the end of the process.
QUORDA_API TStringList& lstOpenEntity();

} // namespace quorda
