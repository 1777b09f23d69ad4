#include "browser_window.h"

#include "param_dialog.h"
#include "quorda/core/session.h"
#include "quorda/db/controls_disabled.h"
#include "quorda/grid/field_save.h"
#include "quorda/odbc/odbc_error.h"
#include "quorda/rtl/replace_file.h"
#include "quorda/rtl/strings.h"
#include "quorda/tools/text_transfer.h"

#include <QComboBox>
#include <QCryptographicHash>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>
#include <chrono>
#include <iostream>

namespace quorda::browser {

BrowserWindow::BrowserWindow(QWidget* Parent) : QMainWindow(Parent) {
    setWindowTitle("Quorda Browser");
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);

    auto* connectionRow = new QHBoxLayout;
    connectionRow->addWidget(new QLabel("Connection:", central));
    FConnection = new QComboBox(central);
    FConnection->setObjectName("cbConnection");
    FConnection->setEditable(true);
    FConnection->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    try {
        TStringList names, drivers;
        ODBCSession()->GetDSNNames(&names, &drivers);
        for (int i = 0; i < names.Count(); ++i) {
            FConnection->addItem(QString::fromStdString(names.Get(i)));
        }
    } catch (const std::exception&) {
        // No data sources listed: a connection string can still be typed.
    }
    connectionRow->addWidget(FConnection);
    auto* connectButton = new QPushButton("Connect", central);
    connectButton->setObjectName("btnConnect");
    connectionRow->addWidget(connectButton);
    layout->addLayout(connectionRow);

    auto* splitter = new QSplitter(Qt::Vertical, central);
    FEditor = new QPlainTextEdit(splitter);
    FEditor->setObjectName("SqlEditor");
    FEditor->setPlaceholderText("select ... where name = :name");
    FGrid = new TExtDBGrid(splitter);
    FGrid->setObjectName("ResultGrid");
    TDBGridOptions options = FGrid->Options();
    options.insert(dgMultiSelect);
    FGrid->SetOptions(options);
    FIndicators = TImageList::CreateIndicatorImages();
    FGrid->SetIndicators(FIndicators.get());
    FGrid->SetDataSource(&FSource);
    FSource.SetDataSet(&FQuery);
    splitter->addWidget(FEditor);
    splitter->addWidget(FGrid);
    splitter->setStretchFactor(1, 3);
    layout->addWidget(splitter);

    auto* runButton = new QPushButton("Run", central);
    runButton->setObjectName("btnRun");
    runButton->setToolTip("Run the SQL (F5)");
    connectionRow->addWidget(runButton);
    FExportAll = new QPushButton("Export all...", central);
    FExportAll->setObjectName("btnExportAll");
    FExportAll->setToolTip("Write every row of the result to a text file");
    FExportSelected = new QPushButton("Export selected...", central);
    FExportSelected->setObjectName("btnExportSelected");
    FExportSelected->setToolTip("Write the selected rows to a text file");
    connectionRow->addWidget(FExportAll);
    connectionRow->addWidget(FExportSelected);
    setCentralWidget(central);

    FRowsLabel = new QLabel(this);
    FSelectionLabel = new QLabel(this);
    statusBar()->addWidget(FRowsLabel, 1);
    statusBar()->addPermanentWidget(FSelectionLabel);

    connect(connectButton, &QPushButton::clicked, this, [this] { Connect(); });
    connect(runButton, &QPushButton::clicked, this, [this] { Run(); });
    connect(FExportAll, &QPushButton::clicked, this, [this] { Export(false); });
    connect(FExportSelected, &QPushButton::clicked, this, [this] { Export(true); });
    auto* shortcut = new QShortcut(QKeySequence(Qt::Key_F5), this);
    connect(shortcut, &QShortcut::activated, this, [this] { Run(); });
    FGrid->OnSelectionChange = [this](TObject*) { UpdateSelectionStatus(); };
    UpdateSelectionStatus();
    resize(820, 560);
}

BrowserWindow::~BrowserWindow() {
    SaveLayout();
    FGrid->SetDataSource(nullptr);
    FQuery.Close();
}

void BrowserWindow::SetConnection(const std::string& Connection) {
    FConnection->setCurrentText(QString::fromStdString(Connection));
}

void BrowserWindow::SetSql(const std::string& Sql) {
    FEditor->setPlainText(QString::fromStdString(Sql));
}

void BrowserWindow::ShowError(const std::string& Title, const std::exception& E) {
    std::string text = E.what();
    if (const auto* odbc = dynamic_cast<const EODBCError*>(&E)) {
        text +=
            "\n\nSQLSTATE: " + odbc->SQLState() + "\nNative error: " + std::to_string(odbc->NativeError());
    }
    FRowsLabel->setText(QString::fromStdString(Title));
    if (FQuiet) {
        std::cerr << Title << ": " << text << '\n';
    } else {
        QMessageBox::critical(this, QString::fromStdString(Title), QString::fromStdString(text));
    }
}

bool BrowserWindow::Connect() {
    const std::string connection = FConnection->currentText().trimmed().toStdString();
    if (FDatabase.Connected() && connection == FConnected) {
        return true;
    }
    try {
        FQuery.Close();
        FDatabase.Close();
        // A bare name is a data source; anything with '=' is a driver connection string.
        const bool dataSource = connection.find('=') == std::string::npos;
        FDatabase.SetConnectStr(dataSource ? "DSN=" + connection : connection);
        // The driver's own dialog completes what the string leaves open, where the driver has one.
        FDatabase.SetDriverConnectOption(FQuiet ? dcoDriverNoPrompt : dcoDriverComplete);
        FDatabase.SetAutoCommitOption(acoAutoCommit);
        FDatabase.Open();
        FQuery.SetODBCDatabase(&FDatabase);
        FConnected = connection;
        FRowsLabel->setText("Connected");
        return true;
    } catch (const std::exception& e) {
        ShowError("Connection failed", e);
        return false;
    }
}

bool BrowserWindow::Run(bool Ask) {
    if (!Connect()) {
        return false;
    }
    try {
        SaveLayout();
        FQuery.Close();
        FShownSql.clear();
        UpdateSelectionStatus();
        FQuery.SQL().SetText(FEditor->toPlainText().toStdString());
        if (FQuery.Params().Count() > 0 && Ask) {
            ParamDialog dialog(FQuery.Params(), this);
            if (dialog.exec() != QDialog::Accepted) {
                return false;
            }
            dialog.Apply();
        }
        const auto start = std::chrono::steady_clock::now();
        FQuery.Open();
        const auto elapsed =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
        FShownSql = FEditor->toPlainText();
        RestoreLayout();
        FRowsLabel->setText(QString("%1 rows in %2 ms").arg(FQuery.RecordCount()).arg(elapsed.count()));
        FGrid->setFocus();
        UpdateSelectionStatus();
        return true;
    } catch (const std::exception& e) {
        ShowError("Query failed", e);
        return false;
    }
}

namespace {

// The export walks the dataset behind the grid's back: data events are held, and afterwards the
// dataset returns to the row it stood on, however the export ended.
class TControlsHeld {
public:
    explicit TControlsHeld(TDataSet& DataSet)
        : FDataSet(DataSet), FCurrent(DataSet.GetBookmark()), FDisabled(DataSet) {}
    ~TControlsHeld() {
        try {
            FDataSet.GotoBookmark(FCurrent);
        } catch (const std::exception&) {
            // The row cannot be reached again (the connection is gone): the grid shows where the
            // dataset stands, and the export's own error is what the user sees.
        }
    }
    TControlsHeld(const TControlsHeld&) = delete;
    TControlsHeld& operator=(const TControlsHeld&) = delete;

private:
    TDataSet& FDataSet;
    TBookmark FCurrent;
    // Enabled again after the return to the row (members go after the destructor's body).
    TControlsDisabled FDisabled;
};

QString LayoutKey(const QString& Sql) {
    const QByteArray hash = QCryptographicHash::hash(Sql.trimmed().toUtf8(), QCryptographicHash::Sha1);
    return "layouts/" + QString::fromLatin1(hash.toHex());
}

} // namespace

void BrowserWindow::SaveLayout() {
    if (FShownSql.isEmpty() || !FQuery.Active()) {
        return;
    }
    TFieldSave save;
    save.GetInfoGrid(*FGrid);
    QStringList entries;
    for (int i = 0; i < save.FieldCount(); ++i) {
        entries << QString::fromStdString(save.Fields(i)->FieldName) + "|" +
                       QString::number(save.Fields(i)->Width);
    }
    QSettings().setValue(LayoutKey(FShownSql), entries);
}

void BrowserWindow::RestoreLayout() {
    const QStringList entries = QSettings().value(LayoutKey(FShownSql)).toStringList();
    if (entries.isEmpty()) {
        return;
    }
    TFieldSave save;
    for (int i = 0; i < entries.size(); ++i) {
        const QStringList parts = entries[i].split('|');
        if (parts.size() == 2) {
            save.Add(parts[0].toStdString(), std::string(), i, parts[1].toInt());
        }
    }
    save.SetInfoGrid(*FGrid);
}

void BrowserWindow::UpdateSelectionStatus() {
    const int count = FQuery.Active() ? FGrid->SelectedRows().Count() : 0;
    FSelectionLabel->setText(count > 0 ? QString("%1 selected").arg(count) : QString());
    FExportAll->setEnabled(FQuery.Active());
    FExportSelected->setEnabled(count > 0);
}

QString BrowserWindow::AskFileName(const QString& Title) {
    if (FFileNameHook) {
        return FFileNameHook(this, Title);
    }
    return QFileDialog::getSaveFileName(this, Title, QString(), "Text files (*.txt);;All files (*)");
}

bool BrowserWindow::Export(bool SelectedOnly) {
    if (!FQuery.Active() || (SelectedOnly && FGrid->SelectedRows().Count() == 0)) {
        return false;
    }
    const QString fileName = AskFileName(SelectedOnly ? "Export selected rows" : "Export all rows");
    if (fileName.isEmpty()) {
        return false;
    }
    std::int64_t rows = 0;
    const TTransferProgress count = [&rows](std::int64_t Rows) { rows = Rows; };
    try {
        const TControlsHeld held(FQuery);
        ReplaceFile(fileName.toStdString(), [&](const std::string& TempName) {
            if (SelectedOnly) {
                const TBookmarkList& selected = FGrid->SelectedRows();
                ExportBookmarks(&FQuery, {selected.begin(), selected.end()}, TempName, count);
            } else {
                FQuery.First();
                ExportDataSet(&FQuery, TempName, count);
            }
        });
    } catch (const std::exception& e) {
        ShowError("Export failed", e);
        return false;
    }
    FRowsLabel->setText(QString("%1 rows exported to %2").arg(rows).arg(fileName));
    return true;
}

} // namespace quorda::browser
