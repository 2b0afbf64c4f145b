#include <clocale>
#include <cstdlib>
#include <gtest/gtest.h>

#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/file.h"
#include "platform/library.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "platform/volume.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

using test::ScopedEnvironment;
using test::TemporaryFolder;

TEST(Paths, Parts) {
    struct Case {
        const char* path;
        const char* folder;
        const char* name;
    };
    const Case cases[] = {{"", "", ""},     {"a", "", "a"},       {"/", "/", ""},
                          {"/a", "/", "a"}, {"/a//b", "/a", "b"}, {"a/b/", "a/b", ""}};
    for (const auto& [path, folder, name] : cases) {
        EXPECT_EQ(parentFolder(path), folder) << path;
        EXPECT_EQ(fileNameOf(path), name) << path;
    }
    const std::string separator(1, kPathSeparator);
    EXPECT_EQ(joinPath("a", "b"), "a" + separator + "b");
    EXPECT_EQ(joinPath("a//", "/b"), "a" + separator + "b");
    EXPECT_EQ(joinPath("/", "b"), "/b");
    EXPECT_EQ(joinPath("", "/b"), "/b");
    EXPECT_TRUE(isAbsolutePath("/a"));
    EXPECT_FALSE(isAbsolutePath("a/b"));
    if (kPathSeparator == '\\') {
        EXPECT_EQ(parentFolder("C:\\x"), "C:\\");
        EXPECT_EQ(parentFolder("a\\b/c"), "a\\b");
        EXPECT_TRUE(isAbsolutePath("C:x"));
    } else {
        EXPECT_EQ(findLastSeparator("a\\b"), std::string_view::npos);
    }
}

// A letter that the code page lacks must neither be dropped nor become a similar one: either may name another file.
TEST(Paths, NamesThatTheSystemCannotHaveAreTold) {
    const bool windows = kPathSeparator == '\\';
    for (const char* name :
         {"run.dat", "C:\\a folder\\run.dat", "\\\\?\\C:\\run.dat", "\\\\server\\share\\run.dat", "a/b"}) {
        EXPECT_TRUE(isPossiblePath(name)) << name;
    }
    for (const char* name : {"ru?n", "a:b:c", "a\tb", "run*", "run|", "\"run\""}) {
        EXPECT_EQ(isPossiblePath(name), !windows) << name;
    }
    EXPECT_FALSE(isPossiblePath(std::string_view("a\0b", 3)));
    const std::string armenian = utf16ToSystem(u"run \u0561");
    EXPECT_EQ(isPossiblePath(armenian), armenian == "run \xD5\xA1") << armenian;
    const std::string similar = utf16ToSystem(u"\u0100");  // an A with a bar, which best fits turn into a plain one
    EXPECT_NE(similar, "A");
}

TEST(Paths, ProgramDirectoryFollowsTheEnvironment) {
    const TemporaryFolder folder;
    {
        const ScopedEnvironment home("TARNO2_HOME", folder.path() + kPathSeparator);
        EXPECT_EQ(programDirectory(), folder.path());
        const ScopedEnvironment missing("TARNO2_HOME", folder.file("one/two"));
        EXPECT_TRUE(isDirectory(programDirectory()));
    }
    EXPECT_TRUE(isDirectory(executableFolder()));
    EXPECT_TRUE(isDirectory(currentFolder()));
    EXPECT_EQ(programDirectory(), executableFolder()) << "a build tree is writable";
    EXPECT_FALSE(environmentVariable("TARNO2_NO_SUCH_VARIABLE").has_value());
}

TEST(Volume, TellsOfTheNearestFolder) {
    const TemporaryFolder folder;
    VolumeInfo there;
    VolumeInfo below;
    ASSERT_EQ(queryVolume(folder.path(), there), VolumeStatus::Ok);
    ASSERT_EQ(queryVolume(folder.file("new/deeper/file.dat"), below), VolumeStatus::Ok);
    EXPECT_EQ(below.root, there.root);
    EXPECT_EQ(below.fileSystem, there.fileSystem);
    EXPECT_FALSE(there.fileSystem.empty());
    EXPECT_TRUE(isPathSeparator(there.root.back()));
    EXPECT_GT(there.totalBytes, 0U);
    EXPECT_LE(there.freeBytes, there.totalBytes);
    EXPECT_EQ(queryVolume("relative.dat", below), VolumeStatus::Ok);
    EXPECT_EQ(queryVolume("", below), VolumeStatus::NoPath);
}

TEST(FormatText, LongAndWide) {
    EXPECT_EQ(formatText("%02d|%llu|%s|%.2lf", 7, 18446744073709551615ULL, "x", 0.5), "07|18446744073709551615|x|0.50");
    EXPECT_EQ(formatText("%zu", size_t{5}), "5");
    EXPECT_EQ(formatText("%s", std::string(100000, 'y').c_str()), std::string(100000, 'y'));
    EXPECT_EQ(formatText("%s", ""), "");
}

TEST(FormatText, NumbersKeepTheirPointWhateverTheLocale) {
    const char* found = nullptr;
    for (const char* name : {"ru_RU.UTF-8", "ru_RU.utf8", "de_DE.UTF-8", "fr_FR.UTF-8", "Russian", "German"}) {
        found = found == nullptr ? std::setlocale(LC_ALL, name) : found;
    }
    if (found == nullptr) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    EXPECT_EQ(formatText("%.1f", 0.5), "0.5");
    {
        const CNumericLocale locale;
        EXPECT_EQ(std::strtod("0.5", nullptr), 0.5);
    }
    EXPECT_EQ(std::strtod("0,5", nullptr), 0.5) << "the user's locale is back";
    std::setlocale(LC_ALL, "C");
}

TEST(CodePage1251, EveryByteSurvivesBothEncodings) {
    for (int i = 0; i < 256; ++i) {
        const std::string byte(1, static_cast<char>(i));
        if (i == 0x98) {
            EXPECT_EQ(cp1251ToUtf8(byte), "\xEF\xBF\xBD");
            EXPECT_FALSE(utf8ToCp1251("\xEF\xBF\xBD").has_value());
            continue;
        }
        EXPECT_EQ(utf8ToCp1251(cp1251ToUtf8(byte)), byte) << i;
        EXPECT_EQ(utf16ToCp1251(cp1251ToUtf16(byte)), byte) << i;
    }
    EXPECT_EQ(utf8ToCp1251("Файл № Ё€"), "\xD4\xE0\xE9\xEB \xB9 \xA8\x88");
    for (const char* bad : {"中", "\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
        EXPECT_FALSE(utf8ToCp1251(bad).has_value()) << bad;
    }
}

TEST(CodePage1251, TakesWordsOfTheSystemWordByWord) {
    const std::pair<const char*, const char*> cases[] = {
        {"Data \"C:\\a\"", "Data \"C:\\a\""},
        {"Файл \"Насос № 2.dat\"", "\xD4\xE0\xE9\xEB \"\xCD\xE0\xF1\xEE\xF1 \xB9 2.dat\""},
        {"\xD4\xE0\xE9\xEB \"Насос\"", "\xD4\xE0\xE9\xEB \"\xCD\xE0\xF1\xEE\xF1\""},
        {"中a é 😀", "?a ? ?"},
        {"\xFF\xC3", "\xFF\xC3"},
    };
    for (const auto& [text, page] : cases) {
        EXPECT_EQ(systemTextToCp1251(text), page) << text;
    }
}

TEST(Utf, OutsideTheBasicPlane) {
    const std::string text = "a\u00DF\u4E2D\U0001F600";
    const auto utf16 = utf8ToUtf16(text);
    ASSERT_TRUE(utf16.has_value());
    EXPECT_EQ(*utf16, u"a\u00DF\u4E2D\U0001F600");
    EXPECT_EQ(utf16ToUtf8(*utf16), text);
    EXPECT_EQ(utf16ToUtf8(utf16->substr(3, 1)), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace tarno2
