// What goes wrong on the command line: one clear line for the user.
#pragma once

#include <base/exceptions.h>

#include <stdexcept>
#include <string>

namespace lumivar {

/// The work cannot be done. `what()` is the whole line for the user, without the program's name.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command line asks for something that does not exist or does not go together.
class UsageError : public Failure {
public:
    using Failure::Failure;
};

/// "SUBJECT: TEXT OF ERRNO".
Failure system_failure(const std::string& subject, int error_number);
/// The same of a failed call of the operating-system layer, without its name.
Failure system_failure(const std::string& subject, const StrXception& failure);

}  // namespace lumivar
