// One Qt application for the whole test run.
#include <QApplication>
#include <gtest/gtest.h>
#include <memory>

namespace {

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override { FApp = std::make_unique<QApplication>(FArgc, FArgv); }
    void TearDown() override { FApp.reset(); }

private:
    int FArgc = 1;
    char FName[16] = "quorda_grid";
    char* FArgv[2] = {FName, nullptr};
    std::unique_ptr<QApplication> FApp;
};

[[maybe_unused]] ::testing::Environment* const kQtEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

} // namespace
