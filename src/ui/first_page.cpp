#include "ui/first_page.h"

#include <QCommandLinkButton>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "core/devices/board_selection.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

struct ChoiceTexts {
    const char* name;
    const char* driver;
    TextId title;
    TextId hint;
};

constexpr std::array<ChoiceTexts, 3> kChoices = {{
    {"FirstSound", "Sound", TextId::FirstSound, TextId::FirstSoundHint},
    {"FirstSimulator", "Simulator", TextId::FirstSimulator, TextId::FirstSimulatorHint},
    {"FirstSample", "", TextId::FirstSample, TextId::FirstSampleHint},
}};

constexpr int kWidestEms = 34;

/// The toolkit's own shows no focus.
class ChoiceButton : public QCommandLinkButton {
public:
    using QCommandLinkButton::QCommandLinkButton;

protected:
    void paintEvent(QPaintEvent* event) override {
        QCommandLinkButton::paintEvent(event);
        if (hasFocus()) {
            QPainter painter(this);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(QPen(palette().highlight(), 2.0));
            painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), 3.0, 3.0);
        }
    }
};

bool isInstalled(const char* driver) {
    const auto drivers = BoardSelection::installedDrivers();
    return std::ranges::find(drivers, driver) != drivers.end();
}

}  // namespace

std::string sampleRecording() {
    for (const char* folder : {"sample", TARNO2_SAMPLE_FROM_PROGRAM}) {
        std::string file = joinPath(joinPath(executableFolder(), folder), "sample.dat");
        if (fileExists(file)) {
            return file;
        }
    }
    return {};
}

FirstPage::FirstPage(QWidget* parent)
    : QWidget(parent),
      title_(named<QLabel>("FirstTitle", this)),
      once_(makeText(this, QStringLiteral("FirstOnceLabel"))),
      skip_(named<QPushButton>("FirstSkip", this)) {
    setObjectName(QStringLiteral("FirstPage"));
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 1.6);
    title_->setFont(large);
    auto* column = new QVBoxLayout;
    column->addStretch(1);
    column->addWidget(title_);
    for (size_t i = 0; i < choices_.size(); ++i) {
        const auto choice = static_cast<Choice>(i);
        const char* const driver = driverOf(choice);
        offered_[i] = *driver != '\0' ? isInstalled(driver) : !sampleRecording().empty();
        choices_[i] = named<ChoiceButton>(kChoices[i].name, this);
        choices_[i]->setEnabled(offered_[i]);
        connect(choices_[i], &QCommandLinkButton::clicked, this, [this, choice] { emit chosen(choice); });
        column->addWidget(choices_[i]);
    }
    column->addWidget(once_);
    column->addWidget(skip_, 0, Qt::AlignLeft);
    column->addStretch(2);
    connect(skip_, &QPushButton::clicked, this, &FirstPage::skipped);
    auto* middle = new QWidget(this);
    middle->setLayout(column);
    middle->setMaximumWidth(fontMetrics().averageCharWidth() * 2 * kWidestEms);
    auto* row = new QHBoxLayout(this);
    row->addStretch(1);
    row->addWidget(middle, 100);
    row->addStretch(1);
    retranslate();
}

const char* FirstPage::driverOf(Choice choice) {
    return kChoices[choice].driver;
}

void FirstPage::showProblem(Choice choice, const QString& why) {
    problems_[choice] = why;
    retranslate();
}

void FirstPage::retranslate() {
    title_->setText(uiText(TextId::FirstTitle));
    for (size_t i = 0; i < choices_.size(); ++i) {
        const QString& problem = problems_[i];
        choices_[i]->setText(uiText(kChoices[i].title));
        choices_[i]->setDescription(!offered_[i]         ? missing(static_cast<Choice>(i))
                                    : !problem.isEmpty() ? QStringLiteral("\u26A0 ") + problem
                                                         : uiText(kChoices[i].hint));
    }
    once_->setText(uiText(TextId::FirstOnceHint));
    skip_->setText(uiText(TextId::FirstSkip));
}

QString FirstPage::missing(Choice choice) const {
    return choice == Sample ? uiText(TextId::FirstNoSampleHint)
                            : uiText(TextId::FirstNoDriverHint, {QLatin1String(driverOf(choice))});
}

void FirstPage::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        emit skipped();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void FirstPage::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    const auto first = std::ranges::find_if(choices_, &QWidget::isEnabled);
    (first != choices_.end() ? static_cast<QWidget*>(*first) : skip_)->setFocus();
}

}  // namespace tarno2
