#include <iostream>

#include "kvpack/command_line.h"

int main(int argc, char* argv[]) { return runKvpack(argc, argv, std::cout, std::cerr); }
