#pragma once

#include "quorda/db/dataset.h"
#include "quorda/rtl/application.h"

#include <exception>

namespace quorda {

// Keeps a dataset's controls disabled for a scope (DisableControls), enabled again also when the
// scope raises. A control failing to repaint at the end is shown to the user
// (Application::HandleException), never thrown from the destructor.
class TControlsDisabled {
public:
    explicit TControlsDisabled(TDataSet& DataSet) : FDataSet(DataSet) { FDataSet.DisableControls(); }
    ~TControlsDisabled() {
        try {
            FDataSet.EnableControls();
        } catch (const std::exception& E) {
            Application::HandleException(E);
        }
    }
    TControlsDisabled(const TControlsDisabled&) = delete;
    TControlsDisabled& operator=(const TControlsDisabled&) = delete;

private:
    TDataSet& FDataSet;
};

} // namespace quorda
