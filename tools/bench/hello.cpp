// A program that only prints a line: what a start costs at the least.

#include <iostream>

int main() { std::cout << "hello\n"; }
