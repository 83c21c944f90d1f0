#include <osapi/standard_descriptors.h>

#include "command_line.h"

int main(int argc, char** argv) {
    OSAPI::hold_standard_descriptors();
    return lumivar::run_command_line(argc, argv);
}
