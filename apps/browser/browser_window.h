#pragma once

#include "quorda/core/odbc_database.h"
#include "quorda/core/odbc_query.h"
#include "quorda/db/data_source.h"
#include "quorda/grid/ext_db_grid.h"
#include "quorda/grid/image_list.h"

#include <QMainWindow>
#include <QString>
#include <functional>
#include <memory>
#include <string>

class QComboBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace quorda::browser {

// Asks for the name of the file to write; an empty answer cancels.
using TFileNameHook = std::function<QString(QWidget* Parent, const QString& Title)>;

// The browser's main window: a connection line, an SQL editor, the results in a multi-select grid,
// the row count and timing in the status bar.
class BrowserWindow : public QMainWindow {
public:
    explicit BrowserWindow(QWidget* Parent = nullptr);
    ~BrowserWindow() override;

    // A data source name or a driver connection string (anything with '=' in it).
    void SetConnection(const std::string& Connection);
    void SetSql(const std::string& Sql);
    // Connects when needed and runs the editor's SQL; asks for parameters unless Ask is false.
    // Errors are shown (or, when Quiet, written to stderr); returns whether rows are shown.
    bool Run(bool Ask = true);
    bool Connect();
    TExtDBGrid& Grid() { return *FGrid; }
    // Errors go to stderr rather than a message box (scripted runs).
    void SetQuiet(bool Value) { FQuiet = Value; }
    // Writes the rows on show, or only the selected ones, to a text file asked for through the file
    // name hook. The file is replaced only when the whole export succeeded; returns whether it was.
    bool Export(bool SelectedOnly);
    // Replaces the file dialog of Export (empty restores it).
    void SetFileNameHook(TFileNameHook Hook) { FFileNameHook = std::move(Hook); }

private:
    void ShowError(const std::string& Title, const std::exception& E);
    // The grid layout of the query on show is kept in the settings file, under the query's text.
    void SaveLayout();
    void RestoreLayout();
    void UpdateSelectionStatus();
    QString AskFileName(const QString& Title);

    TODBCDatabase FDatabase{nullptr};
    TODBCQuery FQuery{nullptr};
    TDataSource FSource{nullptr};
    std::unique_ptr<TImageList> FIndicators;
    QComboBox* FConnection;
    QPlainTextEdit* FEditor;
    TExtDBGrid* FGrid;
    QLabel* FRowsLabel;
    QLabel* FSelectionLabel;
    QPushButton* FExportAll;
    QPushButton* FExportSelected;
    TFileNameHook FFileNameHook;
    std::string FConnected;
    // The SQL whose rows the grid shows (empty while none).
    QString FShownSql;
    bool FQuiet = false;
};

} // namespace quorda::browser
