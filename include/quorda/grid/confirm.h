#pragma once

#include "quorda/export.h"

#include <functional>
#include <string>

class QWidget;

namespace quorda {

// The questions the grid asks before deleting.
inline constexpr const char* SDeleteRecordQuestion = "Delete record?";
inline constexpr const char* SDeleteMultipleRecordsQuestion = "Delete all selected records?";

// Answers a yes/no question; true means yes. Parent may be null.
using TConfirmHook = std::function<bool(QWidget* Parent, const std::string& Question)>;

namespace Dialogs {

// Asks through the installed hook, by default a modal message box.
QUORDA_API bool Confirm(QWidget* Parent, const std::string& Question);
// Installs Hook (empty restores the message box) and returns the previous one.
QUORDA_API TConfirmHook SetConfirmHook(TConfirmHook Hook);

} // namespace Dialogs

} // namespace quorda
