#include "imageresources.h"

#include <QResource>

void initImageResources()
{
    Q_INIT_RESOURCE(tavtestdialer);
}
