#include "quorda/grid/confirm.h"

#include <QMessageBox>
#include <utility>

namespace quorda::Dialogs {

namespace {

TConfirmHook& Hook() {
    static TConfirmHook hook;
    return hook;
}

} // namespace

bool Confirm(QWidget* Parent, const std::string& Question) {
    if (Hook()) {
        return Hook()(Parent, Question);
    }
    return QMessageBox::question(Parent, QString(), QString::fromStdString(Question),
                                 QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

TConfirmHook SetConfirmHook(TConfirmHook NewHook) {
    return std::exchange(Hook(), std::move(NewHook));
}

} // namespace quorda::Dialogs
