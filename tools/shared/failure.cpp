#include "failure.h"

#include <osapi/reason.h>

#include <system_error>

namespace lumivar {

Failure system_failure(const std::string& subject, int error_number) {
    return Failure(subject + ": " + std::generic_category().message(error_number));
}

Failure system_failure(const std::string& subject, const StrXception& failure) {
    return Failure(subject + ": " + OSAPI::reason(failure).c_str());
}

}  // namespace lumivar
