// The browser's export: the whole result or the selected rows written to the text file format,
// through the file name hook, replacing the target only when the whole file was written.
#include "browser_window.h"
#include "rtl_test_support.h"

#include <QCoreApplication>
#include <QTest>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <quorda_test/profiles.h>
#include <quorda_test/raw_odbc.h>

namespace quorda::browser {
namespace {

namespace fs = std::filesystem;

using testing_support::ReadFile;

class BrowserExport : public ::testing::Test {
protected:
    BrowserExport() {
        // Layouts are remembered in a settings file of the test's own.
        qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(Folder.string()));
        QCoreApplication::setOrganizationName("QuordaTest");
        fs::create_directories(Folder);
        quorda_test::RawOdbc raw(Profile.ConnectionString);
        raw.Exec("create table people (id integer, name varchar(20), score float)");
        raw.Exec("insert into people values (1, 'O''Brien', 1.5), (2, 'a,b', null), (3, null, 2), "
                 "(4, 'D:\\data', 3.25)");
        Window.SetQuiet(true);
        Window.SetConnection(Profile.ConnectionString);
        Window.SetSql("select id, name, score from people order by id");
        Window.SetFileNameHook([this](QWidget*, const QString&) { return QString::fromStdString(Target); });
        Window.show();
        EXPECT_TRUE(Window.Run(false));
    }
    ~BrowserExport() override { fs::remove_all(Folder); }

    int Id() { return Window.Grid().DataSource()->DataSet()->FieldByName("id")->AsInteger(); }
    void Key(Qt::Key KeyCode, Qt::KeyboardModifiers Modifiers = Qt::NoModifier) {
        QTest::keyClick(&Window.Grid(), KeyCode, Modifiers);
    }
    // Selects rows 2 and 4, leaving row 4 current.
    void SelectTwoAndFour() {
        Key(Qt::Key_Down);
        Key(Qt::Key_Down, Qt::ControlModifier);
        Key(Qt::Key_Down, Qt::ControlModifier);
        Key(Qt::Key_Space, Qt::ControlModifier);
    }

    quorda_test::DataSourceProfile Profile = quorda_test::SqliteProfile();
    fs::path Folder = quorda_test::UniquePath("browser-export", "d");
    std::string Target = (Folder / "rows.txt").string();
    BrowserWindow Window;
};

TEST_F(BrowserExport, WritesTheWholeResultOrTheSelectedRowsAndAFailedOrCancelledExportLeavesNothing) {
    SelectTwoAndFour();
    std::ofstream(Target) << "an older export";
    ASSERT_TRUE(Window.Export(true));
    EXPECT_EQ(ReadFile(Target), "id,name,score\r\n2,'a,b',\r\n4,'D:\\\\data',3.25\r\n");
    EXPECT_EQ(Id(), 4);
    EXPECT_EQ(Window.Grid().SelectedRows().Count(), 2);

    ASSERT_TRUE(Window.Export(false));
    EXPECT_EQ(ReadFile(Target),
              "id,name,score\r\n1,'O''Brien',1.5\r\n2,'a,b',\r\n3,'',2\r\n4,'D:\\\\data',3.25\r\n");
    EXPECT_EQ(Id(), 4);
    EXPECT_EQ(std::distance(fs::directory_iterator(Folder), fs::directory_iterator()), 1);
    // A failed or cancelled export leaves the file, the folder and the current row as they were.
    std::ofstream(Target) << "kept";
    const struct {
        const char* Name;
        std::string FileName;
    } cases[] = {{"cancelled", ""},
                 {"missing folder", (Folder / "missing" / "rows.txt").string()},
                 {"target is a folder", (Folder / "sub").string()}};
    fs::create_directories(Folder / "sub");
    for (const auto& c : cases) {
        Window.SetFileNameHook([&](QWidget*, const QString&) { return QString::fromStdString(c.FileName); });
        EXPECT_FALSE(Window.Export(false)) << c.Name;
        EXPECT_EQ(Id(), 4) << c.Name;
    }
    EXPECT_EQ(ReadFile(Target), "kept");
    EXPECT_TRUE(fs::is_empty(Folder / "sub"));
    EXPECT_EQ(std::distance(fs::directory_iterator(Folder), fs::directory_iterator()), 2);
}

} // namespace
} // namespace quorda::browser
