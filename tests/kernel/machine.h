#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace tarno2::test {

/// Runs a command in the machine, which has nothing but busybox and aplay; it has to succeed.
inline void run(const std::string& command) {
    ASSERT_EQ(std::system(("exec busybox " + command).c_str()), 0) << command;
}

/// Sends a signal to the recorder; there is only one.
inline void signalRecorder(const std::string& name) {
    run("killall -" + name + " tarno2-console");
}

}  // namespace tarno2::test
