#pragma once

#include "quorda/rtl/object.h"
#include "quorda/rtl/strings.h"

#include <cstdint>
#include <string>

namespace quorda {

class TExtCustomDBGrid;

// The saved layout of one grid column.
class QUORDA_API TFieldSaveItem : public TObject {
public:
    TFieldSaveItem(std::string AFieldName, std::string ACaption, std::int32_t AIndex, std::int32_t AWidth)
        : FieldName(std::move(AFieldName)), Caption(std::move(ACaption)), Index(AIndex), Width(AWidth) {}

    std::string FieldName;
    std::string Caption;
    std::int32_t Index;
    std::int32_t Width;
};

// The column layout of a grid, kept in memory: one item per field name, in the saved column order.
// Names are matched without regard to case. Keeping the object between runs is up to the application.
class QUORDA_API TFieldSave {
public:
    TFieldSave();
    ~TFieldSave();
    TFieldSave(const TFieldSave&) = delete;
    TFieldSave& operator=(const TFieldSave&) = delete;

    // Null when there is no item for Name.
    TFieldSaveItem* FieldByName(const std::string& Name) const;
    TFieldSaveItem* Fields(int Index) const { return GetFields(Index); }
    TFieldSaveItem* GetFields(int Index) const;
    int FieldCount() const { return GetFieldCount(); }
    int GetFieldCount() const { return FList.Count(); }
    void Clear();
    // Appends an item (or updates the one of that name in place): for layouts kept elsewhere between
    // runs and read back.
    TFieldSaveItem* Add(const std::string& FieldName, const std::string& Caption, std::int32_t Index,
                        std::int32_t Width);

    // Captures the grid's columns: their items are updated or added, and stand in the grid's order
    // ahead of items of columns the grid no longer shows.
    void GetInfoGrid(TExtCustomDBGrid& Grid);
    // Lays the grid's columns out again: saved widths, and saved columns in the saved order in front of
    // columns without a saved entry.
    void SetInfoGrid(TExtCustomDBGrid& Grid);

private:
    TStringList FList{true};
};

} // namespace quorda
