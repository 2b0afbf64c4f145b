#include "platform/registry.h"

#include <gtest/gtest.h>
#include <string>

#include "platform/registry_text.h"

namespace tarno2 {
namespace {

constexpr const char* kHeading = "Windows Registry Editor Version 5.00\r\n";

/// Entries as lines: "root|key|name|type|bytes".
std::string summary(std::string_view text) {
    std::string lines;
    for (const auto& entry : parseRegistryText(text)) {
        lines += entry.root == RegistryRoot::LocalMachine ? "LM|" : "CU|";
        lines += entry.key;
        if (!entry.keyOnly) {
            lines += '|' + entry.name + '|' + std::to_string(entry.value.type) + '|' + entry.value.data;
        }
        lines += '\n';
    }
    return lines;
}

TEST(RegistryText, Values) {
    using namespace std::string_literals;
    const std::pair<const char*, std::string> cases[] = {
        {"\"path\"=\"C:\\\\dir\\\\a \\\"b\\\".dll\"", "path|1|C:\\dir\\a \"b\".dll"},
        {"\"path\"=\"C:\\temp\\x.dll\"", "path|1|C:\\temp\\x.dll"},
        {"  \"a ; b\" = \"c\" ; words", "a ; b|1|c"},
        {"@=\"d\"", "|1|d"},
        {"\"n\"=dword:0000001F", "n|4|\x1F\0\0\0"s},
        {"\"n\"=DWORD:1f ;x", "n|4|\x1F\0\0\0"s},
        {"\"n\"=hex:01, 02,fF", "n|3|\x01\x02\xFF"},
        {"\"n\"=hex:", "n|3|"},
        {"\"n\"=hex:01,\\\n", "n|3|\x01"},
        {"\"n\"=hex:61,\\\r\n  62,\\  \r\n  63", "n|3|abc"},
        {"\"n\"=hex(2):61,00,62,00,00,00", "n|2|ab"},
        {"\"n\"=hex(b):61,62", "n|11|ab"},
        {"\"\"=\"empty\"", "|1|empty"},
    };
    for (const auto& [line, expected] : cases) {
        EXPECT_EQ(summary(kHeading + "[HKEY_LOCAL_MACHINE\\K]\r\n"s + line + "\r\n"), "LM|K\nLM|K|" + expected + '\n')
            << line;
    }
    for (const char* bad : {"\"n\"=\"open", "\"n\"", "\"n\"=dword:", "\"n\"=dword:123456789", "\"n\"=hex:1g",
                            "\"n\"=hex:100", "\"n\"=hex(3:00", "n=\"x\"", "=", "\"n\"=\"x\"y", "@", ";\"n\"=\"x\""}) {
        const std::string text = summary(kHeading + "[HKEY_LOCAL_MACHINE\\K]\n"s + bad + "\n\n\"good\"=\"1\"");
        EXPECT_TRUE(text.ends_with("LM|K|good|1|1\n")) << bad;
        EXPECT_EQ(text.find("|n|1|"), std::string::npos) << bad;
    }
}

TEST(RegistryText, KeysRootsAndDeletions) {
    const std::string text =
        "\r\n" + std::string(kHeading) +
        "\"stray\"=\"1\"\n[hkey_local_machine\\A\\B]\n\"x\"=\"1\"\n\"X\"=\"2\"\n\"y\"=\"3\"\n\"Y\"=-\n"
        "[HKEY_CLASSES_ROOT\\A]\n\"lost\"=\"1\"\n[HKEY_CURRENT_USER\\Software [x]]\n\"u\"=\"1\"\n"
        "[HKEY_LOCAL_MACHINE\\A\\C]\n\"c\"=\"1\"\n[HKEY_LOCAL_MACHINE\\A\\C\\D]\n[HKEY_LOCAL_MACHINE\\A\\CC]\n"
        "[-hkey_local_machine\\a\\c]\n\"gone\"=\"1\"\n[HKEY_LOCAL_MACHINE\\broken\n\"lost\"=\"1\"\n";
    EXPECT_EQ(summary(text), "LM|A\\B\nLM|A\\B|X|1|2\nCU|Software [x]\nCU|Software [x]|u|1|1\nLM|A\\CC\n");
}

TEST(RegistryText, HeadingsAndEncodings) {
    const std::string body = "[HKEY_LOCAL_MACHINE\\K]\n\"n\"=\"v\"\n";
    const std::string good = "LM|K\nLM|K|n|1|v\n";
    EXPECT_EQ(summary("REGEDIT4\n" + body), good);
    EXPECT_EQ(summary("REGEDIT4\n[HKEY_LOCAL_MACHINE\\K]\n\"n\"=hex(1):76,00"), good) << "single bytes in version 4";
    EXPECT_EQ(summary("\xEF\xBB\xBF" + (kHeading + body)), good);
    std::string wide = "\xFF\xFE";
    for (const char c : kHeading + body) {
        wide += c;
        wide += '\0';
    }
    EXPECT_EQ(summary(wide), good);
    EXPECT_EQ(summary(wide.substr(0, wide.size() - 1)), good) << "half a character at the end";
    EXPECT_EQ(summary(body), "");
    EXPECT_EQ(summary("REGEDIT5\n" + body), "");
    EXPECT_EQ(summary(""), "");
    EXPECT_EQ(summary(std::string("\0\x01REGEDIT4\n\xFF[", 13)), "");
}

/// A key of the current user's own, so that nothing of the machine's is touched.
TEST(Registry, WhatIsSetIsFoundListedAndDeleted) {
    const std::string parent = "Software\\Tarno2 registry test";
    const std::string key = parent + "\\Board one";
    const auto user = RegistryRoot::CurrentUser;
    std::string where;
    ASSERT_TRUE(registrySetString(user, key, "path", "C:\\d\\x.dll", where).ok()) << where;
    EXPECT_FALSE(where.empty());
    ASSERT_TRUE(registrySetString(user, key, "other", "2", where).ok());
    ASSERT_TRUE(registrySetString(user, key, "path", "b \"q\".dll", where).ok());
    const auto value = registryValue(user, "SOFTWARE\\tarno2 REGISTRY test\\board ONE", "PATH");
    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(value->type, kRegistryString);
    EXPECT_EQ(value->data, "b \"q\".dll");
    EXPECT_EQ(registryValue(user, key, "other")->data, "2");
    EXPECT_FALSE(registryValue(user, key, "none").has_value());
    EXPECT_FALSE(registryValue(RegistryRoot::LocalMachine, key, "path").has_value());
    EXPECT_EQ(registrySubKey(user, parent, 0, 1000), "Board one");
    EXPECT_EQ(registrySubKey(user, parent, 0, 6), "Board");
    for (const auto& [index, capacity] : {std::pair(0, 1), {-1, 1000}, {1, 1000}}) {
        EXPECT_FALSE(registrySubKey(user, parent, index, static_cast<size_t>(capacity)).has_value());
    }
    EXPECT_TRUE(registryDeleteKey(user, key, where).ok()) << where;
    EXPECT_FALSE(registryValue(user, key, "path").has_value());
    EXPECT_TRUE(registryDeleteKey(user, key, where).notFound());
    registryDeleteKey(user, parent, where);
}

}  // namespace
}  // namespace tarno2
