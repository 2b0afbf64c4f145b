#include "core/storage/data_writer.h"

#include <gtest/gtest.h>
#include <vector>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/core/rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

TEST(DataWriter, EmptyRecordingLeavesNothing) {
    TemporaryFolder folder;
    WriterSetup setup = fakeSetup(joinPath(joinPath(folder.file("new"), "deep"), "run.dat"), 2);
    RecordDescription description;
    DataWriter writer;
    ASSERT_EQ(writer.open(setup, description), 0);
    EXPECT_TRUE(fileExists(setup.fileName)) << "the folders are made";
    EXPECT_TRUE(writer.Close());
    EXPECT_TRUE(writer.Close()) << "a second time does no harm";
    EXPECT_TRUE(listDirectory(parentFolder(setup.fileName)).empty());
}

TEST(DataWriter, WhatCannotBeOpened) {
    TemporaryFolder folder;
    const std::string file = folder.write("file", "x");
    struct Case {
        std::string name;
        uint32_t channels;
        int32_t code;
    };
    for (const Case& c : {Case{"", 2, -2}, Case{folder.file("run.dat"), 0, -3}, Case{joinPath(file, "run.dat"), 2, -5},
                          Case{joinPath(joinPath(file, "deep"), "run.dat"), 2, -5}}) {
        RecordDescription description;
        DataWriter writer;
        EXPECT_EQ(writer.open(fakeSetup(c.name, c.channels), description), c.code) << c.name;
        EXPECT_EQ(writer.openError().empty(), c.code != -5) << c.name;
        EXPECT_EQ(writer.Write(reinterpret_cast<const std::byte*>("1234"), 4, 4), -1) << c.name;
        writer.Close();
    }
    EXPECT_EQ(listDirectory(folder.path()), std::vector<std::string>{"file"});
    EXPECT_EQ(readFile(file), "x");
}

}  // namespace
}  // namespace tarno2::test
