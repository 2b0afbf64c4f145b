// Drivers whose names are not plain ASCII.

#include <QComboBox>
#include <QTest>
#include <fstream>
#include <gtest/gtest.h>

#include "config/settings/settings_file.h"
#include "language/language_table.h"
#include "platform/paths.h"
#include "tests/support/temporary_folder.h"
#include "ui/main_form.h"

namespace tarno2::test {
namespace {

TEST(DriverName, OfAnyLettersCanBeChosen) {
    if (kPathSeparator != '/') {
        GTEST_SKIP() << "registry folders of the environment are there on POSIX alone";
    }
    const TemporaryFolder folder;
    std::ofstream(folder.file("drivers.reg"))
        << "Windows Registry Editor Version 5.00\n\n"
           "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Lines LTD\\Drivers\\1.0\\Absent]\n\"path\"=\"absent.so\"\n\n"
           "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Lines LTD\\Drivers\\1.0\\Плата №1]\n\"path\"=\""
        << TARNO2_BIN << "/simulator.so\"\n";
    const ScopedEnvironment registry("TARNO2_REGISTRY", folder.path());
    languageTable().select(kLanguageEnglish);
    ProgramSettings settings;
    settings.wish.driver = "Absent";
    ASSERT_TRUE(WriteConfig(folder.path(), settings));
    T_MainForm form(folder.path(), std::nullopt);
    form.present();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    auto* drivers = form.findChild<QComboBox*>("DriverBox");
    ASSERT_NE(drivers, nullptr);
    QTest::keyClick(drivers, Qt::Key_Down);
    EXPECT_EQ(drivers->currentText(), QString::fromUtf8("Плата №1"));
    EXPECT_GT(form.findChild<QComboBox*>("BaseBox")->count(), 1) << "the boards of the simulator";
    form.close();
}

}  // namespace
}  // namespace tarno2::test
