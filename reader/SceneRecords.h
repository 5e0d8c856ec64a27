#ifndef DOVREADER_SCENERECORDS_H
#define DOVREADER_SCENERECORDS_H

// Readers of the stored records of a scene, one per record kind, each on
// the cursor of the stream that holds it.

#include <string>

#include "reader/Scene.h"
#include "reader/SceneCursor.h"

namespace DovReader {

AttributeList ReadAttributeMap(SceneCursor& attributes);
GlobalInformation ReadGlobalInformationRecord(SceneCursor& cursor);
MaterialContent ReadMaterialRecord(SceneCursor& resources);
GroupContent ReadGroup(SceneCursor& light, SceneCursor& attributes);
// The variable list of a geometry stored with `version`.
std::vector<Variable> ReadGeometry(const std::string& version, SceneCursor& light,
                                   SceneCursor& attributes);

}  // namespace DovReader

#endif
