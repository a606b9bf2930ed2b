// Yardstick: a C++ program that does nothing but print what stmctl prints for --version.
#include <iostream>

int main()
{
    std::cout << "stmctl " STMCTL_VERSION "\n";
}
