// An environment variable that a test changes; it gets its former state back at the end.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

class KeptVariable {
  public:
    explicit KeptVariable(const char* name) : _name(name) {
        if (const char* value = std::getenv(name)) {
            _former = value;
        }
    }
    KeptVariable(const KeptVariable&) = delete;
    KeptVariable& operator=(const KeptVariable&) = delete;
    ~KeptVariable() {
        if (_former) {
            Set(*_former);
        } else {
            Unset();
        }
    }

    void Set(const std::string& value) { ::setenv(_name.c_str(), value.c_str(), 1); }
    void Unset() { ::unsetenv(_name.c_str()); }

  private:
    std::string _name;
    std::optional<std::string> _former;
};
