#include "param_dialog.h"

#include "quorda/core/odbc_params.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>

namespace quorda::browser {

ParamDialog::ParamDialog(TODBCParams& Params, QWidget* Parent) : QDialog(Parent), FParams(Params) {
    setObjectName("ParamDialog");
    setWindowTitle("Parameters");
    auto* layout = new QFormLayout(this);
    for (int i = 0; i < Params.Count(); ++i) {
        auto* edit = new QLineEdit(QString::fromStdString(Params[i]->AsString()), this);
        edit->setObjectName("Param_" + QString::fromStdString(Params[i]->Name()));
        layout->addRow(QString::fromStdString(Params[i]->Name()), edit);
        FEdits.push_back(edit);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    layout->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void ParamDialog::Apply() {
    for (int i = 0; i < FParams.Count(); ++i) {
        const QString text = FEdits[static_cast<std::size_t>(i)]->text();
        if (text.isEmpty()) {
            FParams[i]->Clear();
        } else {
            FParams[i]->SetValue(Variant(text.toStdString()));
        }
    }
}

} // namespace quorda::browser
