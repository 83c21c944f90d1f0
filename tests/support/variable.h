// A variable of the environment for a scope.
#pragma once

#include <stdlib.h>

#include <string>

class Variable {
public:
    Variable(const char* name, const std::string& value) : name_(name) { set(value); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { unsetenv(name_); }

    void set(const std::string& value) { setenv(name_, value.c_str(), 1); }

private:
    const char* name_;
};
