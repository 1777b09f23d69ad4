// Per-user settings of an entity: the find options and each field's last find and filter values, in
// the section viewFull of the settings file EntityINIFileName.
#include "quorda/entity/entity.h"
#include "quorda/rtl/reg_ini_file.h"

namespace quorda {

namespace {

constexpr char kFindSensitive[] = "FindSensitive";
constexpr char kFindOption[] = "FindOption";
constexpr char kFindDown[] = "FindDown";

// The settings text of a find or filter value; false for values that are not kept (Null, empty
// strings, anything neither a string, a number nor a date). The absent marker a missing filter key
// leaves in a field is not kept either: read back, a missing key gives the same marker.
bool SettingText(const Variant& Value, std::string& Text) {
    if (VarIsStr(Value)) {
        Text = Value.AsString();
        return !Text.empty() && Text != EntityAbsentMarker;
    }
    if (Value.VarType() == varDate) {
        Text = DateTimeToStr(Value.AsDateTime());
        return true;
    }
    if (VarIsNumeric(Value)) {
        Text = VarToStr(Value);
        return true;
    }
    return false;
}

bool IsAbsentMarker(const Variant& Value) {
    return VarIsStr(Value) && Value.AsString() == EntityAbsentMarker;
}

// An ordinal read back from the settings; values no enumerator has give the default.
template <typename TEnum>
TEnum ReadOrdinal(const TRegIniFile& Ini, const std::string& Section, const char* Ident, TEnum Default,
                  TEnum Last) {
    const std::int32_t Value = Ini.ReadInteger(Section, Ident, Default);
    return Value >= 0 && Value <= Last ? static_cast<TEnum>(Value) : Default;
}

} // namespace

void TEntity::ReadFromINI() {
    if (FViewFull.empty()) {
        return;
    }
    const TRegIniFile Ini(EntityINIFileName);
    FFindSensitive = Ini.ReadBool(FViewFull, kFindSensitive, false);
    FFindOption = ReadOrdinal(Ini, FViewFull, kFindOption, efoFirstConCur, efoSubConCur);
    FFindDown = ReadOrdinal(Ini, FViewFull, kFindDown, dfNext, dfPrior);
}

void TEntity::WriteToINI() {
    if (FViewFull.empty()) {
        return;
    }
    TRegIniFile Ini(EntityINIFileName);
    WriteToINI(Ini);
}

void TEntity::WriteToINI(TRegIniFile& Ini) {
    Ini.WriteBool(FViewFull, kFindSensitive, FFindSensitive);
    Ini.WriteInteger(FViewFull, kFindOption, FFindOption);
    Ini.WriteInteger(FViewFull, kFindDown, FFindDown);
}

void TEntity::ReadFromINIField(TFieldItem* Field, const std::string& Name) {
    if (FViewFull.empty()) {
        return;
    }
    TRegIniFile Ini(EntityINIFileName);
    ReadFromINIField(Ini, Field, Name);
}

void TEntity::ReadFromINIField(TRegIniFile& Ini, TFieldItem* Field, const std::string& Name) {
    if (FSaveFindIni) {
        Field->SetFindStr(Ini.ReadString(FViewFull, Name + "-find", EntityAbsentMarker));
        if (IsAbsentMarker(Field->findStr())) {
            Field->SetFindStr(NullValue);
        }
    }
    if (FSaveFilterIni) {
        Field->SetFilterStr(Ini.ReadString(FViewFull, Name + "-filter", EntityAbsentMarker));
        // Tests the find value, not the filter value: a missing filter key keeps the marker.
        if (IsAbsentMarker(Field->findStr())) {
            Field->SetFilterStr(NullValue);
        }
    }
}

void TEntity::WriteToINIField(TFieldItem* Field, const std::string& Name) {
    if (FViewFull.empty()) {
        return;
    }
    TRegIniFile Ini(EntityINIFileName);
    WriteToINIField(Ini, Field, Name);
}

void TEntity::WriteToINIField(TRegIniFile& Ini, TFieldItem* Field, const std::string& Name) {
    std::string Text;
    if (FSaveFindIni && SettingText(Field->findStr(), Text)) {
        Ini.WriteString(FViewFull, Name + "-find", Text);
    }
    if (FSaveFilterIni && SettingText(Field->filterStr(), Text)) {
        Ini.WriteString(FViewFull, Name + "-filter", Text);
    }
}

void TEntity::SaveSettings() {
    if (FViewFull.empty()) {
        WriteToINI();
        return;
    }
    // One replacement of the file: the erased section never shows without its new values, and a
    // failed write leaves the previous settings whole.
    TRegIniFile Ini(EntityINIFileName);
    Ini.BeginUpdate();
    Ini.EraseSection(FViewFull);
    for (int I = 0; I < FieldCount(); ++I) {
        TFieldItem* Field = GetFields(I);
        WriteToINIField(Ini, Field, Field->FactName());
    }
    WriteToINI(Ini);
    Ini.EndUpdate();
}

} // namespace quorda
