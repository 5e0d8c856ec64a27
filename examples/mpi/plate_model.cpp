// The bracket plate of ../plate_model.cpp written by all ranks of an MPI
// job into one file: each rank meshes a band of the plate's rows, with its
// own node ids, element set and results over the load states, and the file
// holds every band as a piece of its own under one root.
//
//   mpirun -np 4 plate_model_mpi [file]      (default: plate_model_mpi.dov)

#include <DovWriter/DovWriterMpi.h>

#include <cstdio>
#include <string>
#include <vector>

using namespace Kel::Dov;

namespace {

const unsigned NodesAlong = 400;   // x, 0.5 mm apart
const unsigned NodesAcross = 250;  // y, cut into one band of rows per rank
const float Spacing = 0.5f;
const int LoadStates = 10;

// A band's arrays, kept until closeFile returns: the coordinates are lent.
struct Band {
  std::vector<float> nodes;
  std::vector<unsigned int> quads, nodeIds, cells;
};

template <class T>
Identifier makeArray(Scene_V2& scene, const std::vector<T>& values, unsigned char width) {
  const Identifier array = scene.createObject(ArrayObject);
  scene.setDimension(array, width);
  scene.setValues(array, values.data(), values.size() / width);
  return array;
}

// Rows `first` to `last` of the plate; neighbouring bands share a row of
// nodes, as partitions of a mesh share their boundary.
Identifier makeBand(Scene_V2& scene, Band& band, unsigned first, unsigned last, int rank) {
  for (unsigned j = first; j <= last; ++j)
    for (unsigned i = 0; i < NodesAlong; ++i) {
      band.nodes.insert(band.nodes.end(), {i * Spacing, j * Spacing, 0.0f});
      band.nodeIds.push_back(1000000 + j * NodesAlong + i);
    }
  for (unsigned j = 0; j < last - first; ++j)
    for (unsigned i = 0; i + 1 < NodesAlong; ++i) {
      const unsigned n = j * NodesAlong + i;
      band.quads.insert(band.quads.end(), {n, n + 1, n + 1 + NodesAlong, n + NodesAlong});
      band.cells.push_back(static_cast<unsigned>(band.cells.size()));
    }
  const Identifier mesh = scene.createObject(MeshObject);
  scene.setName(mesh, ("Plate band " + std::to_string(rank)).c_str());
  const Identifier coordinates = scene.createObject(ArrayObject);
  scene.setDimension(coordinates, 3);
  scene.lendValues(coordinates, band.nodes.data(), band.nodes.size() / 3);
  scene.setCoordinates(mesh, coordinates);
  scene.setConnectivity(mesh, makeArray(scene, band.quads, 4));
  scene.setNodeIndices(mesh, makeArray(scene, band.nodeIds, 1));
  const Identifier set = makeArray(scene, band.cells, 1);
  scene.setName(set, ("Band " + std::to_string(rank)).c_str());
  scene.setColor(set, DiffusiveColor, 0.2f + 0.15f * (rank % 5), 0.4f, 0.85f, 1.0f);
  scene.addElementSet(mesh, set);
  return mesh;
}

// Displacement and stress of the clamped plate under its tip load.
void addResults(Scene_V2& scene, const Identifier& mesh, const Band& band) {
  const Identifier load = scene.createObject(InstanceGroupObject);
  scene.setName(load, "Load");
  const float length = (NodesAlong - 1) * Spacing, halfWidth = (NodesAcross - 1) * Spacing / 2;
  for (int state = 1; state <= LoadStates; ++state) {
    const float factor = state / 10.0f;
    std::vector<float> displacement, stress;
    for (std::size_t n = 0; n < band.nodes.size(); n += 3) {
      const float x = band.nodes[n] / length, y = (band.nodes[n + 1] - halfWidth) / halfWidth;
      displacement.insert(displacement.end(), {0.0f, 0.0f, -2.0f * factor * x * x});
      stress.push_back(250.0f * factor * (1.0f - x) * y);
    }
    scene.setResult(mesh, load, factor, "Displacement", VectorVariable,
                    makeArray(scene, displacement, 3));
    scene.setResult(mesh, load, factor, "Stress", ScalarVariable, makeArray(scene, stress, 1));
  }
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  int rank = 0, ranks = 1;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  const char* path = argc > 1 ? argv[1] : "plate_model_mpi.dov";
  int status = 0;
  try {
    Scene_V2Mpi scene(MPI_COMM_WORLD, "bracket");
    const unsigned cells = NodesAcross - 1;
    const unsigned first = cells * rank / ranks, last = cells * (rank + 1) / ranks;
    Band band;
    const Identifier mesh = makeBand(scene, band, first, last, rank);
    addResults(scene, mesh, band);
    const Identifier root = scene.createObject(GroupObject);
    scene.setName(root, "Bracket plate");
    scene.addComponent(root, mesh);
    scene.createDefaultViews(root);

    WriteOptions options;
    options.encoding = Encoding::Fast;  // the one encoding that ranks can share
    options.threads = 0;                // every hardware thread of the rank's machine
    scene.setWriteOptions(options);
    scene.saveTo(path, nullptr, false, true);
    scene.closeFile(path);
    if (rank == 0)
      std::printf("wrote %s: %u nodes in %d bands, %d load states\n", path,
                  NodesAlong * NodesAcross, ranks, LoadStates);
  } catch (const Kel::Util::Exception& error) {
    // Every rank gets the failure: one report is enough.
    if (rank == 0) std::fprintf(stderr, "%s", error.what());
    status = 1;
  }
  MPI_Finalize();
  return status;
}
