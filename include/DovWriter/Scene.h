#ifndef DOVWRITER_SCENE_H
#define DOVWRITER_SCENE_H

#include <cstddef>
#include <cstdint>

#include "Export.h"
#include "Types.h"

namespace Kel {
namespace Dov {

class ObjectManager;

// Attaches the library's trace log to a file: from then on every progress
// and failure record becomes one line there, flushed at once. One file per
// process; later calls are ignored.
DOVWRITER_API void logTraceToFile(const char* const path);

// A scene: a flat table of objects that the host creates, names, fills and
// links, and that closeFile() turns into one model file.
//
// Template operations exist for the element types signed char, unsigned
// char, short, unsigned short, int, unsigned int, long, unsigned long, long
// long, unsigned long long, float, double and const char* (setValues has no
// const char* form).
class DOVWRITER_API Scene_V0 {
 public:
  Scene_V0();
  explicit Scene_V0(const char* title);
  ~Scene_V0();

  Identifier createObject(ObjectType type);
  ObjectType getType(const Identifier& object) const;
  // The text belongs to the scene; it stays valid until the name is set
  // again or the next createObject().
  const char* getName(const Identifier& object) const;
  void setName(const Identifier& object, const char* name);
  void setTitle(const char* title);
  // Throws Kel::Util::Exception (code 8) unless the identifier names an
  // object of this scene.
  void validate(const Identifier& object) const;

  // Opens the model file and writes its head. The second and third
  // arguments are accepted for compatibility and have no effect.
  void saveTo(const char* path, const char* unused = nullptr, bool unusedFlag = false,
              bool overwrite = false);
  // Builds the scene and finishes the file, if `path` is exactly the path
  // given to saveTo(); otherwise does nothing.
  void closeFile(const char* path);

  // Stores a text attribute (the value's text) under a key of the host's.
  template <class T>
  void setProperty(const Identifier& object, const char* key, const T& value);
  // A string literal is a text value (without this, T would be an array).
  template <std::size_t N>
  void setProperty(const Identifier& object, const char* key, const char (&value)[N]) {
    setProperty<const char*>(object, key, value);
  }

 protected:
  ObjectManager* manager;

 private:
  Scene_V0(const Scene_V0&);
  Scene_V0& operator=(const Scene_V0&);
};

class DOVWRITER_API Scene_V1 : public Scene_V0 {
 public:
  Scene_V1();
  explicit Scene_V1(const char* title);

  // Names an object (the same as setName).
  void setTitle(const Identifier& object, const char* name);
  // Sets the scene's title.
  void setTitle(const char* title);
  // Names the root object, from which closeFile() builds the tree.
  void createDefaultViews(const Identifier& root);

  // Arrays. `count` counts tuples of the object's "Dimension" (default 1):
  // count x dimension elements are copied. Set the dimension first.
  template <class T>
  void setValues(const Identifier& array, const T* values, std::uint64_t count);
  void setDimension(const Identifier& array, unsigned char dimension);

  // Appearance and transformations.
  void setColor(const Identifier& object, ColorType type, const float& red,
                const float& green, const float& blue, const float& alpha);
  void setColor(const Identifier& object, ColorType type, const float* rgba, bool hasAlpha);
  void setAmbientIntensity(const Identifier& object, float intensity);
  void setTranslation(const Identifier& object, float x, float y, float z);
  void setRotation(const Identifier& object, float a, float b, float c, float d);
  void setScale(const Identifier& object, float x, float y, float z);
  void setVisibility(const Identifier& object, bool visible);
  void setMeshType(const Identifier& object, MeshType type);
  void setRandomColors(const Identifier& object);

  // Mesh data, once for all (plain forms) or per instance value (templates).
  void setCoordinates(const Identifier& mesh, const Identifier& array);
  template <class T>
  void setCoordinates(const Identifier& mesh, const Identifier& group, const T& value,
                      const Identifier& array);
  void setConnectivity(const Identifier& mesh, const Identifier& array);
  void setConnectivity(const Identifier& mesh, const Identifier& connectivity,
                       const Identifier& polylength);
  template <class T>
  void setConnectivity(const Identifier& mesh, const Identifier& group, const T& value,
                       const Identifier& array);
  template <class T>
  void setConnectivity(const Identifier& mesh, const Identifier& group, const T& value,
                       const Identifier& connectivity, const Identifier& polylength);
  void setNodeIndices(const Identifier& mesh, const Identifier& array);
  template <class T>
  void setNodeIndices(const Identifier& mesh, const Identifier& group, const T& value,
                      const Identifier& array);
  void setElementIndices(const Identifier& mesh, const Identifier& array);
  template <class T>
  void setElementIndices(const Identifier& mesh, const Identifier& group, const T& value,
                         const Identifier& array);

  // Results, element sets, components and materials.
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
  // Returns the parent's number of components after the call (a count,
  // not a position).
  std::uint64_t addComponent(const Identifier& parent, const Identifier& child);
  std::uint64_t addComponent(const Identifier& parent, const Identifier& child,
                             const Identifier& transformation);
  void removeComponent(const Identifier& parent, const std::uint64_t& component);
  void setMaterial(const Identifier& object, const Identifier& material);
  template <class T>
  void setApplicationInfo(const char* name, const T& value);

  // String literals as instance values or versions are text values.
  template <std::size_t N>
  void setCoordinates(const Identifier& mesh, const Identifier& group, const char (&value)[N],
                      const Identifier& array) {
    setCoordinates<const char*>(mesh, group, value, array);
  }
  template <std::size_t N>
  void setConnectivity(const Identifier& mesh, const Identifier& group, const char (&value)[N],
                       const Identifier& array) {
    setConnectivity<const char*>(mesh, group, value, array);
  }
  template <std::size_t N>
  void setConnectivity(const Identifier& mesh, const Identifier& group, const char (&value)[N],
                       const Identifier& connectivity, const Identifier& polylength) {
    setConnectivity<const char*>(mesh, group, value, connectivity, polylength);
  }
  template <std::size_t N>
  void setNodeIndices(const Identifier& mesh, const Identifier& group, const char (&value)[N],
                      const Identifier& array) {
    setNodeIndices<const char*>(mesh, group, value, array);
  }
  template <std::size_t N>
  void setElementIndices(const Identifier& mesh, const Identifier& group,
                         const char (&value)[N], const Identifier& array) {
    setElementIndices<const char*>(mesh, group, value, array);
  }
  template <std::size_t N>
  void setResult(const Identifier& mesh, const Identifier& group, const char (&value)[N],
                 const char* name, const Identifier& array) {
    setResult<const char*>(mesh, group, value, name, array);
  }
  template <std::size_t N>
  void setResult(const Identifier& mesh, const Identifier& group, const char (&value)[N],
                 const char* name, VariableType type, const Identifier& array) {
    setResult<const char*>(mesh, group, value, name, type, array);
  }
  template <std::size_t N>
  void addElementSet(const Identifier& mesh, const Identifier& group, const char (&value)[N],
                     const Identifier& set) {
    addElementSet<const char*>(mesh, group, value, set);
  }
  template <std::size_t N>
  void addElementSet(const Identifier& mesh, const Identifier& group, const char (&value)[N],
                     const char* name, const Identifier& set) {
    addElementSet<const char*>(mesh, group, value, name, set);
  }
  template <std::size_t N>
  void setApplicationInfo(const char* name, const char (&value)[N]) {
    setApplicationInfo<const char*>(name, value);
  }
};

}  // namespace Dov
}  // namespace Kel

#endif
