// Says whether it is the first instance, then waits for the end of its input; each line asks again.
// With an argument it first makes a temporary directory of its own, as the last resort is one.
#include "qtsingleapplication.h"
#include "runtimedirectory.h"

#include <iostream>
#include <string>

int main(int argc, char **argv)
{
    if (argc > 1)
        RuntimeDirectory::setTemporary(RuntimeDirectory::lastResort());
    // Like the program itself, never destroyed.
    auto &application = *new QtSingleApplication(argc, argv, true);
    std::string line;
    do {
        std::cout << (application.isRunning() ? "another runs" : "first") << std::endl;
    } while (std::getline(std::cin, line));
}
