#include "tests/ui/main_window.h"

#include <algorithm>
#include <sstream>

#include "config/logs/debug_log.h"
#include "config/settings/settings_file.h"
#include "platform/file.h"

namespace tarno2::test {

namespace {

constexpr int kGuardMs = 30000;

}  // namespace

MainWindow::MainWindow() {
    wanted_.wish.driver = "Simulator";
    wanted_.wish.base = 1;
    wanted_.checkDiskSpeed = false;
    wanted_.wish.fileName = folder_.file("data/run.dat");
    wanted_.channels[0].active = wanted_.channels[1].active = true;
    wanted_.mainFormPos = {0, 0, 1000, 700};
    wanted_.showFormPos = {0, 0, 0, 0};
}

MainWindow::~MainWindow() {
    form_.reset();
    debugLog().close();
    languageTable().select(kLanguageEnglish);
}

void MainWindow::open() {
    languageTable().select(wanted_.language == InterfaceLanguage::Russian ? kLanguageRussian : kLanguageEnglish);
    ASSERT_TRUE(WriteConfig(folder_.path(), wanted_));
    const std::string settings = readFile(folder_.file("Tarno2.cfg"));
    folder_.write("Tarno2.cfg", settings + "DebugMode = 1\r\n");
    openAgain();
}

void MainWindow::openAgain() {
    form_ = std::make_unique<T_MainForm>(folder_.path(), std::nullopt);
    form_->present();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form_.get()));
    ASSERT_TRUE(QTest::qWaitFor([this] { return !form_->looksForBoard(); }, kGuardMs));
}

bool MainWindow::close() {
    if (!form_->close()) {
        return false;
    }
    form_.reset();
    debugLog().close();
    return true;
}

void MainWindow::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    // Without a window manager nobody gives the window its keys back after a dialog.
    if (!form_->isActiveWindow()) {
        form_->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(form_.get()));
    }
    QTest::keyClick(form_.get(), key, modifiers);
}

void MainWindow::openPanel(int number) {
    click(("PanelHeader" + std::to_string(number)).c_str());
}

void MainWindow::answer(TextId button) {
    inDialog<QMessageBox>(*form_, [this, text = uiText(button)](QMessageBox& box) {
        asked_ << box.text();
        for (QAbstractButton* offered : box.buttons()) {
            if (offered->text() == text) {
                return QTest::mouseClick(offered, Qt::LeftButton);
            }
        }
        ADD_FAILURE() << "no such button: " << text.toStdString();
        box.reject();
    });
}

QString MainWindow::stateWord() {
    return find<QLabel>("StateLabel")->text().mid(2);
}

bool MainWindow::waitForState(TextId word, int milliseconds) {
    return QTest::qWaitFor([&] { return stateWord() == plainText(word); }, milliseconds);
}

bool MainWindow::waitForBytes(uint64_t bytes) {
    return QTest::qWaitFor(
        [&] {
            T_BOARD* session = form_->control().session();
            return session != nullptr && session->writer().totalBytes() >= bytes;
        },
        kGuardMs);
}

void MainWindow::record() {
    press(Qt::Key_F5);
    ASSERT_TRUE(waitForState(TextId::StatusRecording)) << attention().toStdString();
    ASSERT_TRUE(waitForBytes(1));
}

QString MainWindow::attention() {
    auto* label = find<QLabel>("AttentionLabel");
    return label->isVisible() ? label->text() : QString();
}

bool MainWindow::listHas(const QString& part) {
    return !find<QListWidget>("MessageList")->findItems(part, Qt::MatchContains).isEmpty();
}

std::string MainWindow::nameField() {
    return form_->fileName();
}

std::vector<std::string> MainWindow::recordings() const {
    std::vector<std::string> names;
    for (const std::string& name : listDirectory(folder_.file("data"))) {
        if (name.ends_with(".dat")) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> MainWindow::log() {
    if (form_) {
        EXPECT_TRUE(close());
    }
    std::vector<std::string> messages;
    std::istringstream lines(readFile(folder_.file("Tarno2.dbg")));
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        const size_t begin = line.find(" --- ");
        messages.push_back(begin == std::string::npos ? line : line.substr(begin + 5));
    }
    return messages;
}

}  // namespace tarno2::test
