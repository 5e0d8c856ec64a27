// Datasets in "Heavy Data", the head and the global information.

#include <gtest/gtest.h>

#include <DovWriter/Scene.h>

#include <fstream>
#include <iterator>

#include "Kel/Dov/Tree.h"
#include "Kel/Util/Coding.h"
#include "StreamBytes.h"

namespace {

using namespace DovTest;

Bytes FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// `pattern` stands for a prefix of `text`: A an upper-case letter, a a
// lower-case one, 0 a digit, anything else itself.
bool MatchesPattern(const std::string& text, const std::string& pattern) {
  if (text.size() < pattern.size()) return false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = text[i];
    const bool ok = pattern[i] == 'A'   ? (c >= 'A' && c <= 'Z')
                    : pattern[i] == 'a' ? (c >= 'a' && c <= 'z')
                    : pattern[i] == '0' ? (c >= '0' && c <= '9')
                                        : c == pattern[i];
    if (!ok) return false;
  }
  return true;
}

TEST(HeavyDataTest, DatasetsFollowEachOtherInByteplanes) {
  KelDov::Tree tree;
  tree.SetStreamFile(TempPath("heavy-planes.dov"), true);
  KelTmf::Index& index = tree.GetFile().index;
  EXPECT_EQ(0u, tree.WriteStreamDataset(std::vector<std::uint32_t>{0x04030201, 0x08070605}, 1));
  EXPECT_EQ(8u, tree.WriteStreamDataset(std::vector<float>{1.0f}, 0));
  EXPECT_EQ(12u, tree.WriteStreamDataset(std::vector<std::uint32_t>(), 3));
  const std::uint32_t raw[3] = {0x0A0B0C0D, 1, 2};
  // Width 2 over three values: one item of two components, one leftover.
  EXPECT_EQ(12u, tree.WriteStreamDataset(raw, 3, 2));
  EXPECT_EQ((Bytes{1, 5, 2, 6, 3, 7, 4, 8, 0, 0, 0x80, 0x3F, 0x0D, 0x0C, 0x0B, 0x0A, 1, 0, 0,
                   0, 2, 0, 0, 0}),
            StreamBytes(index, "Heavy Data"));
}

TEST(HeavyDataTest, EmptyDatasetStillStartsTheStream) {
  KelDov::Tree tree;
  tree.SetStreamFile(TempPath("heavy-empty.dov"), true);
  KelTmf::Index& index = tree.GetFile().index;
  EXPECT_EQ(0u, tree.WriteStreamDataset(std::vector<float>(), 1));
  ASSERT_TRUE(HasStream(index, "Heavy Data"));
  EXPECT_EQ(1u, index.limiters.at("Heavy Data").blocks.size());
  EXPECT_EQ(0u, index.GetStreamLength("Heavy Data"));
}

TEST(HeavyDataTest, FullBlocksLeaveAtOnceAndFlagsLagOneDataset) {
  KelDov::Tree tree;
  const std::string path = TempPath("heavy-flush.dov");
  tree.SetStreamFile(path, true);
  KelTmf::Index& index = tree.GetFile().index;
  index.SetBlockLimit("Heavy Data", 16);
  const std::vector<std::uint32_t> values(8, 0x11223344);  // 32 bytes: one block each
  std::vector<std::uint64_t> offsets;
  for (int i = 0; i < 3; ++i) offsets.push_back(tree.WriteStreamDataset(values, 1));
  EXPECT_EQ((std::vector<std::uint64_t>{0, 32, 64}), offsets);
  EXPECT_EQ(96u, index.GetStreamLength("Heavy Data"));

  const std::vector<std::uint64_t>& blocks = index.limiters.at("Heavy Data").blocks;
  ASSERT_EQ(3u, blocks.size());
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(index.records[blocks[i]].frozen) << i;
    EXPECT_EQ(KelTmf::BlockFlagFreeze | KelTmf::BlockFlagCompress, index.records[blocks[i]].flags);
    EXPECT_EQ(nullptr, index.blocks[blocks[i]].data);  // memory released
  }
  // The block the last dataset started has no flags until the save.
  EXPECT_FALSE(index.records[blocks[2]].frozen);
  EXPECT_EQ(0, index.records[blocks[2]].flags);
  tree.Save(tree.GetFile(), "");
  EXPECT_EQ(KelTmf::BlockFlagCompress, index.records[blocks[2]].flags);
}

TEST(HeavyDataTest, RefusesDatasetsOf4GiB) {
  KelDov::Tree tree;
  const std::uint32_t one = 1;
  try {
    tree.WriteStreamDataset(&one, std::uint64_t(1) << 30, 1);  // never read
    FAIL() << "no exception";
  } catch (const Kel::Util::Exception& e) {
    EXPECT_EQ(1, e.GetCode());
    EXPECT_STREQ("Dataset too large: 4 GiB or more cannot be stored", e.GetDescription());
  }
  EXPECT_FALSE(HasStream(tree.GetFile().index, "Heavy Data"));
}

TEST(HeavyDataTest, SaveWritesHeadGlobalInformationAndLog) {
  const std::string log = TempPath("heavy-save.log");
  Kel::Dov::logTraceToFile(log.c_str());
  const std::string path = TempPath("heavy-save.dov");
  KelDov::Tree tree;
  tree.GetInformation().applicationName = "app";
  tree.SetStreamFile(path, true);
  EXPECT_EQ("1.1", tree.GetFormatVersion());
  tree.WriteStreamDataset(std::vector<float>{1, 2, 3}, 3);
  tree.SaveGlobalInfo(tree.GetFile(), "note");

  const Bytes info = StreamBytes(tree.GetFile().index, "Global Information");
  ASSERT_GE(info.size(), 8u);
  EXPECT_EQ(1u, Kel::Util::DecodeFixed32(info.data()));
  std::size_t at = 8;
  std::vector<std::string> fields;
  while (at + 4 <= info.size()) {
    const std::uint32_t n = Kel::Util::DecodeFixed32(info.data() + at);
    fields.emplace_back(info.begin() + at + 4, info.begin() + at + 4 + n);
    at += 4 + n;
  }
  ASSERT_EQ(8u, fields.size());
  EXPECT_EQ(info.size() - 4, Kel::Util::DecodeFixed32(info.data() + 4));
  EXPECT_EQ("0.1", fields[0]);
  EXPECT_EQ("app", fields[1]);
  EXPECT_EQ("", fields[2]);
  EXPECT_EQ("1.1", fields[3]);
  EXPECT_TRUE(MatchesPattern(fields[4], "Aaa Aaa 00 00:00:00 0000 ")) << fields[4];
  EXPECT_EQ(42u + fields[4].size() + 3 + 4, info.size() - 4);  // with "app" and "note"
  EXPECT_EQ("", fields[5]);
  EXPECT_EQ("", fields[6]);
  EXPECT_EQ("note", fields[7]);

  tree.SaveTree(tree.GetFile());
  tree.GetFile().index.SetBlockFlags("Heavy Data", KelTmf::BlockFlagCompress);
  tree.GetFile().index.WriteAllBuffersToFileStream(tree.GetFile().stream);
  tree.GetFile().CloseFile();
  const Bytes file = FileBytes(path);
  ASSERT_GE(file.size(), 2800u);
  EXPECT_EQ((Bytes{0x89, 0x54, 0x4D, 0x46, 0x0D, 0x0A, 0x1A, 0x0A, '1', '.', '1', 0}),
            Bytes(file.begin(), file.begin() + 12));

  std::ifstream in(log);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  for (const std::string& line :
       {"@ Setting dov file \"" + path + "\"\n",
        std::string("@ Writing Dataset of size 3 width 3 datatype size 4\n"),
        std::string("@ Saving global information ...\n"), std::string("@ Global information saved.\n"),
        std::string("@ Saving dov tree ... \n"), std::string("@ Dov tree saved. \n")})
    EXPECT_NE(std::string::npos, text.find(line)) << line;
}

}  // namespace
