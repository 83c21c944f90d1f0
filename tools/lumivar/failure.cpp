#include "failure.h"

#include <system_error>

namespace lumivar {

Failure system_failure(const std::string& subject, int error_number) {
    return Failure(subject + ": " + std::generic_category().message(error_number));
}

}  // namespace lumivar
