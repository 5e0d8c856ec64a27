#ifndef DOVWRITER_OBJECTMANAGER_OBJECTMANAGER_H
#define DOVWRITER_OBJECTMANAGER_OBJECTMANAGER_H

// Everything behind one scene handle: the object table that the host fills,
// and, by derivation, the scene tree and the output file that closeFile()
// builds from it.

#include <DovWriter/Exception.h>
#include <DovWriter/ScenePart.h>
#include <DovWriter/Scene_V2.h>
#include <DovWriter/Types.h>

#include <boost/any.hpp>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Kel/Dov/AttributeMap.h"
#include "Kel/Dov/Geometry.h"
#include "Kel/Dov/Tree.h"
#include "ObjectManager/ArrayView.h"
#include "ObjectManager/Diagnostics.h"

namespace Kel {
namespace Dov {

struct Dataset;
struct MeshFrame;

// Typed values under keys fixed by the library.
typedef std::map<std::string, boost::any> PropertyMap;

// A link is an object index; all bits set means no object.
const std::uint64_t NoObject = ~static_cast<std::uint64_t>(0);
typedef std::vector<std::uint64_t> LinkList;
typedef std::vector<std::string> TextList;
typedef std::map<std::string, std::uint64_t> IndexMap;

struct ObjectRecord {
  std::string name;
  ObjectType type = ArrayObject;
  KelDov::AttributeMap attributes;
  PropertyMap properties;
};

class ObjectManager : public KelDov::Tree {
 public:
  explicit ObjectManager(const char* title);

  // ---- Object table ------------------------------------------------------
  Identifier createObject(ObjectType type);
  ObjectType getType(const Identifier& object) const;
  const char* getName(const Identifier& object) const;
  void setName(const Identifier& object, const char* name);
  void setTitle(const char* title);
  // Code 8, "Invalid Identifier", unless the identifier names an object of
  // this scene.
  void validate(const Identifier& object) const;

  const std::string& title() const { return sceneTitle; }
  std::uint64_t objectCount() const { return objects.size(); }
  ObjectRecord& record(std::uint64_t index) { return objects[index]; }
  const ObjectRecord& record(std::uint64_t index) const { return objects[index]; }

  // ---- Property store ------------------------------------------------------
  // The held T, or null if the key holds another type. An absent key is
  // first given a copy of `fallback`. Never converts.
  template <class T>
  T* readProperty(std::uint64_t index, const std::string& key, const T& fallback) {
    PropertyMap& properties = objects[index].properties;
    auto found = properties.find(key);
    if (found == properties.end()) found = properties.emplace(key, boost::any(fallback)).first;
    return boost::any_cast<T>(&found->second);
  }
  bool hasProperty(std::uint64_t index, const std::string& key) const {
    return objects[index].properties.count(key) != 0;
  }
  template <class T>
  void storeProperty(std::uint64_t index, const std::string& key, T&& value) {
    objects[index].properties[key] = boost::any(std::forward<T>(value));
  }

  // ---- Setters of the scene interface ---------------------------------------
  // Each validates all its identifiers first, in argument order, so that a
  // bad one fails the call before anything has changed. Values of the
  // template forms become their value text (ValueText.h) where they are kept.

  // Text attributes and arrays.
  template <class T>
  void setProperty(const Identifier& object, const char* key, const T& value);
  // Copies count x "Dimension" elements (the dimension in force now).
  template <class T>
  void setValues(const Identifier& array, const T* values, std::uint64_t count);
  // The checks that setValues and lendValues share, before anything is
  // allocated or kept: the identifier, a product that would wrap or not fit
  // in memory (std::length_error), a null pointer with elements to read
  // (code 16, raised as from `method`). Returns the number of elements to
  // take.
  template <class T>
  std::uint64_t acceptValues(const Identifier& array, const T* values, std::uint64_t count,
                             const char* method);
  void setDimension(const Identifier& object, unsigned char dimension);

  // Appearance and transformations.
  void setColor(const Identifier& object, ColorType type, const float& red, const float& green,
                const float& blue, const float& alpha);
  void setColor(const Identifier& object, ColorType type, const float* rgba, bool hasAlpha);
  void setAmbientIntensity(const Identifier& object, float intensity);
  void setTranslation(const Identifier& object, float x, float y, float z);
  void setRotation(const Identifier& object, float a, float b, float c, float d);
  void setScale(const Identifier& object, float x, float y, float z);
  void setVisibility(const Identifier& object, bool visible);
  void setMeshType(const Identifier& object, MeshType type);
  void setRandomColors(const Identifier& object);

  // Mesh data: plain links on the mesh, or recorded per instance value.
  void setCoordinates(const Identifier& mesh, const Identifier& array);
  void setConnectivity(const Identifier& mesh, const Identifier& array);
  void setConnectivity(const Identifier& mesh, const Identifier& connectivity,
                       const Identifier& polylength);
  void setNodeIndices(const Identifier& mesh, const Identifier& array);
  void setElementIndices(const Identifier& mesh, const Identifier& array);
  template <class T>
  void setCoordinates(const Identifier& mesh, const Identifier& group, const T& value,
                      const Identifier& array);
  template <class T>
  void setConnectivity(const Identifier& mesh, const Identifier& group, const T& value,
                       const Identifier& array);
  template <class T>
  void setConnectivity(const Identifier& mesh, const Identifier& group, const T& value,
                       const Identifier& connectivity, const Identifier& polylength);
  template <class T>
  void setNodeIndices(const Identifier& mesh, const Identifier& group, const T& value,
                      const Identifier& array);
  template <class T>
  void setElementIndices(const Identifier& mesh, const Identifier& group, const T& value,
                         const Identifier& array);

  // Results, element sets, components, materials, application information.
  void setResult(const Identifier& mesh, const char* name, const Identifier& array);
  void setResult(const Identifier& mesh, const char* name, VariableType type,
                 const Identifier& array);
  template <class T>
  void setResult(const Identifier& mesh, const Identifier& group, const T& value,
                 const char* name, const Identifier& array);
  template <class T>
  void setResult(const Identifier& mesh, const Identifier& group, const T& value,
                 const char* name, VariableType type, const Identifier& array);
  void addElementSet(const Identifier& mesh, const Identifier& set);
  template <class T>
  void addElementSet(const Identifier& mesh, const Identifier& group, const T& value,
                     const Identifier& set);
  template <class T>
  void addElementSet(const Identifier& mesh, const Identifier& group, const T& value,
                     const char* name, const Identifier& set);
  std::uint64_t addComponent(const Identifier& parent, const Identifier& child);
  std::uint64_t addComponent(const Identifier& parent, const Identifier& child,
                             const Identifier& transformation);
  void removeComponent(const Identifier& parent, const std::uint64_t& component);
  void setMaterial(const Identifier& object, const Identifier& material);
  template <class T>
  void setApplicationInfo(const char* name, const T& value);

  // The recording step: enters `value` under `name` on the instance group and
  // links the array (or set) object to it. Indices are validated already.
  template <class T>
  void recordResult(std::uint64_t mesh, std::uint64_t group, const T& value,
                    const std::string& name, std::uint64_t array);
  template <class T>
  void recordElementSet(std::uint64_t mesh, std::uint64_t group, const T& value,
                        const std::string& name, std::uint64_t set);

  // Property keys under which the recording step keeps its lists.
  static constexpr char ResultKeyMark = '\x1E';
  static constexpr char ElementSetKeyMark = '\x1D';

  // ---- File binding and closing --------------------------------------------
  // Opens the file and writes its head. Refused (code 19) once a closeFile()
  // has started building, since the tree could not be built twice.
  void saveTo(const char* path, bool overwrite);
  // The checks of saveTo, and the path kept; the file is not opened.
  void bindPath(const char* path);
  void createDefaultViews(const Identifier& root);
  // Builds the tree from the root and finishes the file, if `path` is the
  // stored file name byte for byte; otherwise does nothing. Host errors in
  // what the walk would reach are refused before any dataset is written.
  void closeFile(const std::string& path);

  // ---- One part of a file that several processes write (ScenePart.h) ------------
  void saveToAsPart(PartGroup& group, const char* path, bool overwrite);
  void closeFileAsPart(PartGroup& group, const char* path);
  // A part scene is saved and closed only together with the other parts:
  // through a base handle, `operation` would write a file of its own.
  void markAsPart() { partOfGroup = true; }
  void refusePartAlone(const char* operation) const;

  // ---- Options of the third interface version -------------------------------
  // How closeFile() writes; refused (code 19) once building has started.
  void setWriteOptions(const WriteOptions& options);
  const WriteOptions& writeOptions() const { return options; }
  // Sets the file's index to write as the options say; the sequential
  // write, without threads, where they ask for nothing else.
  void startParallelWrite();
  void startParallelWrite(KelTmf::TmFile& target);
  // Keeps the host's pointer instead of a copy, after the checks of
  // setValues; the builders read it through an ArrayView.
  template <class T>
  void lendValues(const Identifier& array, const T* values, std::uint64_t count);
  void setDiagnostics(DiagnosticHandler handler, void* user);
  // Sends a warning to the host's handler, if there is one (Diagnostics.h).
  void warn(WarningCode code, std::uint64_t object, const std::string& text);
  // Tells the host that closeFile(path) did nothing, and why.
  void explainIgnoredClose(const char* path);

  // ---- Tree construction ---------------------------------------------------
  // Builds the node of one object under the current entry. Groups and shapes
  // leave what follows (their components, their end) as steps for
  // buildTree(), which runs them in order.
  void writeObject(std::uint64_t index);
  void writeGroup(std::uint64_t index);
  void writeShape(std::uint64_t index);
  void writeGeometry(std::uint64_t index);
  void writeMesh(std::uint64_t index);

 private:
  // Where the scene stands with its file. Bound after a successful saveTo();
  // Building from the start of the walk until the file is saved, and stays
  // so if construction failed half way.
  enum class FileState { Unbound, Bound, Building, Finished };
  FileState fileState = FileState::Unbound;

  friend class CloseProgress;
  friend class PartClose;

  void refuseCloseInState() const;
  // The steps of every closeFile once the file and the root are in order:
  // the check, then the warnings and the first progress record while the
  // file still holds only its head (a handler that stops here leaves a
  // scene that can be closed again), then the state of a build begun.
  std::unique_ptr<CloseProgress> beginBuilding();
  // The file is complete: the scene can build no other.
  void endClose(CloseProgress& progress);
  // The threads of a parallel write live as long as this, however the
  // build ends.
  class ParallelWrite {
   public:
    explicit ParallelWrite(ObjectManager& scene);
    ~ParallelWrite();
    ParallelWrite(const ParallelWrite&) = delete;
    ParallelWrite& operator=(const ParallelWrite&) = delete;

   private:
    KelTmf::Index& index;
  };
  // The walk from the root, as a loop over buildSteps.
  void buildTree();
  // Pushes a step; the last pushed runs first.
  void thenBuild(std::function<void()> step);
  std::vector<std::function<void()>> buildSteps;
  // The validation pass: raises code 18 for the first host error found in
  // the part of the table that the walk from `root` reaches.
  void checkSceneForClose() const;
  // With a handler: warns of what the walk from `root` will not put in the
  // file, and returns the bytes of numbers it will write. Changes nothing.
  std::uint64_t warnBeforeClose();
  // Runs `call`; a failure of it is explained to the handler before it
  // leaves, where its text does not say which file or why.
  template <class Call>
  void explainingFailures(const char* operation, bool overwrite, Call&& call) {
    try {
      call();
    } catch (const Kel::Util::Exception& failure) {
      explainFailure(operation, failure, overwrite);
      throw;
    }
  }
  void explainFailure(const char* operation, const Kel::Util::Exception& failure, bool overwrite);
  void warnResultWithoutGroup(std::uint64_t mesh, const std::string& name, std::uint64_t array);

  // Adds a child of the current entry holding `node` and makes it current.
  template <class NodeType>
  NodeType* addChildNode(std::unique_ptr<NodeType> node) {
    AddNode();
    NodeType* held = node.release();
    GetCurrentNode().value = held;
    return held;
  }

  // Reads with the defaults of the builders; a value of another type counts
  // as absent.
  bool readFlag(std::uint64_t index, const std::string& key, bool fallback);
  std::uint64_t readLink(std::uint64_t index, const std::string& key);
  LinkList readLinks(std::uint64_t index, const std::string& key);
  std::uint8_t readDimension(std::uint64_t index);
  // "Array" of an array object, copied or lent; empty for NoObject or
  // another element type.
  template <class T>
  ArrayView<T> readArray(std::uint64_t index);
  ArrayView<float> readFloatArray(std::uint64_t index) { return readArray<float>(index); }
  ArrayView<std::uint32_t> readIndexArray(std::uint64_t index) {
    return readArray<std::uint32_t>(index);
  }

  void addTransformationGroup(std::uint64_t transformation);
  void applySetColours(std::uint64_t set, KelDov::Material& material);

  // The variable `name` on the geometry of the current entry. Writes the
  // dataset, unless `target` names the variable that holds it already: then
  // the new variable becomes a link to that one.
  KelDov::VariableRef addVariableOrLink(const std::string& name, KelDov::Geometry::VariableType type,
                                        const Dataset& values, const KelDov::AttributeMap& attributes,
                                        const KelDov::VariableRef* target);
  // Shared across the whole scene by source array object.
  void addSharedVariable(const std::string& name, KelDov::Geometry::VariableType type,
                         const Dataset& values, std::uint64_t source);
  // Shared among the element sets of one mesh object, by key.
  void addMeshVariable(MeshFrame& mesh, const std::string& key, const std::string& name,
                       KelDov::Geometry::VariableType type, const Dataset& values,
                       const KelDov::AttributeMap& attributes = KelDov::AttributeMap());

  void readMeshFrame(std::uint64_t index, MeshFrame& mesh);
  void readInstanceGroup(MeshFrame& mesh);
  void writeElementSet(MeshFrame& mesh, std::uint64_t set);
  void addInstanceValueVariables(MeshFrame& mesh, std::uint64_t set,
                                 const std::vector<float>& nodeIdValues);
  // "Array", "Dimension" and "Variable Type" of one per-value array object.
  Dataset readValueArray(std::uint64_t array, KelDov::Geometry::VariableType& type);
  std::map<std::string, std::vector<std::uint32_t>> cutPerValue(const MeshFrame& mesh,
                                                                const std::string& setName);

 protected:
  std::string sceneTitle;
  std::string fileName;
  std::vector<ObjectRecord> objects;
  std::uint64_t root = NoObject;
  std::map<std::uint64_t, KelDov::VariableRef> sharedDatasets;
  WriteOptions options;
  DiagnosticChannel diagnostics;
  bool partOfGroup = false;
  // Set while a closeFile() with a handler runs (CloseProgress).
  ProgressMeter* progress = nullptr;
};

}  // namespace Dov
}  // namespace Kel

#endif
