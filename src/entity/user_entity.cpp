// The design-time entity: its procedure names as one text and its field list in the component stream.
#include "quorda/entity/user_entity.h"

#include "quorda/rtl/filer.h"

#include <memory>
#include <vector>

namespace quorda {

namespace {

constexpr char kProcedureEnd = ';';

void WriteMembership(TWriter& Writer, TSetExecType Set, TExecType Command) {
    Writer.WriteString(Set.Contains(Command) ? "Y" : "N");
}

// Only "Y" itself takes the field into the command.
void ReadMembership(TReader& Reader, TSetExecType& Set, TExecType Command) {
    if (Reader.ReadString() == "Y") {
        Set.Include(Command);
    }
}

TFieldType ReadFieldType(TReader& Reader) {
    const std::int32_t Ordinal = Reader.ReadInteger();
    // An ordinal no field type has would make every later use of the type undefined.
    if (Ordinal < ftUnknown || Ordinal > ftWideMemo) {
        throw EReadError(SInvalidPropertyValue);
    }
    return static_cast<TFieldType>(Ordinal);
}

} // namespace

TUserEntity::TUserEntity(TComponent* AOwner) : TEntity(AOwner) {}

bool TUserEntity::CheckUpdate() {
    bool Update = false;
    if (OnCheckUpdate) {
        OnCheckUpdate(this, Update);
    }
    return Update;
}

std::string TUserEntity::GetStroredProcedures() const {
    std::string Text;
    for (int Command = fetSelect; Command <= fetClose; ++Command) {
        Text += GetSP(static_cast<TExecType>(Command)) + kProcedureEnd;
    }
    return Text;
}

void TUserEntity::SetStroredProcedures(const std::string& Text) {
    for (int Command = fetSelect; Command <= fetClose; ++Command) {
        SetSP(static_cast<TExecType>(Command), {});
    }
    int Command = fetSelect;
    std::string Name;
    for (const char C : Text) {
        if (C != kProcedureEnd) {
            Name += C;
            continue;
        }
        SetSP(static_cast<TExecType>(Command), Name);
        Name.clear();
        if (++Command > fetClose) {
            break;
        }
    }
}

void TUserEntity::DefineProperties(TFiler* Filer) {
    TEntity::DefineProperties(Filer);
    Filer->DefineProperty(
        "Fields", [this](TReader& Reader) { ReadData(Reader); },
        [this](TWriter& Writer) { WriteData(Writer); }, FieldCount() >= 0);
}

void TUserEntity::WriteData(TWriter& Writer) const {
    Writer.WriteListBegin();
    for (int I = 0; I < FieldCount(); ++I) {
        const TFieldItem& Field = *GetFields(I);
        Writer.WriteString(Field.FactName());
        Writer.WriteString(Field.SelectStr());
        Writer.WriteString(Field.DisplayName());
        Writer.WriteString(Field.viewTable());
        Writer.WriteBoolean(Field.flgView());
        Writer.WriteBoolean(Field.flgVisible());
        Writer.WriteBoolean(Field.flgSort());
        Writer.WriteBoolean(Field.IdentRecord());
        Writer.WriteBoolean(Field.IsBookMark());
        Writer.WriteInteger(Field.dspWidth());
        Writer.WriteInteger(Field.fType());
        for (int Command = fetSelect; Command <= fetClose; ++Command) {
            WriteMembership(Writer, Field.ExecSet(), static_cast<TExecType>(Command));
        }
        Writer.WriteString(Field.FactQuote());
        Writer.WriteString(Field.SelectQuote());
    }
    Writer.WriteListEnd();
}

void TUserEntity::ReadData(TReader& Reader) {
    // Read whole before the present fields go: a stream that breaks off leaves them as they were.
    std::vector<std::unique_ptr<TFieldItem>> Read;
    Reader.ReadListBegin();
    while (!Reader.EndOfList()) {
        auto Field = std::make_unique<TFieldItem>(this, "", "", "", 10, false, false, false, false, ftString,
                                                  TSetExecType{});
        Field->FFactName = Reader.ReadString();
        Field->FSelectStr = Reader.ReadString();
        Field->FDisplayName = Reader.ReadString();
        Field->SetViewTable(Reader.ReadString());
        Field->FFlgView = Reader.ReadBoolean();
        Field->FFlgVisible = Reader.ReadBoolean();
        Field->FFlgSort = Reader.ReadBoolean();
        Field->FIdentRecord = Reader.ReadBoolean();
        Field->FIsBookMark = Reader.ReadBoolean();
        Field->FDspWidth = Reader.ReadInteger();
        Field->FFType = ReadFieldType(Reader);
        for (int Command = fetSelect; Command <= fetClose; ++Command) {
            ReadMembership(Reader, Field->FExecSet, static_cast<TExecType>(Command));
        }
        Field->FFactQuote = Reader.ReadString();
        Field->FSelectQuote = Reader.ReadString();
        Read.push_back(std::move(Field));
    }
    Reader.ReadListEnd();
    ReplaceFields(std::move(Read));
}

} // namespace quorda
