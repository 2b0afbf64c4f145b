#include "tests/support/process.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace tarno2::test {

ChildProcess::~ChildProcess() {
    kill();
#if defined(_WIN32)
    if (handle_ != nullptr) {
        CloseHandle(handle_);
    }
#else
    if (watch_ >= 0) {
        close(watch_);
    }
#endif
}

#if defined(_WIN32)

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const std::string& output) {
    std::string line = '"' + program + '"';
    for (const std::string& argument : arguments) {
        line.append(" ").append(argument);
    }
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE out = CreateFileA(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                   CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = out;
    start.hStdError = out;
    PROCESS_INFORMATION info{};
    // Wine loses a new process now and then before any of the program has run, and gives no other reason.
    bool made = false;
    for (int i = 0; !made && i < 3 && (i == 0 || GetLastError() == ERROR_INTERNAL_ERROR); ++i) {
        made = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &info) != 0;
    }
    EXPECT_TRUE(made) << line << ": error " << GetLastError();
    handle_ = info.hProcess;
    CloseHandle(info.hThread);
    CloseHandle(out);
}

std::optional<int> ChildProcess::waitForEnd(std::chrono::seconds guard) {
    const auto milliseconds = static_cast<DWORD>(std::chrono::milliseconds(guard).count());
    if (!status_ && handle_ != nullptr && WaitForSingleObject(handle_, milliseconds) == WAIT_OBJECT_0) {
        DWORD code = 0;
        GetExitCodeProcess(handle_, &code);
        status_ = static_cast<int>(code);
    }
    return status_;
}

void ChildProcess::kill() {
    if (!status_ && handle_ != nullptr) {
        TerminateProcess(handle_, 1);
        static_cast<void>(waitForEnd(std::chrono::seconds(60)));
    }
}

bool ChildProcess::killEndsWrites() {
    return false;
}

bool ChildProcess::ask(Request) {
    return false;
}

#else

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const std::string& output) {
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t id = -1;
    if (posix_spawn(&id, program.c_str(), &actions, nullptr, argv.data(), environ) == 0) {
        id_ = id;
        watch_ = static_cast<int>(syscall(SYS_pidfd_open, id, 0));
    }
    posix_spawn_file_actions_destroy(&actions);
}

std::optional<int> ChildProcess::waitForEnd(std::chrono::seconds guard) {
    if (status_ || id_ < 0 || watch_ < 0) {
        return status_;
    }
    pollfd ended{watch_, POLLIN, 0};
    const auto deadline = std::chrono::steady_clock::now() + guard;
    int ready = -1;
    do {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        ready = poll(&ended, 1, rest.count() > 0 ? static_cast<int>(rest.count()) : 0);
    } while (ready < 0 && errno == EINTR);
    int status = 0;
    if (ready > 0 && waitpid(static_cast<pid_t>(id_), &status, 0) == id_) {
        status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    return status_;
}

void ChildProcess::kill() {
    if (!status_ && id_ > 0) {
        ::kill(static_cast<pid_t>(id_), SIGKILL);
        static_cast<void>(waitForEnd(std::chrono::seconds(60)));
    }
}

bool ChildProcess::killEndsWrites() {
    return true;
}

bool ChildProcess::ask(Request request) {
    const int terminate = request == Request::HangUp ? SIGHUP : SIGTERM;
    return !status_ && id_ > 0 &&
           ::kill(static_cast<pid_t>(id_), request == Request::Interrupt ? SIGINT : terminate) == 0;
}

#endif

}  // namespace tarno2::test
