#ifndef DOVWRITER_DOVWRITER_H
#define DOVWRITER_DOVWRITER_H

// Everything a host needs: the scene classes, their enumerations, the trace
// log switch and the exception type.
#include "Exception.h"
#include "Export.h"
#include "LogRecord.h"
#include "Scene.h"
#include "Types.h"

#endif
