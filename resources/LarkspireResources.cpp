#include "resources/LarkspireResources.h"

#include <QtGlobal>

void initLarkspireResources()
{
    Q_INIT_RESOURCE(larkspire);
}
