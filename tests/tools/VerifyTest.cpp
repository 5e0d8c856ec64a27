// verify against damaged copies of a good file: every kind of damage must
// be reported with exit status 1 and one line per violation, never crash.

#include <Kel/Util/Coding.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <filesystem>
#include <functional>
#include <sstream>

#include "Commands.h"
#include "ToolTestSupport.h"
#include "reader/Container.h"

namespace {

using Bytes = std::string;
using DovReader::BlockInfo;

struct Files {
  std::string dir, small, chained;  // chained: has an index block
};

const Files& GoodFiles() {
  static const Files files = [] {
    std::string dir = ToolTest::ScratchDir("verify");
    Files f{dir, dir + "/small.dov", dir + "/chained.dov"};
    ToolTest::WriteTestModel(f.small);
    ToolTest::WriteTestModel(f.chained, 1);
    return f;
  }();
  return files;
}

int Verify(const std::string& path, std::string* out = nullptr) {
  std::ostringstream o, e;
  int status = DovInspect::RunTool({"verify", path}, o, e);
  if (out) *out = o.str() + e.str();
  return status;
}

BlockInfo Named(const std::string& path, const std::string& name) {
  const DovReader::Container container = DovReader::Container::Open(path);
  for (const BlockInfo& block : container.Blocks())
    if (block.name == name) return block;
  ADD_FAILURE() << "no block " << name << " in " << path;
  return {};
}

std::string Damaged(const std::string& name, const Bytes& bytes) {
  std::string path = GoodFiles().dir + "/" + name + ".dov";
  ToolTest::WriteFile(path, bytes);
  return path;
}

void PutU32(Bytes& bytes, std::uint64_t at, std::uint32_t value) {
  Kel::Util::EncodeFixed32(reinterpret_cast<unsigned char*>(&bytes[at]), value);
}
std::uint32_t GetU32(const Bytes& bytes, std::uint64_t at) {
  return Kel::Util::DecodeFixed32(reinterpret_cast<const unsigned char*>(&bytes[at]));
}

// Entry n of the first index; its size field lies 133 bytes in.
std::uint64_t FirstIndexEntry(std::uint64_t n) { return 20 + 139 * n; }

// Replaces block `block` (of the first index) by a compressed block of its
// plain bytes after `edit`, keeping the container sound: only the content
// changes.
Bytes WithBlockContent(const std::string& path, const BlockInfo& block,
                       const std::function<void(Bytes&)>& edit) {
  std::vector<unsigned char> old = DovReader::Container::Open(path).ReadBlockPlain(block);
  Bytes plain(old.begin(), old.end());
  edit(plain);
  uLongf length = compressBound(plain.size());
  Bytes stored(4 + length, '\0');
  PutU32(stored, 0, static_cast<std::uint32_t>(plain.size()));
  compress2(reinterpret_cast<Bytef*>(&stored[4]), &length,
            reinterpret_cast<const Bytef*>(plain.data()), plain.size(), 6);
  stored.resize(4 + length);
  Bytes file = ToolTest::ReadFile(path);
  file = file.substr(0, block.position) + stored + file.substr(block.position + block.size);
  PutU32(file, FirstIndexEntry(block.number) + 133, static_cast<std::uint32_t>(stored.size()));
  return file;
}

// The good files are sound; a damaged container (head, index block,
// compressed block) gives one "path: " line per violation and status 1.
// Each kind of container damage is told apart in the reader's own tests.
TEST(Verify, DamagedContainerIsReported) {
  for (const std::string& path : {GoodFiles().small, GoodFiles().chained}) {
    std::string output;
    EXPECT_EQ(Verify(path, &output), 0) << output;
    EXPECT_EQ(output, path + ": sound\n");
  }
  const Bytes small = ToolTest::ReadFile(GoodFiles().small);
  const Bytes chained = ToolTest::ReadFile(GoodFiles().chained);
  std::uint64_t chain = 0;
  const DovReader::Container container = DovReader::Container::Open(GoodFiles().chained);
  for (const BlockInfo& b : container.Blocks())
    if (b.IsIndexBlock()) chain = b.position;
  ASSERT_NE(chain, 0u);
  const std::uint64_t heavy = Named(GoodFiles().small, "Heavy Data").position;
  const std::pair<const char*, Bytes> cases[] = {
      {"head-magic", small.substr(0, 1) + "X" + small.substr(2)},
      {"index-block-count", chained.substr(0, chain) + std::string(4, '\7') + chained.substr(chain + 4)},
      {"compressed-block-bytes", small.substr(0, heavy + 10) + std::string(10, 'Z') + small.substr(heavy + 20)},
  };
  for (const auto& c : cases) {
    std::string path = Damaged(c.first, c.second), output;
    EXPECT_EQ(Verify(path, &output), 1) << c.first << "\n" << output;
    EXPECT_EQ(output.rfind(path + ": ", 0), 0u) << c.first << "\n" << output;
    EXPECT_EQ(output.find("sound"), std::string::npos) << c.first;
  }
}

TEST(Verify, DamagedSceneInSoundContainerIsReported) {
  const std::string& good = GoodFiles().small;
  // "Heavy Data" cut short, so datasets lie beyond its end; "Dov Tree"
  // claiming more records than it holds.
  const std::pair<Bytes, const char*> cases[] = {
      {WithBlockContent(good, Named(good, "Heavy Data"), [](Bytes& b) { b.resize(b.size() / 2); }),
       "beyond \"Heavy Data\""},
      {WithBlockContent(good, Named(good, "Dov Tree"), [](Bytes& b) { PutU32(b, 0, GetU32(b, 0) + 5); }),
       ": scene: "},
  };
  for (const auto& c : cases) {
    std::string path = Damaged("scene", c.first), output;
    EXPECT_TRUE(DovReader::Container::Verify(path).empty()) << c.second;
    EXPECT_EQ(Verify(path, &output), 1) << output;
    EXPECT_EQ(output.rfind(path + ": ", 0), 0u) << output;
    EXPECT_NE(output.find(c.second), std::string::npos) << output;
  }
}

// The offset of the parent field of entry `id` in the bytes of "Dov Tree".
std::uint64_t ParentFieldOf(const Bytes& tree, std::uint32_t id) {
  std::uint64_t at = 4;
  while (GetU32(tree, at) != id) {
    at += 24;
    for (int text = 0; text < 3; ++text) at += 4 + GetU32(tree, at);
    at += 8;
  }
  return at + 4;
}

// A parent that is not lower than the entry's own id (the entry itself, or
// two entries naming each other) would send a walk up the tree round for
// ever: every command refuses such a tree with one line.
TEST(Verify, EveryCommandRefusesParentLinksThatLoop) {
  const std::string& good = GoodFiles().small;
  // Entry 2 is the plate's group, entry 3 the first of its shapes.
  for (std::uint32_t parent : {2u, 3u}) {
    const Bytes damaged = WithBlockContent(good, Named(good, "Dov Tree"), [&](Bytes& b) {
      PutU32(b, ParentFieldOf(b, 2), parent);
    });
    const std::string path = Damaged("parent-loop", damaged);
    const std::string out = GoodFiles().dir + "/parent-loop-export";
    const std::vector<std::vector<std::string>> commands = {
        {"verify", path}, {"info", path}, {"tree", path}, {"vars", path},
        {"dump", path, "#4", "0"}, {"export", path, out}};
    for (const std::vector<std::string>& command : commands) {
      std::ostringstream o, e;
      EXPECT_EQ(DovInspect::RunTool(command, o, e), 1) << command[0];
      EXPECT_NE((o.str() + e.str()).find("names parent " + std::to_string(parent) +
                                        ", which is not lower than its own id"),
                std::string::npos)
          << command[0] << ": " << o.str() << e.str();
    }
    EXPECT_FALSE(std::filesystem::exists(out));
  }
}

// Any single damaged byte or cut: a verdict, never a crash (this runs in
// the sanitizer build as well). A damaged byte inside a block is always
// found, through the stated length or zlib's own check; in the index some
// bytes (an entry's id byte, the name of a pool block) carry nothing.
TEST(Verify, EveryDamageGetsAVerdict) {
  for (const std::string& good : {GoodFiles().small, GoodFiles().chained}) {
    const Bytes file = ToolTest::ReadFile(good);
    const std::string path = Damaged("sweep", "");
    for (std::uint64_t at = 0; at < file.size(); at += file.size() / 60 + 1) {
      Bytes flipped = file;
      flipped[at] = static_cast<char>(flipped[at] ^ 0xA5);
      ToolTest::WriteFile(path, flipped);
      int status = Verify(path);
      if (at >= DovReader::FirstBlockPosition && good == GoodFiles().small) {
        EXPECT_EQ(status, 1) << "byte " << at;
      } else {
        EXPECT_TRUE(status == 0 || status == 1) << "byte " << at;
      }
      ToolTest::WriteFile(path, file.substr(0, at));
      EXPECT_EQ(Verify(path), 1) << "cut at " << at;
    }
  }
}

}  // namespace
