#include "app/Resources.h"

#include <QtCore/qglobal.h>

// At global scope: the macro declares the generated function in the
// enclosing namespace.
static void registerResources()
{
    Q_INIT_RESOURCE(resources);
}

void Resources::load()
{
    static const bool loaded = (registerResources(), true);
    Q_UNUSED(loaded);
}
