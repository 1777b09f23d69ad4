#pragma once

#include <set>

namespace quorda {

// What a data grid lets the user do and how it looks.
enum TDBGridOption {
    dgEditing,
    dgAlwaysShowEditor,
    dgTitles,
    dgIndicator,
    dgColumnResize,
    dgColLines,
    dgRowLines,
    dgTabs,
    dgRowSelect,
    dgAlwaysShowSelection,
    dgConfirmDelete,
    dgCancelOnExit,
    dgMultiSelect,
};
using TDBGridOptions = std::set<TDBGridOption>;

inline const TDBGridOptions DefaultDBGridOptions{dgEditing,      dgTitles,        dgIndicator,
                                                 dgColumnResize, dgColLines,      dgRowLines,
                                                 dgTabs,         dgConfirmDelete, dgCancelOnExit};

// The state a cell is drawn in.
enum TGridDrawStateItem { gdSelected, gdFocused, gdFixed };
using TGridDrawState = std::set<TGridDrawStateItem>;

// What the grid is doing with the mouse.
enum TGridState { gsNormal, gsColSizing, gsColMoving };

} // namespace quorda
