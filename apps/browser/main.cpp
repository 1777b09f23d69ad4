// Quorda Browser: connect to a data source, run SQL with :name parameters, browse and select the rows.
//
//   quorda_browser [--connect <string> | --dsn <name> | --database <sqlite file>] [--sql <text>]
//                  [--screenshot <png> [--shift-down <n>] [--export-selected <file>]]
//
// Without a connection the embedded SQLite demo database is opened (and created when missing).
// --screenshot runs the SQL, moves one row down and extends the selection with Shift+Down n times,
// exports the selected rows when asked to, saves the window as a PNG and quits.

#include "browser_window.h"
#include "demo_schema.h"
#include "quorda/rtl/application.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QTimer>
#include <iostream>
#include <string>

#ifndef QUORDA_DEMO_DATABASE
#define QUORDA_DEMO_DATABASE "quorda-demo.db"
#endif

namespace {

using namespace quorda;

struct Options {
    std::string Connection;
    std::string Database = QUORDA_DEMO_DATABASE;
    std::string Sql =
        "select l.order_id, l.line_no, c.name as customer, p.name as product, l.quantity, l.unit_price\n"
        "from order_lines l join orders o on o.id = l.order_id\n"
        "join customers c on c.id = o.customer_id join products p on p.id = l.product_id\n"
        "order by l.order_id, l.line_no";
    std::string Screenshot;
    int ShiftDown = 3;
    std::string ExportSelected;
};

// Creates the demo tables in a new SQLite demo database.
bool PrepareDemoDatabase(const std::string& File) {
    try {
        TODBCDatabase db(nullptr);
        db.SetDriverConnectOption(dcoDriverNoPrompt);
        db.SetConnectStr("Driver=SQLite3;Database=" + File);
        db.Open();
        if (!demo::SchemaExists(db)) {
            demo::CreateSchema(db);
        }
        return true;
    } catch (const std::exception& e) {
        std::cerr << "quorda_browser: cannot prepare the demo database " << File << ": " << e.what() << '\n';
        return false;
    }
}

void Press(QWidget& Target, int Key, Qt::KeyboardModifiers Modifiers = Qt::NoModifier) {
    QKeyEvent press(QEvent::KeyPress, Key, Modifiers);
    QApplication::sendEvent(&Target, &press);
    QKeyEvent release(QEvent::KeyRelease, Key, Modifiers);
    QApplication::sendEvent(&Target, &release);
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Quorda");
    QApplication::setApplicationName("Quorda Browser");
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc) {
                std::cerr << "quorda_browser: " << arg << " needs a value\n";
                std::exit(2);
            }
            return argv[++i];
        };
        if (arg == "--connect") {
            options.Connection = value();
        } else if (arg == "--dsn") {
            options.Connection = value();
        } else if (arg == "--database") {
            options.Database = value();
        } else if (arg == "--sql") {
            options.Sql = value();
        } else if (arg == "--screenshot") {
            options.Screenshot = value();
        } else if (arg == "--shift-down") {
            options.ShiftDown = std::stoi(value());
        } else if (arg == "--export-selected") {
            options.ExportSelected = value();
        } else {
            std::cerr << "usage: quorda_browser [--connect <string> | --dsn <name> | --database <file>] "
                         "[--sql <text>]"
                         " [--screenshot <png> [--shift-down <n>] [--export-selected <file>]]\n";
            return 2;
        }
    }
    if (options.Connection.empty()) {
        if (!PrepareDemoDatabase(options.Database)) {
            return 1;
        }
        options.Connection = "Driver=SQLite3;Database=" + options.Database;
    }

    browser::BrowserWindow window;
    if (options.Screenshot.empty()) {
        // Errors of grid actions (posting, deleting) are shown; a scripted run writes them to stderr.
        Application::SetExceptionHandler([&window](const std::exception& E) {
            QMessageBox::critical(&window, "Quorda Browser", QString::fromStdString(E.what()));
        });
    }
    window.SetConnection(options.Connection);
    window.SetSql(options.Sql);
    window.SetQuiet(!options.Screenshot.empty());
    window.show();
    if (options.Screenshot.empty()) {
        QTimer::singleShot(0, &window, [&window] { window.Run(); });
        return app.exec();
    }
    int result = 1;
    // Give the window manager (if any) a moment to map and activate the window.
    QTimer::singleShot(300, &window, [&] {
        if (window.Run(false)) {
            TExtDBGrid& grid = window.Grid();
            window.activateWindow();
            grid.setFocus();
            QApplication::processEvents();
            Press(grid, Qt::Key_Down);
            for (int i = 0; i < options.ShiftDown; ++i) {
                Press(grid, Qt::Key_Down, Qt::ShiftModifier);
            }
            if (!options.ExportSelected.empty()) {
                window.SetFileNameHook(
                    [&](QWidget*, const QString&) { return QString::fromStdString(options.ExportSelected); });
                if (!window.Export(true)) {
                    app.quit();
                    return;
                }
            }
            QApplication::processEvents();
            if (window.grab().save(QString::fromStdString(options.Screenshot))) {
                std::cout << "selected " << grid.SelectedRows().Count() << " rows; saved "
                          << options.Screenshot << '\n';
                result = 0;
            } else {
                std::cerr << "quorda_browser: cannot write " << options.Screenshot << '\n';
            }
        }
        app.quit();
    });
    app.exec();
    return result;
}
