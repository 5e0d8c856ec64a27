#ifndef DOVWRITER_DOVWRITER_H
#define DOVWRITER_DOVWRITER_H

// Everything a host needs: the scene classes (Scene_V2 the newest), their
// enumerations and options, the trace log switch and the exception type.
#include "Exception.h"
#include "Export.h"
#include "LogRecord.h"
#include "Scene.h"
#include "Scene_V2.h"
#include "Types.h"

#endif
