#include "ui/channel_table.h"

#include <QScrollBar>

#include "tests/ui/widgets.h"
#include "ui/channel_model.h"

namespace tarno2::test {
namespace {

/// An input of +-Volts at gain 1.
template <int Volts>
InputLimits evenly(int32_t /*channel*/, int32_t gain) {
    return {-double{Volts} / gain, double{Volts} / gain};
}

class Channels : public ::testing::Test {
protected:
    Channels() {
        languageTable().select(kLanguageEnglish);
        table_.setBoard(160, {1, 2, 5, 10, 100}, evenly<10>);
        table_.load({});
        table_.resize(300, 400);
        table_.show();
        table_.setFocus();
    }
    [[nodiscard]] ProgramSettings stored() const {
        ProgramSettings settings;
        table_.store(settings);
        return settings;
    }
    [[nodiscard]] int countGain(int32_t gain) const {
        const ProgramSettings settings = stored();
        return static_cast<int>(std::count_if(settings.channels.begin(), settings.channels.end(),
                                              [gain](const ChannelSettings& c) { return c.gain == gain; }));
    }
    void key(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&table_, static_cast<Qt::Key>(key), modifiers);
    }
    [[nodiscard]] QString cell(int row, int column) const {
        return table_.model()->index(row, column).data().toString();
    }

    ChannelTable table_;
};

TEST_F(Channels, HundredAndSixtyAreSetByKeysAlone) {
    QSignalSpy changed(&table_, &ChannelTable::changed);
    EXPECT_EQ(table_.activeCount(), 1);
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Space);
    EXPECT_EQ(table_.activeCount(), 160);
    EXPECT_EQ(changed.count(), 1) << "one change, not one a channel";
    key(Qt::Key_Space);
    EXPECT_EQ(table_.activeCount(), 0);
    QTest::keyClicks(&table_, "10");
    EXPECT_EQ(countGain(10), 160);
    key(Qt::Key_Plus);
    EXPECT_EQ(countGain(100), 160);
    key(Qt::Key_Plus);
    EXPECT_EQ(countGain(100), 160) << "there is no higher one";
    key(Qt::Key_Minus);
    EXPECT_EQ(countGain(10), 160);

    key(Qt::Key_Home, Qt::ControlModifier);
    key(Qt::Key_Down, Qt::ShiftModifier);
    key(Qt::Key_Space);
    QTest::keyClicks(&table_, "2");
    EXPECT_EQ(table_.activeCount(), 2);
    EXPECT_EQ(countGain(2), 2);
    key(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(table_.activeCount(), 158);
    EXPECT_FALSE(stored().channels[1].active);
    key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(table_.currentIndex().row(), 159);
    EXPECT_TRUE(table_.viewport()->rect().intersects(table_.visualRect(table_.currentIndex())));
    QTest::keyClicks(&table_, "7");
    EXPECT_EQ(countGain(2), 2) << "no gain begins with 7";
}

TEST_F(Channels, GainsDecideTheRangeAndUnknownOnesAreTheFirst) {
    EXPECT_EQ(cell(0, ChannelModel::Range), QStringLiteral("\u00B110"));
    table_.clearSelection();
    table_.setGain(5);
    EXPECT_EQ(countGain(5), 160) << "without a marked row all are meant";
    EXPECT_EQ(cell(159, ChannelModel::Range), QStringLiteral("\u00B12"));
    table_.setBoard(8, {4, 16}, evenly<4>);
    EXPECT_EQ(cell(0, ChannelModel::Gain), "4");
    EXPECT_EQ(cell(0, ChannelModel::Range), QStringLiteral("\u00B11"));
    table_.setBoard(2, {4}, [](int32_t channel, int32_t) {
        return channel == 0 ? InputLimits{0.0, 10.0} : InputLimits{};
    });
    EXPECT_EQ(cell(0, ChannelModel::Range), QStringLiteral("0 \u2026 10"));
    EXPECT_EQ(cell(1, ChannelModel::Range), "");
    table_.setBoard(8, {4, 16}, evenly<4>);
    EXPECT_EQ(stored().channels[0].gain, 5) << "kept for a board that has it";
    EXPECT_EQ(stored().channelCount, 8);
}

TEST_F(Channels, ReadingsKeepTheirExtremesUntilTheReset) {
    table_.setExtendedView(true);
    const ChannelReading first[] = {{0, 1.0, -2.0, 3.0}, {7, 0.5, 0.5, 0.5}, {160, 9.0, 9.0, 9.0}};
    const ChannelReading second[] = {{0, -1.0, -1.5, 4.0}};
    table_.setLive(first);
    table_.setLive(second);
    EXPECT_EQ(cell(0, ChannelModel::Value), "-1.000");
    EXPECT_EQ(cell(0, ChannelModel::Minimum), "-2.000");
    EXPECT_EQ(cell(0, ChannelModel::Maximum), "4.000");
    EXPECT_EQ(cell(1, ChannelModel::Value), "") << "it was not recorded";
    table_.resetExtremes();
    EXPECT_EQ(cell(0, ChannelModel::Maximum), "");
}

TEST_F(Channels, NamesUnitsAndScalesAreEnteredAndShown) {
    table_.setBoard(4, {1}, evenly<10>, [](int32_t channel, ChannelLabel given) {
        given.name = given.name.empty() && channel == 1 ? "AI1" : given.name;
        return given;
    });
    table_.setExtendedView(true);
    const auto enter = [this](int row, int column, const QString& text) {
        return table_.model()->setData(table_.model()->index(row, column), text, Qt::EditRole);
    };
    EXPECT_TRUE(enter(0, ChannelModel::Name, QStringLiteral(" \u0432\u0445\u043E\u0434;1\n")));
    EXPECT_TRUE(enter(0, ChannelModel::Unit, "bar"));
    EXPECT_EQ(cell(0, ChannelModel::Name), QStringLiteral("\u0432\u0445\u043E\u0434,1"));
    EXPECT_EQ(cell(1, ChannelModel::Name), "AI1");
    EXPECT_EQ(cell(1, ChannelModel::Unit), "V");
    EXPECT_EQ(stored().channels[1].label, ChannelLabel()) << "what the driver says is not the operator's";

    const auto scaled = [this](int row, bool points, const std::vector<std::pair<const char*, const char*>>& fields) {
        table_.clearSelection();
        table_.setCurrentIndex(table_.model()->index(row, ChannelModel::Scale));
        key(Qt::Key_F2);
        auto* dialog = table_.findChild<QDialog*>("ScaleDialog");
        findIn<QRadioButton>(*dialog, points ? "ScaleByPoints" : "ScaleByFactor")->setChecked(true);
        for (const auto& [name, text] : fields) {
            findIn<QLineEdit>(*dialog, name)->setText(text);
        }
        dialog->accept();
        const bool taken = !dialog->isVisible();
        delete dialog;
        return taken;
    };
    EXPECT_TRUE(scaled(0, false, {{"ScaleFactor", "-2,5"}, {"ScaleOffset", "1"}}));
    EXPECT_TRUE(
        scaled(2, true, {{"ScaleVolts1", "1"}, {"ScaleValue1", "0"}, {"ScaleVolts2", "5"}, {"ScaleValue2", "100"}}));
    for (const char* factor : {"0", "x", "", "inf"}) {
        EXPECT_FALSE(scaled(0, false, {{"ScaleFactor", factor}})) << factor;
    }
    EXPECT_FALSE(scaled(2, true, {{"ScaleVolts1", "1"}, {"ScaleVolts2", "1"}}));
    EXPECT_FALSE(scaled(2, true, {{"ScaleValue1", "3"}, {"ScaleValue2", "3"}}));
    const ProgramSettings settings = stored();
    EXPECT_EQ(settings.channels[0].label.factor, -2.5);
    EXPECT_EQ(settings.channels[0].label.offset, 1.0);
    EXPECT_EQ(settings.channels[2].label.factor, 25.0);
    EXPECT_EQ(settings.channels[2].label.offset, -25.0);
    EXPECT_EQ(cell(2, ChannelModel::Scale), QStringLiteral("\u00D7 25 \u2212 25"));

    const ChannelReading readings[] = {{0, 1.0, -2.0, 3.0}, {1, 1.0, -2.0, 3.0}};
    table_.setLive(readings);
    EXPECT_EQ(cell(0, ChannelModel::Value), "-1.500 bar");
    EXPECT_EQ(cell(0, ChannelModel::Minimum), "-6.500 bar");
    EXPECT_EQ(cell(0, ChannelModel::Maximum), "6.000 bar");
    EXPECT_EQ(cell(1, ChannelModel::Value), "1.000");
    table_.setLocked(true);
    EXPECT_FALSE(enter(0, ChannelModel::Name, "x"));
    key(Qt::Key_F2);
    EXPECT_EQ(table_.findChild<QDialog*>("ScaleDialog"), nullptr);
}

TEST_F(Channels, NothingChangesWhileLocked) {
    table_.setLocked(true);
    QSignalSpy changed(&table_, &ChannelTable::changed);
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Space);
    key(Qt::Key_Plus);
    key(Qt::Key_I, Qt::ControlModifier);
    QTest::keyClicks(&table_, "10");
    table_.selectAllChannels();
    EXPECT_FALSE(
        table_.model()->setData(table_.model()->index(3, ChannelModel::Active), Qt::Checked, Qt::CheckStateRole));
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(table_.activeCount(), 1);
    key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_GT(table_.verticalScrollBar()->value(), 0) << "it can be looked through";
}

TEST_F(Channels, MenuAndMouseDoWhatTheKeysDo) {
    const auto inMenu = [this](const QString& text) {
        QTimer::singleShot(0, [this, text] {
            auto* menu = table_.findChild<QMenu*>("ChannelMenu");
            ASSERT_NE(menu, nullptr);
            for (QAction* action : menu->actions()) {
                if (action->text() == text) {
                    action->trigger();
                }
            }
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), table_.mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(table_.viewport(), &event);
    };
    inMenu("Select all");
    EXPECT_EQ(table_.activeCount(), 160);
    inMenu("Invert selection");
    EXPECT_EQ(table_.activeCount(), 0);
    const QRect box = table_.visualRect(table_.model()->index(2, ChannelModel::Active));
    QTest::mouseClick(table_.viewport(), Qt::LeftButton, {}, QPoint(box.left() + 12, box.center().y()));
    EXPECT_TRUE(stored().channels[2].active);
}

TEST_F(Channels, AColourIsChosenFromAList) {
    table_.setCurrentIndex(table_.model()->index(4, ChannelModel::Color));
    QTimer::singleShot(0, [this] {
        auto* menu = table_.findChild<QMenu*>("ColorMenu");
        ASSERT_NE(menu, nullptr);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    key(Qt::Key_Return);
    EXPECT_EQ(stored().channels[4].color, channelPalette()[5]) << "of the one after its own";
    const auto swatch = [this](int row) {
        const QModelIndex cell = table_.model()->index(row, ChannelModel::Color);
        return qvariant_cast<QIcon>(cell.data(Qt::DecorationRole)).pixmap(16).toImage();
    };
    EXPECT_EQ(swatch(4).pixelColor(8, 8), QColor(0xB4, 0x0F, 0xFF));
    const auto key = [this](int row) {
        return qvariant_cast<QIcon>(table_.model()->index(row, ChannelModel::Color).data(Qt::DecorationRole))
            .cacheKey();
    };
    EXPECT_EQ(key(4), key(4)) << "made once";
}

}  // namespace
}  // namespace tarno2::test
