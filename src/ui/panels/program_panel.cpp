#include "ui/panels/program_panel.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include "ui/panels/option_box.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kSmallestFont = 4;
constexpr int kLargestFont = 200;

}  // namespace

ProgramPanel::ProgramPanel(QWidget* parent)
    : SettingsPanel(parent),
      languageLabel_(new QLabel(this)),
      russian_(new QRadioButton(this)),
      english_(new QRadioButton(this)),
      stayOnTop_(new OptionBox(this)),
      startOnLoad_(new OptionBox(this)),
      cycleStart_(new OptionBox(this)),
      foldOnStart_(new OptionBox(this)),
      schemeLabel_(new QLabel(this)),
      scheme_(makeList(this, QStringLiteral("ColorSchemeBox"))),
      fontLabel_(new QLabel(this)),
      fontName_(makeList(this, QStringLiteral("AxisFontNameBox"))),
      fontSize_(new QSpinBox(this)),
      debugLog_(new OptionBox(this)),
      debugPathLabel_(makeText(this, QStringLiteral("DebugLogPathLabel"))),
      folderLabel_(makeText(this, QStringLiteral("ProgramFolderLabel"))) {
    setObjectName(QStringLiteral("ProgramPanel"));
    russian_->setObjectName(QStringLiteral("RussianChooseButton"));
    english_->setObjectName(QStringLiteral("EnglishChooseButton"));
    stayOnTop_->setObjectName(QStringLiteral("StayOnTopBox"));
    startOnLoad_->setObjectName(QStringLiteral("AutoStartOnRunBox"));
    cycleStart_->setObjectName(QStringLiteral("CycleStartBox"));
    foldOnStart_->setObjectName(QStringLiteral("FoldOnStartBox"));
    fontSize_->setObjectName(QStringLiteral("AxisFontSizeBox"));
    debugLog_->setObjectName(QStringLiteral("DebugModeBox"));
    fontSize_->setRange(kSmallestFont, kLargestFont);
    for (QLabel* label : {debugPathLabel_, folderLabel_}) {
        label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }

    QFormLayout* layout = makePanelLayout(this);
    layout->addRow(languageLabel_);
    auto* languages = new QHBoxLayout;
    languages->addWidget(russian_);
    languages->addWidget(english_);
    languages->addStretch();
    layout->addRow(languages);
    for (OptionBox* box : {stayOnTop_, startOnLoad_, cycleStart_, foldOnStart_}) {
        layout->addRow(box);
    }
    layout->addRow(schemeLabel_, scheme_);
    schemeLabel_->setBuddy(scheme_);
    for (int scheme = 0; scheme < 3; ++scheme) {
        scheme_->addItem(QString());
    }
    layout->addRow(fontLabel_);
    auto* font = new QHBoxLayout;
    font->addWidget(fontName_, 1);
    font->addWidget(fontSize_);
    layout->addRow(font);
    layout->addRow(debugLog_);
    layout->addRow(debugPathLabel_);
    layout->addRow(folderLabel_);
    fontLabel_->setBuddy(fontName_);

    manage(startOnLoad_);
    manage(scheme_, false);
    manage(debugLog_);
    for (QWidget* control : std::initializer_list<QWidget*>{russian_, english_, stayOnTop_, cycleStart_, foldOnStart_,
                                                            fontName_, fontSize_}) {
        manage(control, false);
    }
    connectControls();
    retranslate();
}

void ProgramPanel::connectControls() {
    connect(russian_, &QRadioButton::clicked, this, [this] {
        emit russianChosen();
        emit changed();
    });
    connect(english_, &QRadioButton::clicked, this, [this] {
        emit englishChosen();
        emit changed();
    });
    connect(stayOnTop_, &OptionBox::clicked, this, [this](bool on) {
        emit stayOnTopChanged(on);
        emit changed();
    });
    connect(cycleStart_, &OptionBox::clicked, this, [this](bool on) {
        emit cycleStartChanged(on);
        emit changed();
    });
    connect(startOnLoad_, &OptionBox::clicked, this, &SettingsPanel::changed);
    connect(foldOnStart_, &OptionBox::clicked, this, &SettingsPanel::changed);
    connect(scheme_, &QComboBox::activated, this, [this](int scheme) {
        emit colorSchemeChanged(scheme);
        emit changed();
    });
    connect(debugLog_, &OptionBox::clicked, this, &ProgramPanel::debugLogChanged);
    const auto fontChanged = [this] {
        emit axisFontChanged();
        emit changed();
    };
    connect(fontName_, &QComboBox::activated, this, fontChanged);
    connect(fontSize_, &QSpinBox::valueChanged, this, fontChanged);
}

void ProgramPanel::load(const ProgramSettings& settings) {
    setLanguage(settings.language);
    stayOnTop_->setChecked(settings.stayOnTop);
    startOnLoad_->setChecked(settings.autoStartOnRun);
    cycleStart_->setChecked(settings.wish.cycleStart);
    foldOnStart_->setChecked(settings.foldOnStart);
    scheme_->setCurrentIndex(settings.colorScheme);
    const QString name = fromCodePage(settings.axisFontName);
    if (fontName_->findText(name) < 0) {
        fontName_->addItem(name);
    }
    fontName_->setCurrentText(name);
    const QSignalBlocker quiet(fontSize_);
    fontSize_->setValue(settings.axisFontSize);
}

void ProgramPanel::store(ProgramSettings& settings) const {
    settings.language = russian_->isChecked() ? InterfaceLanguage::Russian : InterfaceLanguage::English;
    settings.stayOnTop = stayOnTop_->isChecked();
    settings.autoStartOnRun = startOnLoad_->isChecked();
    settings.wish.cycleStart = cycleStart_->isChecked();
    settings.foldOnStart = foldOnStart_->isChecked();
    settings.colorScheme = scheme_->currentIndex();
    settings.axisFontName = toCodePage(fontName_->currentText());
    settings.axisFontSize = fontSize_->value();
}

void ProgramPanel::retranslate() {
    languageLabel_->setText(uiText(TextId::InterfaceLanguage));
    russian_->setText(QStringLiteral("Русский"));
    english_->setText(QStringLiteral("English"));
    stayOnTop_->setText(uiText(TextId::StayOnTop));
    startOnLoad_->setText(uiText(TextId::StartOnLoad));
    cycleStart_->setText(uiText(TextId::CycleStart));
    foldOnStart_->setText(uiText(TextId::FoldOnStart));
    schemeLabel_->setText(uiText(TextId::ColorScheme));
    scheme_->setItemText(0, uiText(TextId::ColorSchemeSystem));
    scheme_->setItemText(1, uiText(TextId::ColorSchemeLight));
    scheme_->setItemText(2, uiText(TextId::ColorSchemeDark));
    fontLabel_->setText(uiText(TextId::AxisFont));
    debugLog_->setText(uiText(TextId::DebugLogCaption));
    setHint(russian_, uiText(TextId::SelectLanguage));
    setHint(english_, uiText(TextId::SelectLanguage));
    setHint(stayOnTop_, uiText(TextId::StayOnTop));
    setHint(startOnLoad_, uiText(TextId::StartOnLoad));
    setHint(cycleStart_, uiText(TextId::CycleStartHint));
    setHint(foldOnStart_, uiText(TextId::FoldOnStartHint));
    fontSize_->setAccessibleName(uiText(TextId::AxisFont));
    setHint(scheme_, uiText(TextId::ColorScheme));
    setHint(fontName_, uiText(TextId::AxisFont));
    setHint(fontSize_, uiText(TextId::AxisFont));
    setHint(debugLog_, uiText(TextId::DebugLogHint, {debugLogPath_}));
    showText(debugPathLabel_, debugLogPath_);
    showText(folderLabel_, programFolder_.isEmpty() ? QString() : uiText(TextId::ProgramFolder, {programFolder_}));
}

void ProgramPanel::setLanguage(InterfaceLanguage language) {
    (language == InterfaceLanguage::Russian ? russian_ : english_)->setChecked(true);
}

void ProgramPanel::setCycleStart(bool on) {
    cycleStart_->setChecked(on);
}

void ProgramPanel::setProgramFolder(const std::string& directory) {
    programFolder_ = fromFileName(directory);
    retranslate();
}

void ProgramPanel::setDebugLog(bool open, const std::string& path) {
    debugLog_->setChecked(open);
    debugLogPath_ = fromFileName(path);
    retranslate();
}

/// Asking the system for its fonts takes a while: only who opens the panel waits for it.
void ProgramPanel::showEvent(QShowEvent* event) {
    SettingsPanel::showEvent(event);
    if (fontsListed_) {
        return;
    }
    fontsListed_ = true;
    const QString chosen = fontName_->currentText();
    fontName_->clear();
    fontName_->addItems(QFontDatabase::families());
    if (fontName_->findText(chosen) < 0) {
        fontName_->insertItem(0, chosen);
    }
    fontName_->setCurrentIndex(fontName_->findText(chosen));
}

}  // namespace tarno2
