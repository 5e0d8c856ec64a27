#include <cstring>

#include "Kel/Dov/DatasetLayout.h"
#include "Kel/Dov/Tree.h"
#include "Kel/Log/Log.h"
#include "Kel/Util/Raise.h"

namespace KelDov {

namespace {

const char* const WriteStreamDatasetMethod = "KelDov::Tree::WriteStreamDataset";

// A block's length and the byte size of a variable record are 32-bit.
const std::uint64_t DatasetByteLimit = std::uint64_t(1) << 32;

// 4-byte values as they stand in the caller's memory.
struct HostWords {
  const unsigned char* bytes;
  std::uint32_t operator[](std::uint64_t i) const {
    std::uint32_t word;
    std::memcpy(&word, bytes + 4 * i, sizeof word);
    return word;
  }
};

}  // namespace

std::uint64_t Tree::WriteStreamDataset(const std::vector<std::uint32_t>& values,
                                       std::uint8_t width) {
  return PutDataset(values.data(), values.size(), width);
}

std::uint64_t Tree::WriteStreamDataset(const std::vector<float>& values, std::uint8_t width) {
  return PutDataset(values.data(), values.size(), width);
}

std::uint64_t Tree::WriteStreamDataset(const std::uint32_t* values, std::uint64_t count,
                                       std::uint8_t width) {
  return PutDataset(values, count, width);
}

std::uint64_t Tree::WriteStreamDataset(const float* values, std::uint64_t count,
                                       std::uint8_t width) {
  return PutDataset(values, count, width);
}

std::uint64_t Tree::WriteStreamDataset(const void* values, std::uint64_t count,
                                       std::uint8_t width) {
  return PutDataset(HostWords{static_cast<const unsigned char*>(values)}, count, width);
}

template <class Values>
std::uint64_t Tree::PutDataset(const Values& values, std::uint64_t count, std::uint8_t width) {
  KEL_LOG(1000, WriteStreamDatasetMethod,
          "Writing Dataset of size " << count << " width " << static_cast<unsigned>(width)
                                     << " datatype size " << 4);
  if (count >= DatasetByteLimit / 4)
    KEL_RAISE(1, "Dataset too large: 4 GiB or more cannot be stored",
              WriteStreamDatasetMethod);
  KelTmf::Index& index = file.index;
  const std::uint64_t offset = index.GetStreamLength(HeavyDataStream);
  // Flags reach only the blocks that exist now; a block that this put
  // starts gets them with the next dataset, or at the end of the save.
  index.SetBlockFlags(HeavyDataStream, KelTmf::BlockFlagFreeze);
  index.SetBlockFlags(HeavyDataStream, KelTmf::BlockFlagCompress);
  // Every block of the stream is compressed at the end of the save.
  index.PutCompressed(HeavyDataStream, file.stream, 4 * count,
                      [&](unsigned char* out, std::uint64_t begin, std::uint64_t end) {
                        EncodeDatasetRange(out, values, count, width, begin, end);
                      });
  index.FlushFrozen(file.stream);
  return offset;
}

}  // namespace KelDov
