#ifndef DOVWRITER_OBJECTMANAGER_OBJECTMANAGER_H
#define DOVWRITER_OBJECTMANAGER_OBJECTMANAGER_H

// Everything behind one scene handle: the object table that the host fills,
// and, by derivation, the scene tree and the output file that closeFile()
// builds from it.

#include <DovWriter/Types.h>

#include <boost/any.hpp>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Kel/Dov/AttributeMap.h"
#include "Kel/Dov/Geometry.h"
#include "Kel/Dov/Tree.h"

namespace Kel {
namespace Dov {

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

  // Setters of the scene interface; each validates its identifiers first,
  // all of them, in argument order.
  // (declared by the recording side; see the implementation files)

  // ---- File binding and closing --------------------------------------------
  void saveTo(const char* path, bool overwrite);
  void createDefaultViews(const Identifier& root);
  void closeFile(const std::string& path);

  // ---- Tree construction ---------------------------------------------------
  void writeObject(std::uint64_t index);
  void writeGroup(std::uint64_t index);
  void writeShape(std::uint64_t index);
  void writeGeometry(std::uint64_t index);
  void writeMesh(std::uint64_t index);

 protected:
  std::string sceneTitle;
  std::string fileName;
  std::vector<ObjectRecord> objects;
  std::uint64_t root = NoObject;
  std::map<std::uint64_t, KelDov::VariableRef> sharedDatasets;
};

}  // namespace Dov
}  // namespace Kel

#endif
