// From the host's closeFile() to a finished file: the checks that refuse a
// scene which cannot be built, the walk from the root, and the save.

#include "ObjectManager/ObjectManager.h"

#include "Kel/Util/Raise.h"

namespace Kel {
namespace Dov {

namespace {

const char* const SaveToMethod = "Kel::Dov::ObjectManager::saveTo";
const char* const CloseFileMethod = "Kel::Dov::ObjectManager::closeFile";

}  // namespace

void ObjectManager::saveTo(const char* path, bool overwrite) {
  bindPath(path);
  const bool openBefore = file.stream != nullptr;
  try {
    explainingFailures("saveTo", overwrite, [&] { SetStreamFile(fileName, overwrite); });
  } catch (...) {
    // A stream that this call opened and could not write the head to is
    // closed again, so that the scene is as before and a later saveTo to
    // a good path works. A file opened by an earlier call stays open.
    if (!openBefore) file.AbandonStream();
    throw;
  }
  fileState = FileState::Bound;
}

void ObjectManager::bindPath(const char* path) {
  // A second file would get a head and nothing else: the tree of this scene
  // is built once, into the first file.
  if (fileState == FileState::Building || fileState == FileState::Finished)
    KEL_RAISE(19, "saveTo after closeFile: this scene has already built its file", SaveToMethod);
  if (path == nullptr) KEL_RAISE(16, "saveTo without a path", SaveToMethod);
  fileName = path;
}

void ObjectManager::createDefaultViews(const Identifier& object) {
  validate(object);
  root = object.second;
}

void ObjectManager::closeFile(const std::string& path) {
  if (path != fileName) {
    explainIgnoredClose(path.c_str());
    return;
  }
  refuseCloseInState();
  const std::unique_ptr<CloseProgress> progress = beginBuilding();
  const ParallelWrite parallel(*this);
  explainingFailures("closeFile", false, [&] {
    buildTree();
    Save(file, std::string());
  });
  endClose(*progress);
}

std::unique_ptr<CloseProgress> ObjectManager::beginBuilding() {
  checkSceneForClose();
  std::unique_ptr<CloseProgress> progress(new CloseProgress(*this, warnBeforeClose()));
  // From here on a failure leaves a partly built tree and a partly written
  // file behind; a later closeFile() must not build on top of them.
  fileState = FileState::Building;
  return progress;
}

void ObjectManager::endClose(CloseProgress& progress) {
  sharedDatasets.clear();
  fileState = FileState::Finished;
  progress.finish();
}

ObjectManager::ParallelWrite::ParallelWrite(ObjectManager& scene) : index(scene.GetFile().index) {
  scene.startParallelWrite();
}

ObjectManager::ParallelWrite::~ParallelWrite() { index.StopParallel(); }

void ObjectManager::refuseCloseInState() const {
  switch (fileState) {
    case FileState::Unbound:
      KEL_RAISE(19, "closeFile without a file: saveTo has not succeeded on this scene",
                CloseFileMethod);
    case FileState::Building:
      KEL_RAISE(19, "closeFile after an earlier closeFile failed while building; "
                    "the file is incomplete and cannot be finished",
                CloseFileMethod);
    case FileState::Finished:
      KEL_RAISE(19, "closeFile on a scene whose file is already finished", CloseFileMethod);
    case FileState::Bound:
      break;
  }
  if (root == NoObject)
    KEL_RAISE(19, "closeFile without a root object: createDefaultViews has not been called",
              CloseFileMethod);
}

void ObjectManager::buildTree() {
  // Builders of groups and shapes leave their components as steps on this
  // stack instead of recursing: the depth of a scene costs heap, not stack.
  buildSteps.clear();
  writeObject(root);
  while (!buildSteps.empty()) {
    const std::function<void()> step = std::move(buildSteps.back());
    buildSteps.pop_back();
    step();
  }
}

void ObjectManager::thenBuild(std::function<void()> step) { buildSteps.push_back(std::move(step)); }

void ObjectManager::writeObject(std::uint64_t index) {
  switch (objects[index].type) {
    case GeometryObject: writeGeometry(index); break;
    case ShapeObject: writeShape(index); break;
    case GroupObject: writeGroup(index); break;
    case MeshObject: writeMesh(index); break;
    default: break;  // data objects: read by the builders, never built
  }
}

}  // namespace Dov
}  // namespace Kel
