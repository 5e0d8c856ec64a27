// Separate scenes on separate threads, as a host writes one file per load
// case: each file is what the scene writes alone, and the trace log keeps
// every line whole.

#include <atomic>
#include <map>
#include <sstream>
#include <thread>

#include "ModelFile.h"

using namespace roadtest;
using namespace Kel::Dov;

namespace {

// Element sets and shapes, each drawing a random colour at close.
void writeModel(const std::string& path) {
  RootedScene model;
  Scene_V1& scene = model.scene;
  const Identifier mesh = model.add(MeshObject, "Plate");
  scene.setCoordinates(mesh, makeArray(scene, SquareNodes, 3));
  scene.setConnectivity(mesh, makeArray(scene, Words{0, 1, 2, 1, 3, 2}, 3));
  for (int i = 0; i < 200; ++i) {
    // Sets of their own names write datasets of their own, each logged.
    const std::string name = "Set " + std::to_string(i);
    scene.addElementSet(mesh, makeSet(scene, name.c_str(), Words{std::uint32_t(i % 2)}));
    scene.addComponent(model.add(ShapeObject, "Shape"), makeObject(scene, GroupObject, "Part"));
  }
  closeScene(scene, model.root, path);
}

// Every stream but the one that holds the creation date.
std::map<std::string, std::vector<unsigned char>> streamsBesideTheDate(const std::string& path) {
  const DovReader::Container container = DovReader::Container::Open(path);
  std::map<std::string, std::vector<unsigned char>> streams;
  for (const std::string& name : container.StreamNames())
    if (name != "Global Information") streams[name] = container.ReadStream(name);
  return streams;
}

std::vector<std::string> lines(const std::string& path) {
  const std::vector<unsigned char> bytes = fileBytes(path);
  std::istringstream text(std::string(bytes.begin(), bytes.end()));
  std::vector<std::string> all;
  for (std::string line; std::getline(text, line);) all.push_back(line);
  return all;
}

// "Index.cpp : 12 @ message", with no piece of another record in it.
bool isWholeRecord(const std::string& line) {
  const std::size_t colon = line.find(" : "), at = line.find(" @ ");
  const std::size_t none = std::string::npos;
  return colon != none && at != none && colon < at && line.find(" : ", colon + 1) == none &&
         line.find(" @ ", at + 1) == none;
}

}  // namespace

TEST(SceneThreads, EachSceneWritesWhatItWritesAloneAndLogLinesStayWhole) {
  const std::string& log = processTraceLog();
  const std::size_t before = lines(log).size();
  const std::string alone = freshPath("alone");
  writeModel(alone);
  const std::size_t linesAlone = lines(log).size() - before;
  ASSERT_GT(linesAlone, 10u);

  const int threadCount = 4;
  std::vector<std::string> paths;
  for (int i = 0; i < threadCount; ++i) paths.push_back(freshPath(std::to_string(i)));
  std::atomic<int> waiting(threadCount);
  std::vector<std::thread> threads;
  for (const std::string& path : paths)
    threads.emplace_back([&waiting, path] {
      // All start together, so that their closes overlap.
      --waiting;
      while (waiting.load() > 0) std::this_thread::yield();
      writeModel(path);
    });
  for (std::thread& thread : threads) thread.join();

  const auto expected = streamsBesideTheDate(alone);
  for (const std::string& path : paths) EXPECT_TRUE(streamsBesideTheDate(path) == expected) << path;
  const std::vector<std::string> written = lines(log);
  EXPECT_EQ(written.size() - before, linesAlone * (threadCount + 1));
  for (const std::string& line : written) EXPECT_TRUE(isWholeRecord(line)) << line;
}
