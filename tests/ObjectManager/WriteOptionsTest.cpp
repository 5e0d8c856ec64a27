// The options of the third interface version: what is refused, and when.

#include "ModelFile.h"

using namespace roadtest;
using namespace Kel::Dov;

TEST(WriteOptions, OutOfRangeAndLateOptionsAreRefused) {
  Scene_V2 scene("options");
  WriteOptions options;
  options.encoding = static_cast<Encoding>(7);
  expectRefusal([&] { scene.setWriteOptions(options); }, 16, "encoding");
  options.encoding = Encoding::Fast;
  for (int level : {0, 13}) {
    options.level = level;
    expectRefusal([&] { scene.setWriteOptions(options); }, 16, "level");
  }
  options.level = 12;
  for (std::uint32_t blockBytes : {4095u, (1u << 30) + 1}) {
    options.blockBytes = blockBytes;
    expectRefusal([&] { scene.setWriteOptions(options); }, 16, "blockBytes");
  }
  options.blockBytes = 4096;
  options.threads = 1025;
  expectRefusal([&] { scene.setWriteOptions(options); }, 16, "threads");
  options.threads = 0;
  scene.setWriteOptions(options);

  const Identifier root = makeObject(scene, GroupObject, "Root");
  scene.createDefaultViews(root);
  const std::string path = freshPath();
  scene.saveTo(path.c_str(), nullptr, false, true);
  scene.closeFile(path.c_str());
  expectRefusal([&] { scene.setWriteOptions(WriteOptions()); }, 19, "setWriteOptions");
}
