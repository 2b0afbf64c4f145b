#include "ui/text.h"

#include <QString>
#include <gtest/gtest.h>

#include "language/language_table.h"

namespace tarno2 {
namespace {

TEST(UiText, ValuesStandWhereTheTextWantsThem) {
    languageTable().select(kLanguageEnglish);
    EXPECT_EQ(uiText(TextId::BuildingOverview, {"40"}), QStringLiteral("Reading the recording: 40 %"));
    EXPECT_EQ(uiText(TextId::RecordingNotRead, {"100%s.dat", "gone"}),
              QStringLiteral("Recording \"100%s.dat\" can not be read: gone"));
}

TEST(UiText, MessagesOfTheSystemAndOfTheProgramAreRead) {
    const QString words = QStringLiteral("Нет места на диске");
    EXPECT_EQ(fromMessage(words.toStdString()), words);
    EXPECT_EQ(fromMessage(toCodePage(words)), words);
}

}  // namespace
}  // namespace tarno2
