// Says whether it is the first instance, then waits for the end of its input; each line asks again.
#include "qtsingleapplication.h"

#include <iostream>
#include <string>

int main(int argc, char **argv)
{
    // Like the program itself, never destroyed.
    auto &application = *new QtSingleApplication(argc, argv, true);
    std::string line;
    do {
        std::cout << (application.isRunning() ? "another runs" : "first") << std::endl;
    } while (std::getline(std::cin, line));
}
