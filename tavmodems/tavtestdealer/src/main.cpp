#include "testdealerroot.h"
#include "versionmanager.h"

int main(int argc, char **argv)
{
    VersionManager::saveAppVersion(argc, argv);
    return TestDealerRoot::start(argc, argv);
}
