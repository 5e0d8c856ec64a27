// Writes the seed corpus of the fuzz targets into DIR/<target>/: API
// programs of a triangle and of a mesh with element sets and results over
// two instance values, the files they write, and those files' streams.
// The corpus in fuzz/corpus is its output; run it again when the layout of
// API programs or of the file changes.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>

#include "ApiProgram.h"
#include "FuzzSupport.h"
#include "reader/Container.h"

namespace {

using namespace DovFuzz;

// Type bytes of kCreate, and name bytes, as ApiProgram.cpp lists them.
enum : int { kArray = 0, kInstanceGroup = 4, kGeometry = 5, kShape = 6, kGroup = 7, kMesh = 8 };
enum : int { kNameA = 1, kNameB = 2, kNameTime = 5, kNameStress = 6 };
const int kDouble = 1;  // value kind: 0.5 times the next byte

struct Program {
  std::string bytes;
  Program& Op(ApiOp op, std::initializer_list<int> arguments) {
    bytes += static_cast<char>(op);
    for (int argument : arguments) bytes += static_cast<char>(argument);
    return *this;
  }
  Program& Finish(int root) {
    return Op(kDefaultViews, {root}).Op(kSaveTo, {0}).Op(kCloseFile, {0});
  }
};

Program Triangle() {
  Program p;
  for (int type : {kGroup, kShape, kGeometry, kArray, kArray}) p.Op(kCreate, {type});
  p.Op(kFloats, {3, 9, 0, 1}).Op(kDimension, {4, 3}).Op(kWords, {4, 1, 0, 1, 3});
  p.Op(kCoordinates, {0, 2, 3}).Op(kConnectivity, {0, 2, 4});
  p.Op(kComponent, {0, 1, 2}).Op(kComponent, {0, 0, 1});
  return p.Finish(0);
}

Program MeshWithResults() {
  Program p;
  for (int type :
       {kGroup, kMesh, kArray, kArray, kArray, kArray, kArray, kInstanceGroup, kArray, kArray})
    p.Op(kCreate, {type});
  p.Op(kDimension, {2, 3}).Op(kFloats, {2, 4, 0, 1});
  p.Op(kWords, {3, 6, 0, 1, 4}).Op(kWords, {4, 2, 3, 0, 0});
  p.Op(kConnectivity, {1, 1, 3, 4}).Op(kCoordinates, {0, 1, 2});
  p.Op(kWords, {5, 1, 0, 0, 0}).Op(kName, {5, kNameA}).Op(kElementSet, {0, 1, 5});
  p.Op(kWords, {6, 2, 0, 1, 0}).Op(kName, {6, kNameB}).Op(kElementSet, {0, 1, 6});
  p.Op(kName, {7, kNameTime}).Op(kFloats, {8, 4, 1, 1}).Op(kFloats, {9, 4, 3, 2});
  p.Op(kResult, {2, 1, 7, kDouble, 1, kNameStress, 8});
  p.Op(kResult, {2, 1, 7, kDouble, 2, kNameStress, 9});
  p.Op(kComponent, {0, 0, 1});
  return p.Finish(0);
}

void Write(const std::filesystem::path& file, const std::string& bytes) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << bytes;
}

std::string FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
    return 2;
  }
  const std::filesystem::path dir = argv[1];
  const std::pair<const char*, Program> programs[] = {{"triangle", Triangle()},
                                                      {"mesh", MeshWithResults()}};
  for (const auto& program : programs) {
    const std::string& bytes = program.second.bytes;
    const std::string model = ScratchPath(std::string(program.first) + ".dov");
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    if (RunApiProgram(data, bytes.size(), model) != 1) {
      std::fprintf(stderr, "the %s program wrote no file\n", program.first);
      return 1;
    }
    Write(dir / "api" / program.first, bytes);
    const std::string file = FileBytes(model);
    Write(dir / "reader" / program.first, file);
    Write(dir / "dovinspect" / program.first, std::string("\2\0", 2) + file);
    const DovReader::Container container = DovReader::Container::Open(model);
    Streams streams;
    for (const std::string& name : container.StreamNames()) {
      const std::vector<unsigned char> stream = container.ReadStream(name);
      streams.emplace_back(name, std::string(stream.begin(), stream.end()));
    }
    Write(dir / "scene_streams" / program.first, JoinStreams(streams));
  }
  return 0;
}
