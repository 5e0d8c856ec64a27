#ifndef DOVINSPECT_TREEJSON_H
#define DOVINSPECT_TREEJSON_H

// The scene tree as one JSON document: a flat list of entries in id order,
// each with its parent's id, so that no depth of tree nests the document.

#include <ostream>

#include "Reading.h"

namespace DovInspect {

void PrintTreeJson(const ModelFile& model, std::ostream& out);

}  // namespace DovInspect

#endif
