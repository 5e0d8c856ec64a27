#ifndef DOVINSPECT_VALUENAMES_H
#define DOVINSPECT_VALUENAMES_H

// The value names of the reader, under the names the commands use.

#include "reader/ValueNames.h"

namespace DovInspect {

using DovReader::FormatNumber;
using DovReader::kValueSeparator;
using DovReader::Readable;
using DovReader::SplitValueName;
using DovReader::TimeAxis;
using DovReader::Unescape;
using DovReader::ValueName;

}  // namespace DovInspect

#endif
