// One file written by all ranks of the job: every rank hands over a strip
// of a plate, and the file is checked by dovinspect verify and read back
// through our reader. Runs under mpirun with 1, 2 and 4 ranks.

#include <gtest/gtest.h>

#include <DovWriter/DovWriter.h>
#include <DovWriter/DovWriterMpi.h>
#include <DovWriter/dovwriter_mpi.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "../support/HostCalls.h"
#include "reader/Container.h"
#include "reader/Scene.h"

using namespace Kel::Dov;
using namespace testsupport;

namespace {

int Rank(MPI_Comm comm = MPI_COMM_WORLD) {
  int rank = 0;
  MPI_Comm_rank(comm, &rank);
  return rank;
}

int Ranks() {
  int ranks = 1;
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  return ranks;
}

std::string PathFor(const std::string& name) {
  const char* directory = std::getenv("DOVWRITER_TEST_TMP");
  const std::filesystem::path base = directory != nullptr ? directory : "/tmp/dovwriter-tests";
  std::filesystem::create_directories(base);
  return (base / (name + "-" + std::to_string(Ranks()) + ".dov")).string();
}

// One rank's strip of a plate: a quad mesh with node ids, an element set and
// two states of results, and a point mesh that shares the strip's
// coordinates (a link between variables of one rank). The arrays live here,
// since the coordinates are lent.
struct Strip {
  static const unsigned Along = 80, Across = 80;
  std::vector<float> nodes, stress[2];
  std::vector<unsigned> quads, ids, firstRow;
  bool badCells = false;

  explicit Strip(int rank) {
    for (unsigned j = 0; j < Across; ++j)
      for (unsigned i = 0; i < Along; ++i) {
        nodes.insert(nodes.end(), {float(rank * (Along - 1) + i), float(j), 0.01f * i * j});
        ids.push_back(rank * Along * Across + j * Along + i);
        for (int state = 0; state < 2; ++state) stress[state].push_back(rank + state + 0.5f * i);
      }
    for (unsigned j = 0; j + 1 < Across; ++j)
      for (unsigned i = 0; i + 1 < Along; ++i) {
        const unsigned n = j * Along + i;
        quads.insert(quads.end(), {n, n + 1, n + 1 + Along, n + Along});
      }
    for (unsigned cell = 0; cell + 1 < Along; ++cell) firstRow.push_back(cell);
  }

  void build(Scene_V2& scene, int rank) {
    const std::string suffix = " " + std::to_string(rank);
    const Identifier strip = scene.createObject(MeshObject);
    scene.setName(strip, ("Strip" + suffix).c_str());
    const Identifier coordinates = makeArray(scene, nodes, 3, true);
    scene.setCoordinates(strip, coordinates);
    const Identifier cells = makeArray(scene, quads, 4);
    if (badCells) scene.setDimension(cells, 0);
    scene.setConnectivity(strip, cells);
    scene.setNodeIndices(strip, makeArray(scene, ids, 1));
    const Identifier set = makeArray(scene, firstRow, 1);
    scene.setName(set, ("Row" + suffix).c_str());
    scene.addElementSet(strip, set);
    const Identifier load = scene.createObject(InstanceGroupObject);
    scene.setName(load, "Load");
    for (int state = 0; state < 2; ++state)
      scene.setResult(strip, load, float(state + 1), "Stress", ScalarVariable,
                      makeArray(scene, stress[state], 1));
    const Identifier points = scene.createObject(MeshObject);
    scene.setName(points, ("Points" + suffix).c_str());
    scene.setMeshType(points, PointMesh);
    scene.setCoordinates(points, coordinates);

    const Identifier root = scene.createObject(GroupObject);
    scene.setName(root, ("Rank" + suffix).c_str());
    scene.addComponent(root, strip);
    scene.addComponent(root, points);
    scene.createDefaultViews(root);
    WriteOptions options;
    options.encoding = Encoding::Fast;
    options.threads = 2;
    options.blockBytes = 4096;  // many blocks: past the first index batches
    scene.setWriteOptions(options);
  }
};

template <class Scene, class... CommArg>
void Write(const std::string& path, int rank, Strip& strip, CommArg... comm) {
  Scene scene(comm..., "plate");
  strip.build(scene, rank);
  scene.saveTo(path.c_str(), nullptr, false, true);
  scene.closeFile(path.c_str());
}

// The tree records under the top-level entries of `scene` whose names end in
// " <rank>", in file order, each with its variables' values.
struct Piece {
  std::vector<std::string> names;
  std::vector<std::vector<std::uint32_t>> values;
};

Piece PieceOf(const DovReader::Scene& scene, int rank) {
  const std::string suffix = " " + std::to_string(rank);
  Piece piece;
  std::vector<bool> inside(scene.Records().size() + 2, false);
  for (const DovReader::TreeRecord& record : scene.Records()) {
    const bool top = record.parent == 1;
    const bool mine = top ? record.name.size() >= suffix.size() &&
                                record.name.compare(record.name.size() - suffix.size(),
                                                    suffix.size(), suffix) == 0
                          : record.parent > 1 && inside[record.parent];
    if (record.id >= inside.size()) inside.resize(record.id + 1);
    inside[record.id] = mine;
    if (!mine) continue;
    piece.names.push_back(record.name + "/" + record.typeName);
    for (std::uint32_t v = 0; v < record.variables.size(); ++v) {
      piece.names.push_back(record.variables[v].name);
      piece.values.push_back(scene.ReadValues(record.id, v));
    }
  }
  return piece;
}

bool Holds(const Piece& piece, const std::vector<float>& floats) {
  for (const auto& words : piece.values)
    if (words.size() == floats.size() && DovReader::Scene::AsFloats(words) == floats) return true;
  return false;
}

TEST(MpiWrite, EveryRanksPartReadsBackAsHandedOver) {
  const int rank = Rank();
  const std::string path = PathFor("plate"), alone = PathFor("plate-alone-" + std::to_string(rank));
  Strip strip(rank);
  Write<Scene_V2Mpi>(path, rank, strip, MPI_COMM_WORLD);
  Write<Scene_V2>(alone, rank, strip);

  if (rank == 0) {
    EXPECT_EQ(0, std::system((std::string(DOVINSPECT) + " verify " + path).c_str()));
  }
  const DovReader::Container shared = DovReader::Container::Open(path);
  const DovReader::Container own = DovReader::Container::Open(alone);
  const DovReader::Scene sharedScene = DovReader::Scene::Read(shared);
  const Piece piece = PieceOf(sharedScene, rank);
  EXPECT_EQ(sharedScene.Record(1).name, "Rank 0");
  // The same entries, variables and values as the rank's part written alone,
  // links followed; and the host's own arrays among them.
  const Piece expected = PieceOf(DovReader::Scene::Read(own), rank);
  EXPECT_EQ(piece.names, expected.names);
  EXPECT_TRUE(piece.values == expected.values);
  EXPECT_TRUE(Holds(piece, strip.nodes));
  EXPECT_TRUE(Holds(piece, strip.stress[1]));
  // Every rank's two components stand under the one root, in rank order.
  std::vector<std::string> top;
  for (const DovReader::TreeRecord& record : sharedScene.Records())
    if (record.parent == 1) top.push_back(record.name);
  ASSERT_EQ(top.size(), 2u * Ranks());
  EXPECT_EQ(top.back(), "Points " + std::to_string(Ranks() - 1));
}

TEST(MpiWrite, OneRankWritesWhatScene_V2WritesAlone) {
  const int rank = Rank();
  const std::string parted = PathFor("self-" + std::to_string(rank));
  const std::string alone = PathFor("self-alone-" + std::to_string(rank));
  Strip strip(rank);
  Write<Scene_V2Mpi>(parted, rank, strip, MPI_COMM_SELF);
  Write<Scene_V2>(alone, rank, strip);
  // The files carry the second in which they were written, in the block of
  // "Global Information": that block aside, they are the same bytes.
  std::vector<unsigned char> partedBytes = fileBytes(parted), aloneBytes = fileBytes(alone);
  const auto dated = [](const std::string& path) {
    const DovReader::Container file = DovReader::Container::Open(path);
    for (const DovReader::BlockInfo& block : file.Blocks())
      if (block.name == "Global Information") return std::make_pair(block.position, block.size);
    return std::make_pair(std::uint64_t(0), std::uint32_t(0));
  };
  const auto block = dated(parted);
  ASSERT_EQ(block, dated(alone)) << "the dates differ in length";
  ASSERT_EQ(partedBytes.size(), aloneBytes.size());
  std::fill_n(partedBytes.begin() + block.first, block.second, 0);
  std::fill_n(aloneBytes.begin() + block.first, block.second, 0);
  EXPECT_TRUE(partedBytes == aloneBytes) << parted << " differs from " << alone;
}

// A rank's failure reaches every rank: no rank hangs, and each raises the
// failing rank's code.
TEST(MpiWrite, FailuresAreCollective) {
  const int rank = Rank(), last = Ranks() - 1;
  const std::string path = PathFor("failing");
  Strip strip(rank);
  strip.badCells = rank == last;  // cells that cannot be counted: code 18 there
  try {
    Write<Scene_V2Mpi>(path, rank, strip, MPI_COMM_WORLD);
    ADD_FAILURE() << "closeFile succeeded on rank " << rank;
  } catch (const Kel::Util::Exception& failure) {
    EXPECT_EQ(failure.GetCode(), 18);
    if (rank != last) {
      EXPECT_NE(std::string(failure.GetDescription()).find("rank " + std::to_string(last)),
                std::string::npos);
    }
  }

  // A write that fails on the last rank while the others write theirs: a
  // file-size limit there lets its writes fail past the file's head.
  if (last != 0) {
    Strip writing(rank);
    std::optional<FileSizeLimit> limit;
    if (rank == last) limit.emplace(4096);
    try {
      Write<Scene_V2Mpi>(path, rank, writing, MPI_COMM_WORLD);
      ADD_FAILURE() << "closeFile succeeded on rank " << rank;
    } catch (const Kel::Util::Exception& failure) {
      EXPECT_EQ(failure.GetCode(), 10) << failure.GetDescription();
    }
  }

  // The Exact encoding cannot be written by several processes.
  Scene_V2Mpi exact(MPI_COMM_WORLD, "exact");
  const Identifier root = exact.createObject(GroupObject);
  exact.createDefaultViews(root);
  exact.saveTo(path.c_str(), nullptr, false, true);
  expectRefusal([&] { exact.closeFile(path.c_str()); }, 16);

  // Through a base handle, saveTo would make a file of the rank's own.
  Scene_V2& base = exact;
  expectRefusal([&] { base.saveTo(path.c_str(), nullptr, false, true); }, 16);

  // An existing file is not taken without the overwrite flag.
  Scene_V2Mpi existing(MPI_COMM_WORLD, "existing");
  expectRefusal([&] { existing.saveTo(path.c_str(), nullptr, false, false); }, 10);
}

// The C interface's MPI scene: saveTo and closeFile are the collective ones.
TEST(MpiWrite, CInterfaceWritesOneFileFromEveryRank) {
  const std::string path = PathFor("c-interface"), name = "Group " + std::to_string(Rank());
  dov_scene* scene = nullptr;
  ASSERT_EQ(0, dov_scene_create_mpi(MPI_Comm_c2f(MPI_COMM_WORLD), "c", &scene));
  dov_id root, group;
  dov_write_options options;
  dov_write_options_init(&options);
  options.encoding = DOV_ENCODING_FAST;
  EXPECT_EQ(0, dov_create_object(scene, DOV_GROUP_OBJECT, &root));
  EXPECT_EQ(0, dov_create_object(scene, DOV_GROUP_OBJECT, &group));
  EXPECT_EQ(0, dov_set_name(scene, group, name.c_str()));
  std::uint64_t component = 0;
  EXPECT_EQ(0, dov_add_component(scene, root, group, &component));
  EXPECT_EQ(0, dov_create_default_views(scene, root));
  EXPECT_EQ(0, dov_set_write_options(scene, &options));
  EXPECT_EQ(0, dov_save_to(scene, path.c_str(), nullptr, 0, 1));
  EXPECT_EQ(0, dov_close_file(scene, path.c_str())) << dov_last_error_message();
  EXPECT_EQ(0, dov_scene_free(scene));
  const DovReader::Container file = DovReader::Container::Open(path);
  const DovReader::Scene read = DovReader::Scene::Read(file);
  ASSERT_EQ(read.Records().size(), 1u + Ranks());
  EXPECT_EQ(read.Records()[1 + Rank()].name, name);
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  ::testing::InitGoogleTest(&argc, argv);
  const int failed = RUN_ALL_TESTS();
  int anyFailed = 0;
  MPI_Allreduce(&failed, &anyFailed, 1, MPI_INT, MPI_MAX, MPI_COMM_WORLD);
  MPI_Finalize();
  return anyFailed;
}
