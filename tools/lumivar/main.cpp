#include "command_line.h"

int main(int argc, char** argv) { return lumivar::run_command_line(argc, argv); }
