// Runs a check in a child process that may be crippled without harm to the other tests.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace kxct::test {

/// Whether `check` answered true in a child of this process. The child ends without cleaning up.
inline bool InChild(const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(check() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

}  // namespace kxct::test
