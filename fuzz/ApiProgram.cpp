#include "ApiProgram.h"

#include <DovWriter/DovWriter.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <new>
#include <sstream>
#include <stdexcept>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "Commands.h"
#include "FuzzSupport.h"
#include "Kel/Util/Coding.h"
#include "reader/Container.h"
#include "reader/Scene.h"

namespace DovFuzz {

namespace {

using namespace Kel::Dov;
using Kel::Util::FloatBits;

const std::size_t kMaxObjects = 64;
const std::size_t kMaxOperations = 400;
// A tuple holds at most 255 values, whatever "Dimension" an array has by the
// time of the call, so every buffer has room for that many per tuple.
const std::size_t kMaxTupleSize = 255;
const unsigned kMaxTuples = 12;

const ObjectType kTypes[] = {ArrayObject,          MaterialObject,
                             TransformationObject, ElementSetObject,
                             InstanceGroupObject,  GeometryObject,
                             ShapeObject,          GroupObject,
                             MeshObject,           static_cast<ObjectType>(77)};
const char* const kNames[] = {"",           "A",           "B",
                              "X",          "Bad",         "Time",
                              "Stress",     "Coordinates", "Connectivity",
                              "Polylength", "Node Ids",    "\x1E",
                              "\x1DX",      "Link.a",      "Category",
                              "Vibration"};
const float kFloatPool[] = {0.0f, 1.0f,  -1.0f, 0.5f,
                            2.0f, 1e30f, -0.0f, std::numeric_limits<float>::infinity()};

template <class T, std::size_t N>
const T& Choose(const T (&list)[N], std::uint8_t byte) {
  return list[byte % N];
}

class Interpreter {
 public:
  Interpreter(const std::uint8_t* data, std::size_t size, const std::string& path)
      : data(data), size(size), path(path) {
    // "Dimension" alone can put values into a file: a polylength derived
    // from it holds that number for every cell.
    for (std::uint32_t dimension = 0; dimension < 256; ++dimension) recorded.insert(dimension);
  }

  int Run() {
    for (std::size_t done = 0; at < size && done < kMaxOperations; ++done) Step();
    return finished;
  }

 private:
  std::uint8_t Byte() { return at < size ? data[at++] : 0; }
  const char* Name() { return Choose(kNames, Byte()); }

  // 255 names no scene, 254 an object beyond this scene's table.
  Identifier Obj() {
    const std::uint8_t byte = Byte();
    if (objects.empty() || byte == 255) return Identifier{0xDEADBEEF, byte};
    if (byte == 254) return Identifier{objects.front().first, objects.size() + 1000};
    return objects[byte % objects.size()];
  }

  // Calls `call` with an instance value of the type the next byte chooses.
  template <class Call>
  void WithValue(Call call) {
    switch (Byte() % 6) {
      case 0: call(int(Byte() % 3)); break;
      case 1: call(0.5 * (Byte() % 3)); break;
      case 2: call(Byte() % 2 ? "a" : "0.5"); break;
      case 3: call(static_cast<unsigned char>(Byte() % 3)); break;
      case 4: call(static_cast<long long>(Byte() % 3) - 1); break;
      default: call(static_cast<float>(Byte() % 3)); break;
    }
  }

  // With DOVFUZZ_TRACE set, each operation and how it ended is printed, to
  // follow an input that failed.
  void Trace(ApiOp op, std::size_t start, const char* outcome) const {
    if (std::getenv("DOVFUZZ_TRACE") == nullptr) return;
    std::fprintf(stderr, "op %d at byte %zu:", int(op), start);
    for (std::size_t i = start + 1; i < at; ++i) std::fprintf(stderr, " %d", int(data[i]));
    std::fprintf(stderr, " -> %s\n", outcome);
  }

  void Step() {
    const std::size_t start = at;
    const ApiOp op = static_cast<ApiOp>(Byte() % kOpCount);
    try {
      Call(op);
      Trace(op, start, "returned");
    } catch (const Kel::Util::Exception& failure) {
      Trace(op, start, failure.GetDescription());
      if (std::strcmp(Kel::Util::Exception::CodeText(failure.GetCode()), "Invalid Exception") == 0)
        Fail("an exception with the unknown code " + std::to_string(failure.GetCode()));
    } catch (const std::bad_alloc&) {
      Trace(op, start, "std::bad_alloc");
    } catch (const std::length_error&) {
      Trace(op, start, "std::length_error");
    }
  }

  void Call(ApiOp op) {
    switch (op) {
      case kCreate:
        if (objects.size() < kMaxObjects)
          objects.push_back(scene.createObject(Choose(kTypes, Byte())));
        break;
      case kName: {
        const Identifier object = Obj();
        scene.setName(object, Name());
        break;
      }
      case kDimension: {
        const Identifier object = Obj();
        scene.setDimension(object, Byte());
        break;
      }
      case kFloats: Floats(); break;
      case kWords: Words(); break;
      case kOtherValues: OtherValues(); break;
      case kHugeCount: HugeCount(); break;
      case kCoordinates: MeshData(Data::Coordinates); break;
      case kConnectivity: Connectivity(); break;
      case kNodeIndices: MeshData(Data::NodeIndices); break;
      case kElementIndices: MeshData(Data::ElementIndices); break;
      case kResult: Result(); break;
      case kElementSet: ElementSet(); break;
      case kComponent: Component(); break;
      case kRemoveComponent: {
        const Identifier parent = Obj();
        scene.removeComponent(parent, Byte());
        break;
      }
      case kMaterial: {
        const Identifier object = Obj();
        scene.setMaterial(object, Obj());
        break;
      }
      case kAppearance: Appearance(); break;
      case kProperty: Property(); break;
      case kDefaultViews: scene.createDefaultViews(Obj()); break;
      case kSaveTo: SaveTo(); break;
      case kCloseFile: CloseFile(); break;
      case kInformation: Information(); break;
      case kOpCount: break;
    }
  }

  void Floats() {
    const Identifier array = Obj();
    const unsigned tuples = Byte() % (kMaxTuples + 1);
    const unsigned first = Byte(), step = Byte();
    std::vector<float> values(tuples * kMaxTupleSize);
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] = Choose(kFloatPool, static_cast<std::uint8_t>(first + i * step));
      recorded.insert(FloatBits(values[i]));
    }
    scene.setValues(array, values.data(), tuples);
  }

  // 2^61 tuples of floats are more than a vector can hold: the call must
  // refuse them before it reads a value. The dimension stays below 8, where
  // the number of values still fits in 64 bits.
  void HugeCount() {
    const Identifier array = Obj();
    const unsigned char dimension = Byte() % 8;
    scene.setDimension(array, dimension);
    const float none[1] = {0};
    try {
      scene.setValues(array, none, std::uint64_t(1) << 61);
    } catch (const std::length_error&) {
      return;
    }
    if (dimension != 0)
      Fail("setValues took 2^61 tuples of " + std::to_string(dimension) + " floats");
  }

  // Small values make cells and nodes that exist; a first value of 255
  // turns them into values near 2^32.
  void Words() {
    const Identifier array = Obj();
    const unsigned tuples = Byte() % (kMaxTuples + 1);
    const std::uint32_t first = Byte(), step = Byte(), modulus = Byte();
    std::vector<std::uint32_t> values(tuples * kMaxTupleSize);
    for (std::size_t i = 0; i < values.size(); ++i) {
      std::uint32_t value = first + static_cast<std::uint32_t>(i) * step;
      if (modulus != 0) value %= modulus;
      if (first == 255) value = 0xFFFFFFFFu - value;
      values[i] = value;
      recorded.insert(value);
      recorded.insert(FloatBits(static_cast<float>(value)));  // node ids become floats
    }
    scene.setValues(array, values.data(), tuples);
  }

  template <class T>
  void SetOnes(const Identifier& array, unsigned tuples) {
    const std::vector<T> values(tuples * kMaxTupleSize, T(1));
    scene.setValues(array, values.data(), tuples);
  }

  void OtherValues() {
    const Identifier array = Obj();
    const std::uint8_t type = Byte();
    const unsigned tuples = Byte() % (kMaxTuples + 1);
    switch (type % 5) {
      case 0: SetOnes<double>(array, tuples); break;
      case 1: SetOnes<int>(array, tuples); break;
      case 2: SetOnes<unsigned char>(array, tuples); break;
      case 3: SetOnes<long long>(array, tuples); break;
      default: SetOnes<unsigned long>(array, tuples); break;
    }
  }

  enum class Data { Coordinates, NodeIndices, ElementIndices };

  // The plain form of a setter of mesh data, or its form per instance value.
  void MeshData(Data data) {
    const bool perValue = Byte() % 2;
    const Identifier mesh = Obj();
    if (!perValue) {
      const Identifier array = Obj();
      if (data == Data::Coordinates)
        scene.setCoordinates(mesh, array);
      else if (data == Data::NodeIndices)
        scene.setNodeIndices(mesh, array);
      else
        scene.setElementIndices(mesh, array);
      return;
    }
    const Identifier group = Obj();
    WithValue([&](const auto& value) {
      using T = std::decay_t<decltype(value)>;
      const Identifier array = Obj();
      if (data == Data::Coordinates)
        scene.setCoordinates<T>(mesh, group, value, array);
      else if (data == Data::NodeIndices)
        scene.setNodeIndices<T>(mesh, group, value, array);
      else
        scene.setElementIndices<T>(mesh, group, value, array);
    });
  }

  void Connectivity() {
    const std::uint8_t form = Byte() % 4;
    const Identifier mesh = Obj();
    if (form < 2) {
      const Identifier array = Obj();
      if (form == 0)
        scene.setConnectivity(mesh, array);
      else
        scene.setConnectivity(mesh, array, Obj());
      return;
    }
    const Identifier group = Obj();
    WithValue([&](const auto& value) {
      using T = std::decay_t<decltype(value)>;
      const Identifier array = Obj();
      if (form == 2)
        scene.setConnectivity<T>(mesh, group, value, array);
      else
        scene.setConnectivity<T>(mesh, group, value, array, Obj());
    });
  }

  void Result() {
    const std::uint8_t form = Byte() % 4;
    const Identifier mesh = Obj();
    const auto type = [&] { return static_cast<VariableType>(Byte() % 5); };
    if (form < 2) {
      const char* name = Name();
      if (form == 0)
        scene.setResult(mesh, name, Obj());
      else {
        const VariableType t = type();
        scene.setResult(mesh, name, t, Obj());
      }
      return;
    }
    const Identifier group = Obj();
    WithValue([&](const auto& value) {
      using T = std::decay_t<decltype(value)>;
      const char* name = Name();
      if (form == 2)
        scene.setResult<T>(mesh, group, value, name, Obj());
      else {
        const VariableType t = type();
        scene.setResult<T>(mesh, group, value, name, t, Obj());
      }
    });
  }

  void ElementSet() {
    const std::uint8_t form = Byte() % 3;
    const Identifier mesh = Obj();
    if (form == 0) {
      scene.addElementSet(mesh, Obj());
      return;
    }
    const Identifier group = Obj();
    WithValue([&](const auto& value) {
      using T = std::decay_t<decltype(value)>;
      if (form == 1) {
        scene.addElementSet<T>(mesh, group, value, Obj());
        return;
      }
      const char* name = Name();
      scene.addElementSet<T>(mesh, group, value, name, Obj());
    });
  }

  void Component() {
    const bool transformed = Byte() % 2;
    const Identifier parent = Obj(), child = Obj();
    if (transformed)
      scene.addComponent(parent, child, Obj());
    else
      scene.addComponent(parent, child);
  }

  void Appearance() {
    const std::uint8_t which = Byte() % 9;
    const Identifier object = Obj();
    const std::uint8_t argument = Byte();
    const float x = Choose(kFloatPool, argument), y = Choose(kFloatPool, argument / 8);
    switch (which) {
      case 0: scene.setColor(object, static_cast<ColorType>(argument % 5), x, y, 0.5f, x); break;
      case 1: {
        const float rgba[4] = {x, y, 1.0f, 0.25f};
        scene.setColor(object, static_cast<ColorType>(argument % 5), rgba, argument % 2);
        break;
      }
      case 2: scene.setAmbientIntensity(object, x); break;
      case 3: scene.setTranslation(object, x, y, 1.0f); break;
      case 4: scene.setRotation(object, x, y, 0.0f, 1.0f); break;
      case 5: scene.setScale(object, x, y, 2.0f); break;
      case 6: scene.setVisibility(object, argument % 2); break;
      case 7: scene.setMeshType(object, static_cast<MeshType>(argument % 4)); break;
      default: scene.setRandomColors(object); break;
    }
  }

  void Property() {
    const Identifier object = Obj();
    const char* key = Name();
    const std::uint8_t kind = Byte() % 3, value = Byte();
    if (kind == 0)
      scene.setProperty(object, key, int(value));
    else if (kind == 1)
      scene.setProperty(object, key, double(value) / 4);
    else
      scene.setProperty(object, key, Choose(kNames, value));
  }

  void Information() {
    const bool title = Byte() % 2;
    const char* name = Name();
    if (title) {
      scene.setTitle(name);
      return;
    }
    WithValue([&](const auto& value) {
      scene.setApplicationInfo<std::decay_t<decltype(value)>>(name, value);
    });
  }

  // The scene takes the path of every saveTo, even of one that fails because
  // a file is open already: a closeFile finishes that open file only while
  // the path last given is the one it was opened with.
  void SaveTo() {
    switch (Byte() % 4) {
      case 0:
      case 1: Save(path, true); break;
      case 2: Save(path, false); break;
      default: Save(std::filesystem::path(path).parent_path().string(), true);
    }
  }

  void Save(const std::string& target, bool overwrite) {
    named = target == path;
    scene.saveTo(target.c_str(), nullptr, false, overwrite);
    opened = true;
  }

  void CloseFile() {
    if (Byte() % 4 == 3) {
      scene.closeFile((path + ".other").c_str());  // another path: nothing happens
      return;
    }
    scene.closeFile(path.c_str());
    // Unless the scene's file is open under this path, closeFile is called
    // with another path than the scene's, and does nothing.
    if (!opened || !named) return;
    ++finished;
    CheckFile();
  }

  void CheckFile() const {
    std::ostringstream out, err;
    if (DovInspect::RunTool({"verify", path}, out, err) != DovInspect::kExitOk)
      Fail("closeFile wrote a file that verify refuses:\n" + out.str() + err.str());
    const DovReader::Container container = DovReader::Container::Open(path);
    const DovReader::Scene file = DovReader::Scene::Read(container);
    for (const DovReader::TreeRecord& record : file.Records()) {
      for (std::uint32_t i = 0; i < record.variables.size(); ++i) {
        if (record.variables[i].linked) continue;
        for (std::uint32_t word : file.ReadValues(record.id, i))
          if (recorded.count(word) == 0)
            Fail("variable \"" + record.variables[i].name + "\" of entry " +
                 std::to_string(record.id) + " holds the word " + std::to_string(word) +
                 ", which the host never recorded");
      }
    }
  }

  const std::uint8_t* data;
  std::size_t size;
  std::size_t at = 0;
  const std::string path;
  Scene_V1 scene;
  std::vector<Identifier> objects;
  std::unordered_set<std::uint32_t> recorded;
  bool opened = false;  // some saveTo opened the file
  bool named = false;   // the path last given to saveTo is `path`
  int finished = 0;
};

}  // namespace

int RunApiProgram(const std::uint8_t* data, std::size_t size, const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove(path, ignored);  // each program starts without the file
  Interpreter interpreter(data, size, path);
  return interpreter.Run();
}

}  // namespace DovFuzz
