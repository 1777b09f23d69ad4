// What the user entity publishes to designers and component streams, in its classic order.
#include "quorda/core/odbc_published.h"
#include "quorda/entity/user_entity.h"

namespace quorda {

std::string TUserEntity::ClassName() const {
    return "TUserEntity";
}

const TPropertyList& UserEntityProperties() {
    using E = TUserEntity;
    static const TPropertyList list =
        TPublished<E>(&ComponentProperties())
            // Listed for designers only: never written or read ("Fields" stores the list), so the
            // reader cannot reach the list through it.
            .Object("lstFields",
                    [](E& Entity) -> TStringList& { return const_cast<TStringList&>(Entity.lstFields()); })
            .NotStored()
            .Property("viewTable", &E::viewTable, &E::SetViewTable)
            .Property("factTable", &E::factTable, &E::SetFactTable)
            .Property("viewFull", &E::viewFull, &E::SetViewFull)
            .Property("flgReread", &E::flgReread, &E::SetFlgReread)
            .Property("viewEntity", &E::viewEntity, &E::SetviewEntity)
            .Property("LockUniDirectional", &E::LockUniDirectional, &E::SetLockUniDirectional)
            .Property("Precision", &E::Precision, &E::SetPrecision)
            .Property("Digits", &E::Digits, &E::SetDigits)
            .Property("SaveFindIni", &E::SaveFindIni, &E::SetSaveFindIni)
            .Property("SaveFilterIni", &E::SaveFilterIni, &E::SetSaveFilterIni)
            .Property("FindSensitive", &E::FindSensitive, &E::SetFindSensitive)
            .Enum("FindOption", &E::FindOption, &E::SetFindOption,
                  {"efoFullConCur", "efoFirstConCur", "efoSubConCur"})
            .Property("WherePhrase", &E::WherePhrase, &E::SetWherePhrase)
            .Property("FilterStr", &E::FilterStr, &E::SetFilterStr)
            .Enum("FindDown", &E::FindDown, &E::SetFindDown, {"dfNext", "dfPrior"})
            .Property("Ordering", &E::Ordering, &E::SetOrdering)
            .Property("OrderingDesc", &E::OrderingDesc, &E::SetOrderingDesc)
            .Property("StoredProcedures", &E::GetStroredProcedures, &E::SetStroredProcedures)
            .Event("OnCheckUpdate")
            .Build();
    return list;
}

void RegisterEntityClasses() {
    RegisterODBCClasses();
    RegisterClass<TUserEntity>("TUserEntity", UserEntityProperties());
}

namespace {

const bool kRegistered = [] {
    RegisterEntityClasses();
    return true;
}();

} // namespace

} // namespace quorda
