#pragma once
// Runs the built program as a real child process, for the tests that need a
// second process or a hard kill.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace mv::test {

// Starts `args[0]` with `args`; its stderr goes to `stderrFile` and its
// stdout into `stdoutFd` (the write end of a pipe, say) when they are given.
inline pid_t spawn(const std::vector<std::string>& args, const std::filesystem::path& stderrFile = {},
                   int stdoutFd = -1) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        if (!stderrFile.empty()) {
            const FILE* err = std::freopen(stderrFile.c_str(), "w", stderr);
            (void)err;
        }
        if (stdoutFd >= 0) ::dup2(stdoutFd, STDOUT_FILENO);
        std::vector<char*> argv;
        for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    return pid;
}

// Waits for the child; its exit status, or -1 when a signal ended it.
inline int waitFor(pid_t pid) {
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace mv::test
