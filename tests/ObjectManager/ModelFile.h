#ifndef DOVWRITER_TESTS_OBJECTMANAGER_MODELFILE_H
#define DOVWRITER_TESTS_OBJECTMANAGER_MODELFILE_H

// Test support: a scene written to a fresh file, and the file read back
// through our own reader.

#include <gtest/gtest.h>

#include <DovWriter/DovWriter.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "../support/HostCalls.h"
#include "Platform/Platform.h"
#include "reader/Container.h"
#include "reader/Scene.h"

namespace roadtest {

using testsupport::expectRefusal;
using testsupport::fileBytes;
using testsupport::makeArray;

using Kel::Dov::Identifier;
using Kel::Dov::Scene_V1;
typedef std::vector<std::uint32_t> Words;
typedef std::vector<float> Floats;

const Floats SquareNodes{0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0};

// A path of its own for the running test, with no file behind it yet.
inline std::string freshPath(const std::string& suffix = "") {
  const char* directory = std::getenv("DOVWRITER_TEST_TMP");
  const std::filesystem::path base = directory != nullptr ? directory : "/tmp/dovwriter-tests";
  std::filesystem::create_directories(base);
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string path = (base / (std::string("road_") + test->test_suite_name() + "_" +
                                    test->name() + suffix + ".dov")).string();
  std::remove(path.c_str());
  return path;
}

// The trace log of this test program. The first logTraceToFile of a
// process decides the file, so the tests that read the log share one and
// look at what their own writes add to it.
inline const std::string& processTraceLog() {
  static const std::string path = [] {
    const std::string log = freshPath(".log");
    Kel::Dov::logTraceToFile(log.c_str());
    return log;
  }();
  return path;
}

inline Identifier makeObject(Scene_V1& scene, Kel::Dov::ObjectType type, const char* name) {
  const Identifier object = scene.createObject(type);
  scene.setName(object, name);
  return object;
}

inline Identifier makeSet(Scene_V1& scene, const char* name, const Words& cells) {
  const Identifier set = makeObject(scene, Kel::Dov::ElementSetObject, name);
  scene.setValues<unsigned int>(set, cells.data(), cells.size());
  return set;
}

// A scene with a root group "R"; `add` makes an object under it.
struct RootedScene {
  Scene_V1 scene;
  Identifier root = makeObject(scene, Kel::Dov::GroupObject, "R");

  Identifier add(Kel::Dov::ObjectType type, const char* name) {
    const Identifier object = makeObject(scene, type, name);
    scene.addComponent(root, object);
    return object;
  }
};

inline void closeScene(Scene_V1& scene, const Identifier& root, const std::string& path) {
  scene.createDefaultViews(root);
  scene.saveTo(path.c_str(), nullptr, false, true);
  scene.closeFile(path.c_str());
}

// The file of a closed scene, read back. Not copyable: the scene reads its
// values from the container on demand.
struct ReadModel {
  explicit ReadModel(const std::string& path)
      : container(DovReader::Container::Open(path)), scene(DovReader::Scene::Read(container)) {}
  ReadModel(const ReadModel&) = delete;

  const std::vector<DovReader::TreeRecord>& records() const { return scene.Records(); }
  const DovReader::TreeRecord& record(std::uint32_t id) const { return scene.Record(id); }
  // Index of the variable `name` of entry `id`; fails the test if missing.
  std::uint32_t variableIndex(std::uint32_t id, const std::string& name) const {
    const std::vector<DovReader::Variable>& variables = record(id).variables;
    for (std::uint32_t i = 0; i < variables.size(); ++i)
      if (variables[i].name == name) return i;
    ADD_FAILURE() << "entry " << id << " has no variable " << name;
    return 0;
  }
  const DovReader::Variable& variable(std::uint32_t id, const std::string& name) const {
    return record(id).variables.at(variableIndex(id, name));
  }
  Words words(std::uint32_t id, const std::string& name) const {
    return scene.ReadValues(id, variableIndex(id, name));
  }
  Floats floats(std::uint32_t id, const std::string& name) const {
    return scene.ReadFloats(id, variableIndex(id, name));
  }
  std::vector<std::string> variableNames(std::uint32_t id) const {
    std::vector<std::string> names;
    for (const DovReader::Variable& variable : record(id).variables) names.push_back(variable.name);
    return names;
  }

  DovReader::Container container;
  DovReader::Scene scene;
};

// "S" 0x1E "T = 1", as the names of per-value variables are spelled.
inline std::string at(const std::string& name, const std::string& group, const std::string& value) {
  return name + '\x1E' + group + " = " + value;
}

template <std::size_t N>
Floats floats(const float (&values)[N]) {
  return Floats(values, values + N);
}

// The random diffuse colour a tree hands out after `skipped` draws: the
// generator restarts with every tree, and each colour takes three draws.
inline Floats drawnDiffuse(int skipped) {
  Platform::SeedRandom(0);
  for (int i = 0; i < skipped; ++i) Platform::Random();
  Floats colour{0, 0, 0, 1.0f};
  for (int i = 0; i < 3; ++i) colour[i] = static_cast<float>(Platform::Random()) / 32767.0f;
  return colour;
}

}  // namespace roadtest

#endif
