#ifndef DOVWRITER_BENCH_SCENEFEEDER_H
#define DOVWRITER_BENCH_SCENEFEEDER_H

// How the benchmark hands a model to a scene, shared by the writes of one
// process and of all ranks of an MPI job.

#include <DovWriter/DovWriter.h>

#include <string>
#include <utility>
#include <vector>

#include "Measure.h"
#include "Model.h"

namespace bench {

// Creates the array objects of one model and hands each array over as soon
// as it exists. The largest arrays come first, while the scene holds little.
class SceneFeeder {
  typedef Kel::Dov::Identifier Identifier;

 public:
  SceneFeeder(const ModelShape& shape, bool lend, Kel::Dov::Scene_V2& scene, Stopwatch& watch)
      : shape(shape), lend(lend), scene(scene), watch(watch) {}

  void Feed() {
    const Identifier root = Call([&] { return scene.createObject(Kel::Dov::GroupObject); });
    mesh = Call([&] { return scene.createObject(Kel::Dov::MeshObject); });
    Call([&] {
      scene.setName(root, "Model");
      scene.setName(mesh, "Part");
      scene.addComponent(root, mesh);
      scene.createDefaultViews(root);
    });
    FeedConnectivity();
    FeedCoordinates();
    FeedNodeIds();
    FeedResults();
    FeedElementSets();
  }

 private:
  template <class Work>
  auto Call(Work&& work) -> decltype(work()) {
    return watch.Time(std::forward<Work>(work));
  }

  Identifier NewArray(unsigned char dimension) {
    return Call([&] {
      const Identifier array = scene.createObject(Kel::Dov::ArrayObject);
      scene.setDimension(array, dimension);
      return array;
    });
  }

  // Hands the array over. A copied one is freed at once; a lent one is
  // kept until the scene is gone, as a host must.
  template <class T>
  void Hand(const Identifier& array, std::vector<T> values, std::uint64_t tuples) {
    if (!lend) {
      Call([&] { scene.setValues(array, values.data(), tuples); });
      std::vector<T>().swap(values);
      return;
    }
    Call([&] { scene.lendValues(array, values.data(), tuples); });
    Keep(std::move(values));
  }
  void Keep(std::vector<float> values) { lentFloats.push_back(std::move(values)); }
  void Keep(std::vector<std::uint32_t> values) { lentIndices.push_back(std::move(values)); }

  void FeedConnectivity() {
    // Equal cells: the width of the connectivity is the cell's node count,
    // and the library derives the polylength from it.
    const Identifier array = NewArray(static_cast<unsigned char>(shape.nodesPerCell));
    Hand(array, Connectivity(shape), shape.cells);
    Call([&] { scene.setConnectivity(mesh, array); });
  }

  void FeedCoordinates() {
    const Identifier array = NewArray(3);
    Hand(array, Coordinates(shape), shape.nodes);
    Call([&] { scene.setCoordinates(mesh, array); });
  }

  void FeedNodeIds() {
    const Identifier array = NewArray(1);
    Hand(array, NodeIds(shape), shape.nodes);
    Call([&] { scene.setNodeIndices(mesh, array); });
  }

  void FeedResults() {
    const Identifier group = Call([&] {
      const Identifier created = scene.createObject(Kel::Dov::InstanceGroupObject);
      scene.setName(created, "State");
      return created;
    });
    for (std::uint32_t state = 0; state < shape.states; ++state) {
      const int value = static_cast<int>(state);
      const Identifier vector = NewArray(3);
      Call([&] {
        scene.setResult(mesh, group, value, "Displacement", Kel::Dov::VectorVariable, vector);
      });
      Hand(vector, VectorResult(shape, state), shape.nodes);
      const Identifier scalar = NewArray(1);
      Call([&] {
        scene.setResult(mesh, group, value, "Pressure", Kel::Dov::ScalarVariable, scalar);
      });
      Hand(scalar, ScalarResult(shape, state), shape.nodes);
    }
  }

  void FeedElementSets() {
    for (std::uint64_t set = 0; set < shape.SetCount(); ++set) {
      const Identifier object = Call([&] {
        const Identifier created = scene.createObject(Kel::Dov::ElementSetObject);
        scene.setName(created, ("Set " + std::to_string(set + 1)).c_str());
        return created;
      });
      std::vector<std::uint32_t> cells = ElementSet(shape, set);
      const std::uint64_t count = cells.size();
      Hand(object, std::move(cells), count);
      Call([&] { scene.addElementSet(mesh, object); });
    }
  }

  const ModelShape& shape;
  const bool lend;
  Kel::Dov::Scene_V2& scene;
  Stopwatch& watch;
  Identifier mesh{};
  std::vector<std::vector<float>> lentFloats;
  std::vector<std::vector<std::uint32_t>> lentIndices;
};

}  // namespace bench

#endif
