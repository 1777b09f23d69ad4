#include "quorda/entity/field_item.h"

#include "quorda/rtl/string_utils.h"

namespace quorda {

TFieldItem::TFieldItem(TEntity* AEntity, const std::string& Name, const std::string& ADisplayName,
                       const std::string& AViewTable, std::int32_t Width, bool View, bool Visible, bool Ident,
                       bool Sort, TFieldType FieldType, TSetExecType ExecSet)
    : FEntity(AEntity), FFactName(AnsiLowerCase(Name)), FSelectStr(Name), FDisplayName(ADisplayName),
      FViewTable(Trim(AViewTable)), FFlgView(View), FFlgVisible(Visible), FDspWidth(Width), FFlgSort(Sort),
      FFType(FieldType), FFindStr(NullValue), FFilterStr(NullValue), FValue(NullValue), FExecSet(ExecSet),
      FIdentRecord(Ident) {}

void TFieldItem::SetFactName(const std::string& Value) {
    FFactName = AnsiLowerCase(Value);
}

void TFieldItem::SetViewTable(const std::string& Value) {
    FViewTable = Trim(Value);
}

} // namespace quorda
