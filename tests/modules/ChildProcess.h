// SPDX-License-Identifier: GPL-3.0-or-later
// Runs part of a test in a child process, so that a signal or a hang in the code under test
// fails that test instead of ending or stalling the whole test program.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>

#include <sys/wait.h>
#include <unistd.h>

// Forks; the child runs body and exits with 0 when it raised no test failure (its failures are
// printed by the child). The parent waits for it; a child still running after patienceSeconds
// hangs and is killed. Success when the child ended normally with 0.
inline ::testing::AssertionResult RunsInChild(const std::function<void()>& body, int patienceSeconds = 120)
{
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t pid = ::fork();
    if (pid < 0)
        return ::testing::AssertionFailure() << "fork failed: " << std::strerror(errno);
    if (pid == 0) {
        body();
        std::fflush(stdout);
        std::fflush(stderr);
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    for (int tenths = 0;; ++tenths) {
        const pid_t done = ::waitpid(pid, &status, WNOHANG);
        if (done == pid)
            break;
        if (done < 0)
            return ::testing::AssertionFailure() << "waiting for the child failed: " << std::strerror(errno);
        if (tenths >= patienceSeconds * 10) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            return ::testing::AssertionFailure() << "still running after " << patienceSeconds << " s: it hangs";
        }
        ::usleep(100'000);
    }
    if (WIFSIGNALED(status))
        return ::testing::AssertionFailure()
            << "died by signal " << WTERMSIG(status) << " (" << ::strsignal(WTERMSIG(status)) << ")";
    if (WEXITSTATUS(status) != 0)
        return ::testing::AssertionFailure()
            << "ended with exit code " << WEXITSTATUS(status) << " (a sanitizer's report or failed checks above)";
    return ::testing::AssertionSuccess();
}
