// Another process of a test. It is forked before this one opens the library, since a database
// connection must not be carried over a fork, and waits until it is told to go.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace kxudm::test {

class Child {
  public:
    // `work` runs in the child; it may write lines to the descriptor that it gets.
    explicit Child(const std::function<void(int out)>& work) {
        if (pipe(_go) != 0 || pipe(_out) != 0 || (_process = fork()) < 0) {
            throw std::runtime_error("no child process");
        }
        if (_process == 0) {
            close(_go[1]);
            close(_out[0]);
            char byte = 0;
            int code = 9;
            if (read(_go[0], &byte, 1) == 1) {
                try {
                    work(_out[1]);
                    code = 0;
                } catch (const std::exception& failure) {
                    fprintf(stderr, "child: %s\n", failure.what());
                    code = 1;
                }
            }
            _exit(code);
        }
        close(_go[0]);
        close(_out[1]);
    }
    ~Child() {
        if (_process > 0) {
            kill(_process, SIGKILL);
            waitpid(_process, nullptr, 0);
        }
        close(_go[1]);
        close(_out[0]);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void Go() { ASSERT_EQ(write(_go[1], "g", 1), 1); }
    void Kill() { kill(_process, SIGKILL); }
    // The exit code, or minus the signal that ended it.
    int Wait() {
        int status = 0;
        waitpid(std::exchange(_process, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    // The next whole line; empty at the end.
    std::string Line() {
        std::string line;
        char byte = 0;
        while (read(_out[0], &byte, 1) == 1) {
            if (byte == '\n') {
                return line;
            }
            line += byte;
        }
        return {};
    }

  private:
    int _go[2] = {-1, -1};
    int _out[2] = {-1, -1};
    pid_t _process = -1;
};

inline void WriteLine(int out, std::string line) {
    line += '\n';
    if (write(out, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        throw std::runtime_error("the other end is gone");
    }
}

}  // namespace kxudm::test
