#pragma once

#include <memory>
#include <string>
#include <vector>

#include "config/settings/program_settings.h"
#include "language/text_ids.h"
#include "tests/ui/widgets.h"
#include "ui/main_form.h"

namespace tarno2::test {

/// The whole main window in a program directory of its own, with the drivers as they were built. It starts in English
/// with board 1 of the simulator, channels 0 and 1 on, a stop by hand, a name in a folder that is not there yet, and
/// without the disk test.
class MainWindow : public ::testing::Test {
protected:
    MainWindow();
    ~MainWindow() override;

    /// Shows the window with `wanted` as what an earlier run has left, and the debug log on.
    void open();
    /// Shows the window with the settings file as it is.
    void openAgain();
    /// Closes the window as its frame's button would, answering no question. True when it closed.
    bool close();

    /// Takes the window away, open or not.
    void drop() { form_.reset(); }

    [[nodiscard]] T_MainForm& form() { return *form_; }
    template <typename Widget = QWidget>
    Widget* find(const char* name) {
        return findIn<Widget>(*form_, name);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void click(const char* name) { clickIn(*form_, name); }
    /// Opens the settings panel of that number, 1 to 5, with the mouse.
    void openPanel(int number);
    void type(const char* name, const QString& text, bool enter = true) { typeIn(*form_, name, text, enter); }
    /// Answers the next message box with the button of that text; its question goes to `asked`.
    void answer(TextId button);

    [[nodiscard]] QString stateWord();
    [[nodiscard]] bool waitForState(TextId word, int milliseconds = 30000);
    [[nodiscard]] bool waitForBytes(uint64_t bytes);
    /// Starts by key and waits until it records.
    void record();
    [[nodiscard]] QString attention();
    [[nodiscard]] bool listHas(const QString& part);
    [[nodiscard]] std::string nameField();
    /// Names of the data files in the folder of the recordings, sorted.
    [[nodiscard]] std::vector<std::string> recordings() const;
    /// Closes the window when it is open; the messages of the debug log, without times and numbers of sites.
    [[nodiscard]] std::vector<std::string> log();

    const TemporaryFolder folder_;
    const ScopedEnvironment registry_{"TARNO2_REGISTRY", std::string(TARNO2_BIN) + "/registry.d"};
    const ScopedEnvironment simulator_{"TARNO2_SIMULATOR", ""};
    ProgramSettings wanted_;
    QStringList asked_;

private:
    std::unique_ptr<T_MainForm> form_;
};

}  // namespace tarno2::test
