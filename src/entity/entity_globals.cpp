#include "quorda/entity/entity_types.h"
#include "quorda/rtl/strings.h"

namespace quorda {

std::string EntityINIFileName;
std::string strExecuteProc = "EXECUTE PROCEDURE";
const Variant NullValue = Variant::Null();

void EntityError(const std::string& Message) {
    throw EEntityException(Message);
}

TStringList& lstOpenEntity() {
    // Never freed: entities destroyed late in the process still find it.
    static TStringList* const List = [] {
        auto* Result = new TStringList;
        Result->SetDuplicates(dupAccept);
        Result->SetCaseSensitive(true);
        return Result;
    }();
    return *List;
}

} // namespace quorda
