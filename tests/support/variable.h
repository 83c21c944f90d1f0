// A variable of the environment for a scope, after which it is what it was.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

class Variable {
public:
    Variable(const char* name, const std::string& value) : name_(name) {
        if (const char* before = getenv(name)) {
            before_ = before;
        }
        set(value);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }

    void set(const std::string& value) { setenv(name_, value.c_str(), 1); }

private:
    const char* name_;
    std::optional<std::string> before_;
};
