// What exists elsewhere than on Windows only: pipes, symbolic links, signals, folders of registry texts.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

#include "platform/child_probe.h"
#include "platform/disk_reserve.h"
#include "platform/event.h"
#include "platform/file.h"
#include "platform/locale.h"
#include "platform/memory.h"
#include "platform/paths.h"
#include "platform/posix/memory_groups.h"
#include "platform/registry.h"
#include "platform/run_program.h"
#include "platform/termination.h"
#include "platform/thread.h"
#include "platform/volume.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

using test::ScopedEnvironment;
using test::TemporaryFolder;

TEST(PosixEvent, CountsAndNeverBlocksOnADriversEvent) {
    const int descriptor = eventfd(0, 0);  // a blocking one
    Event event = Event::wrap(static_cast<uint32_t>(descriptor));
    const Event other;
    EXPECT_EQ(event.reset(), 0U);
    for (int i = 0; i < 3; ++i) {
        event.set();
    }
    EXPECT_EQ(event.reset(), 3U);
    EXPECT_EQ(event.wait(0), WaitResult::TimedOut);
    ::close(descriptor);
    EXPECT_EQ(event.wait(0), WaitResult::Failed);
    EXPECT_EQ(Event::waitEither(event, other, 0).error.code(), EBADF);
}

TEST(PosixFile, PipesAndFullDisks) {
    const TemporaryFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    File file;
    EXPECT_FALSE(file.open(pipe, FileMode::OpenExisting, FileAccess::Read, FileShare::None).ok());
    ASSERT_TRUE(file.open("/dev/full", FileMode::OpenExisting, FileAccess::Write, FileShare::ReadWrite).ok());
    size_t done = 1;
    EXPECT_FALSE(file.write("x", 1, done).ok());
    EXPECT_EQ(done, 0U);
    ASSERT_EQ(symlink("nowhere", folder.file("link").c_str()), 0);
    EXPECT_TRUE(fileExists(folder.file("link"))) << "the name is taken";
}

TEST(PosixFile, APlainFileIsNeitherALinkNorAnythingElse) {
    const TemporaryFolder folder;
    const std::string target = folder.write("target", "kept");
    ASSERT_EQ(symlink("target", folder.file("link").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", folder.file("dangling").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    for (const char* name : {"link", "dangling", "pipe"}) {
        EXPECT_FALSE(isPlainFile(folder.file(name)));
        EXPECT_EQ(plainFileSize(folder.file(name)), std::nullopt);
        for (const auto mode :
             {FileMode::CreateAlways, FileMode::CreateNew, FileMode::OpenExisting, FileMode::OpenAlways}) {
            File file;
            EXPECT_FALSE(file.openPlain(folder.file(name), mode, FileAccess::Write, FileShare::None).ok()) << name;
        }
    }
    EXPECT_FALSE(fileExists(folder.file("nowhere")));
    EXPECT_EQ(test::readFile(target), "kept");
    EXPECT_TRUE(isPlainFile(target));
    EXPECT_EQ(plainFileSize(target), 4U);
    ASSERT_EQ(link(target.c_str(), folder.file("second").c_str()), 0);
    File file;
    ASSERT_TRUE(file.openPlain(target, FileMode::OpenExisting, FileAccess::ReadWriteRemove, FileShare::None).ok());
    EXPECT_TRUE(file.hasOtherNames());
    ASSERT_TRUE(renameFile(target, folder.file("third")).ok());
    ASSERT_EQ(symlink("third", target.c_str()), 0);
    EXPECT_TRUE(file.removeNamed(target).notFound()) << "a link is another name";
    EXPECT_TRUE(fileExists(target));
}

TEST(PosixPaths, UserSettingsFolder) {
    const ScopedEnvironment home("HOME", "/home/x");
    {
        const ScopedEnvironment config("XDG_CONFIG_HOME", "/c");
        EXPECT_EQ(userSettingsFolder(), "/c/tarno2");
    }
    const ScopedEnvironment relative("XDG_CONFIG_HOME", "c");
    EXPECT_EQ(userSettingsFolder(), "/home/x/.config/tarno2");
}

TEST(PosixLocale, TheFirstVariableThatIsSetNamesTheLanguage) {
    struct Case {
        const char* all;
        const char* messages;
        const char* lang;
        const char* language;
    };
    const Case cases[] = {{"", "", "", ""},          {"", "", "ru_RU.UTF-8", "ru"}, {"", "en_US", "ru", "en"},
                          {"RU", "en", "en", "ru"},  {"C.UTF-8", "", "ru_RU", ""},  {"POSIX", "", "", ""},
                          {"de@euro", "", "", "de"}, {"", "rus_RU", "", ""}};
    for (const auto& [all, messages, lang, language] : cases) {
        const ScopedEnvironment first("LC_ALL", all);
        const ScopedEnvironment second("LC_MESSAGES", messages);
        const ScopedEnvironment third("LANG", lang);
        EXPECT_EQ(userLanguage(), language) << all << '|' << messages << '|' << lang;
    }
}

TEST(PosixVolume, FollowsLinksAndNamesMounts) {
    const TemporaryFolder folder;
    VolumeInfo info;
    ASSERT_EQ(symlink("/proc", folder.file("link").c_str()), 0);
    ASSERT_EQ(queryVolume(folder.file("link/no/file"), info), VolumeStatus::Ok);
    EXPECT_EQ(info.fileSystem, "proc");
    EXPECT_EQ(info.root, "/proc/");
}

TEST(PosixVolume, IsKnownWithoutATableOfMounts) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can change the root";
    }
    const TemporaryFolder folder;
    EXPECT_TRUE(succeedsInChild([&folder] {
        VolumeInfo info;
        return chroot(folder.path().c_str()) == 0 && queryVolume("/run.dat", info) == VolumeStatus::Ok &&
               !info.fileSystem.empty() && info.freeBytes > 0;
    }));
}

TEST(PosixTermination, SignalsCallBackOnAThreadOfItsOwn) {
    Event called;
    sigset_t before;
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    {
        TerminationWatcher watcher([&] { called.set(); });
        for (const int signal : {SIGINT, SIGTERM, SIGINT}) {
            ASSERT_EQ(kill(getpid(), signal), 0);
            EXPECT_EQ(called.wait(kWaitForever), WaitResult::Signalled);
            called.reset();
        }
        watcher.finished();
    }
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    EXPECT_EQ(sigismember(&after, SIGTERM), sigismember(&before, SIGTERM));
}

TEST(PosixTermination, WhoAsksOnceMoreEndsAProgramThatDoesNotCome) {
    EXPECT_EXIT(
        {
            Event called;
            const TerminationWatcher watcher([&] {
                std::fputs("first ", stderr);
                called.set();
            });
            for (;;) {  // nobody ends this
                kill(getpid(), SIGTERM);
                static_cast<void>(called.wait(kWaitForever));
            }
        },
        testing::KilledBySignal(SIGTERM), "first .*once more");
}

TEST(PosixThread, WhatARaisedThreadMakesIsOrdinary) {
    Thread outer;
    int outerPolicy = 0;
    int innerPolicy = -1;
    ASSERT_TRUE(outer.create([&] {
        outerPolicy = sched_getscheduler(0);
        Thread inner;
        ASSERT_TRUE(inner.create([&] { innerPolicy = sched_getscheduler(0); }));
    }));
    if (outer.raisePriority() != PriorityResult::Realtime) {
        GTEST_SKIP() << "the system grants no real-time priority here";
    }
    outer.join();
    EXPECT_EQ(outerPolicy, SCHED_FIFO | SCHED_RESET_ON_FORK);
    EXPECT_EQ(innerPolicy, SCHED_OTHER);
}

TEST(PosixDiskReserve, ItsFileNeverHasAName) {
    const TemporaryFolder folder;
    const int probe = open(folder.path().c_str(), O_TMPFILE | O_WRONLY, 0600);
    if (probe < 0) {
        GTEST_SKIP() << "this file system has no nameless files";
    }
    ::close(probe);
    const int watch = inotify_init1(IN_NONBLOCK);
    ASSERT_GE(inotify_add_watch(watch, folder.path().c_str(), IN_CREATE | IN_DELETE | IN_MOVE), 0);
    DiskReserve reserve;
    ASSERT_TRUE(reserve.hold(folder.path(), 100'000).ok());
    reserve.release();
    char event[256];
    EXPECT_LT(read(watch, event, sizeof event), 0) << "a kill would leave a file behind";
    ::close(watch);
}

TEST(PosixProgram, OutputsAreOpenAndFailedWritesAreNoSignals) {
    const TemporaryFolder folder;
    const std::string name = folder.file("data");
    const auto body = [&name] {
        const int file = open(name.c_str(), O_RDWR | O_CREAT, 0600);
        if (file <= STDERR_FILENO) {
            return 1;
        }
        int pipe[2];
        if (::pipe(pipe) != 0 || ::close(pipe[0]) != 0 || write(pipe[1], "x", 1) >= 0 || errno != EPIPE) {
            return 2;
        }
        const rlimit ten{10, 10};
        setrlimit(RLIMIT_FSIZE, &ten);
        return write(file, "0123456789ab", 12) == 10 && write(file, "ab", 2) < 0 && errno == EFBIG ? 0 : 3;
    };
    EXPECT_TRUE(succeedsInChild([&] {
        std::signal(SIGPIPE, SIG_DFL);
        std::signal(SIGXFSZ, SIG_DFL);
        for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor) {
            ::close(descriptor);
        }
        return runProgram("test", 9, body) == 0;
    }));
}

TEST(PosixMemory, EveryLimitAroundTheProcessCounts) {
    constexpr uint64_t kAvailable = 8'000'000 * uint64_t{1024};
    using Files = std::vector<std::pair<std::string, std::string>>;
    const std::string v2 = "sys/fs/cgroup/";
    const std::string v1 = "sys/fs/cgroup/memory/";
    const struct {
        const char* what;
        const char* groups;
        Files files;
        uint64_t room;
    } cases[] = {
        {"no groups", "", {}, kAvailable},
        {"a group without limit",
         "0::/a\n",
         {{v2 + "a/memory.max", "max"}, {v2 + "a/memory.current", "5"}},
         kAvailable},
        {"a limit, and what it caches",
         "0::/a/b\n",
         {{v2 + "a/b/memory.max", "1000\n"},
          {v2 + "a/b/memory.current", "900"},
          {v2 + "a/b/memory.stat", "anon 500\ninactive_file 250\nactive_file 50\n"}},
         400},
        {"the group around it is narrower",
         "0::/a/b\n",
         {{v2 + "a/b/memory.max", "1000"},
          {v2 + "a/b/memory.current", "100"},
          {v2 + "a/memory.max", "max"},
          {v2 + "a/memory.high", "300"},
          {v2 + "a/memory.current", "200"}},
         100},
        {"over its limit", "0::/\n", {{v2 + "memory.max", "10"}, {v2 + "memory.current", "20"}}, 0},
        {"a container that sees but its own group",
         "4:cpu:/\n3:cpuset,memory:/docker/0815\n",
         {{v1 + "memory.limit_in_bytes", "5000"},
          {v1 + "memory.usage_in_bytes", "3000"},
          {v1 + "memory.stat", "inactive_file 7\ntotal_inactive_file 1000\n"}},
         3000},
        {"lines that are none", "x\n0::nowhere\n::\n", {{v2 + "memory.max", "1"}}, kAvailable},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const TemporaryFolder root;
        const auto write = [&root](const std::string& name, const std::string& text) {
            std::filesystem::create_directories(parentFolder(root.file(name)));
            root.write(name, text);
        };
        write("proc/meminfo", "MemTotal: 9000000 kB\nMemAvailable: 8000000 kB\n");
        write("proc/self/cgroup", each.groups);
        for (const auto& [name, text] : each.files) {
            write(name, text);
        }
        EXPECT_EQ(systemMemoryRoom(root.path()), each.room);
    }
#ifndef __SANITIZE_ADDRESS__  // which takes more of the address space than any limit
    EXPECT_TRUE(succeedsInChild([] {
        const rlimit space{64 << 20, 64 << 20};
        setrlimit(RLIMIT_AS, &space);
        MemoryBlock block;
        return usableMemory() < (64 << 20) && !block.reserve(128 << 20) && block.data() == nullptr;
    }));
#endif
}

class RegistryFolders : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(createDirectory(first_).ok());
        ASSERT_TRUE(createDirectory(second_).ok());
    }
    static std::string text(const std::string& key, const std::string& value) {
        return "REGEDIT4\n[HKEY_LOCAL_MACHINE\\" + key + "]\n\"path\"=" + value + "\n";
    }
    static std::string path(const std::string& key) {
        const auto value = registryValue(RegistryRoot::LocalMachine, key, "path");
        return value ? value->data + '@' + fileNameOf(value->folder) : "none";
    }

    TemporaryFolder folder_;
    std::string first_ = folder_.file("first");
    std::string second_ = folder_.file("second");
    ScopedEnvironment named_{"TARNO2_REGISTRY", first_ + ":" + folder_.file("missing") + ':' + second_};
};

TEST_F(RegistryFolders, FirstFolderAndFirstFileWin) {
    (void)folder_.write("second/a.reg", text("D\\X", "\"second\"") + text("D\\Other", "\"o\"").substr(9));
    (void)folder_.write("first/b.reg", text("D\\x", "\"b\""));
    (void)folder_.write("first/a.reg", text("d\\X\\Deep", "\"a\""));
    (void)folder_.write("first/ignored.txt", text("D\\Ignored", "\"i\""));
    EXPECT_EQ(path("D\\X"), "b@first");
    EXPECT_EQ(path("D\\other"), "o@second");
    const auto sub = [](int index) { return registrySubKey(RegistryRoot::LocalMachine, "D", index, 1000); };
    EXPECT_EQ(sub(0), "X");
    EXPECT_EQ(sub(1), "Other");
    EXPECT_EQ(sub(2), std::nullopt);
}

TEST_F(RegistryFolders, BadTextsAreSteppedOver) {
    ASSERT_EQ(symlink("loop.reg", (first_ + "/loop.reg").c_str()), 0);
    ASSERT_EQ(symlink("..", (first_ + "/up.reg").c_str()), 0);
    ASSERT_TRUE(createDirectory(first_ + "/folder.reg").ok());
    ASSERT_EQ(mkfifo((first_ + "/pipe.reg").c_str(), 0600), 0);
    (void)folder_.write("first/binary.reg", std::string(5000, '\0'));
    (void)folder_.write("first/large.reg", std::string(2 << 20, 'x'));
    (void)folder_.write("first/type.reg", text("D\\T", "dword:1"));
    const std::string whole(999, 'n');
    (void)folder_.write("first/long.reg", text("D\\" + whole, "\"w\"") + text("D\\" + whole + "tail", "\"t\""));
    EXPECT_EQ(registryValue(RegistryRoot::LocalMachine, "D\\T", "path")->type, kRegistryDword);
    EXPECT_EQ(registrySubKey(RegistryRoot::LocalMachine, "D", 0, 1000), whole);
    EXPECT_EQ(registrySubKey(RegistryRoot::LocalMachine, "D", 1, 1000), whole) << "a longer name is cut";
    EXPECT_EQ(path("D\\" + whole + "tail"), "t@first");
}

TEST_F(RegistryFolders, WrittenTextsNeverTouchOtherKeys) {
    const auto machine = RegistryRoot::LocalMachine;
    const std::string mixed = text("D\\Board", "\"mine\"") + text("D\\Second", "\"m\"").substr(9);
    (void)folder_.write("first/Board.reg", mixed);
    std::string where;
    ASSERT_TRUE(registrySetString(machine, "D\\a/b", "path", "x", where).ok());
    EXPECT_EQ(fileNameOf(where), "a_b.reg");
    ASSERT_TRUE(registrySetString(machine, "E\\Board", "path", "Ж", where).ok());
    EXPECT_EQ(fileNameOf(where), "Board-2.reg");
    EXPECT_EQ(path("E\\Board"), "Ж@first") << "kept through UTF-16";
    EXPECT_EQ(test::readFile(first_ + "/Board.reg"), mixed);
    const std::string longName(999, 'L');
    ASSERT_TRUE(registrySetString(machine, "D\\" + longName, "path", "l", where).ok()) << where;
    EXPECT_EQ(path("D\\" + longName), "l@first");
    EXPECT_FALSE(registrySetString(machine, "D\\New", "path", "two\nlines", where).ok());
    EXPECT_TRUE(registryDeleteKey(machine, "D\\Board", where).notFound()) << "that text holds another key too";
    EXPECT_TRUE(registryDeleteKey(machine, "e\\board", where).ok());
    EXPECT_FALSE(fileExists(where));
}

TEST_F(RegistryFolders, AnEmptyElementStandsForTheUsualPlaces) {
    const ScopedEnvironment settings("XDG_CONFIG_HOME", folder_.path());
    (void)folder_.write("first/a.reg", text("D\\F", "\"f\""));
    (void)folder_.write("second/a.reg", text("D\\U", "\"s\""));
    ASSERT_TRUE(createFolders(folder_.file("tarno2/registry.d")).ok());
    (void)folder_.write("tarno2/registry.d/a.reg", text("D\\U", "\"u\"") + text("D\\F", "\"u\"").substr(9));
    const std::tuple<std::string, const char*, const char*, const char*> cases[] = {
        {first_ + ':' + second_, "f@first", "s@second", "first"},
        {first_ + "::" + second_, "f@first", "u@registry.d", "first"},
        {second_ + ':', "u@registry.d", "s@second", "second"},
        {':' + second_, "u@registry.d", "u@registry.d", "registry.d"},
        {"", "u@registry.d", "u@registry.d", "registry.d"},
    };
    for (const auto& [variable, f, u, written] : cases) {
        SCOPED_TRACE(variable);
        const ScopedEnvironment named("TARNO2_REGISTRY", variable);
        EXPECT_EQ(path("D\\F"), f);
        EXPECT_EQ(path("D\\U"), u);
        std::string where;
        EXPECT_TRUE(registrySetString(RegistryRoot::LocalMachine, "D\\New", "path", "n", where).ok());
        EXPECT_EQ(fileNameOf(parentFolder(where)), written);
        EXPECT_TRUE(registryDeleteKey(RegistryRoot::LocalMachine, "D\\New", where).ok());
    }
}

TEST_F(RegistryFolders, MissingFoldersAreMade) {
    const ScopedEnvironment unmade("TARNO2_REGISTRY", folder_.file("x/y/z"));
    std::string where;
    ASSERT_TRUE(registrySetString(RegistryRoot::LocalMachine, "K", "path", "v", where).ok());
    EXPECT_EQ(where, folder_.file("x/y/z/K.reg"));
    const ScopedEnvironment below("TARNO2_REGISTRY", where + "/below");
    EXPECT_FALSE(registrySetString(RegistryRoot::LocalMachine, "K", "path", "v", where).ok());
}

}  // namespace
}  // namespace tarno2
