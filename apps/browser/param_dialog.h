#pragma once

#include <QDialog>
#include <vector>

class QLineEdit;

namespace quorda {
class TODBCParams;
}

namespace quorda::browser {

// Asks for the value of every :name parameter of a query, one line each; an empty line is NULL.
class ParamDialog : public QDialog {
public:
    ParamDialog(quorda::TODBCParams& Params, QWidget* Parent = nullptr);
    // Stores the typed values into the parameters.
    void Apply();

private:
    quorda::TODBCParams& FParams;
    std::vector<QLineEdit*> FEdits;
};

} // namespace quorda::browser
