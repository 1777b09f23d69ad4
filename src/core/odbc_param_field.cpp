// The parameter's exchange with the dataset framework's fields.
#include "quorda/core/odbc_params.h"
#include "quorda/db/field.h"

namespace quorda {

void TODBCParam::Assign(const TPersistent* Source) {
    if (const auto* param = dynamic_cast<const TODBCParam*>(Source)) {
        AssignParam(param);
    } else if (const auto* field = dynamic_cast<const TField*>(Source)) {
        AssignField(field);
    } else {
        TPersistent::Assign(Source);
    }
}

void TODBCParam::AssignTo(TPersistent* Dest) const {
    if (auto* field = dynamic_cast<TField*>(Dest)) {
        // A null parameter still holds integer 0; handing that over would turn NULL into 0.
        if (FNull) {
            field->Clear();
        } else {
            field->SetValue(FValue);
        }
    } else {
        TPersistent::AssignTo(Dest);
    }
}

void TODBCParam::AssignFieldValue(const TField* Field, const Variant& Value) {
    if (!Field) {
        return;
    }
    // Long memos travel as plain strings.
    SetDataType(Field->DataType() == ftMemo && Field->Size() > 255 ? ftString : Field->DataType());
    if (Value.IsNull()) {
        Clear();
    } else {
        InitValue();
        FValue = Value;
    }
    FBound = true;
}

void TODBCParam::AssignField(const TField* Field) {
    if (!Field) {
        return;
    }
    AssignFieldValue(Field, Field->IsNull() ? Variant::Null() : Field->AsVariant());
    FName = Field->FieldName();
}

} // namespace quorda
