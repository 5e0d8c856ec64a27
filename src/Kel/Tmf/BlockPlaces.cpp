#include "Kel/Tmf/BlockPlaces.h"

#include "Kel/Tmf/Index.h"

namespace KelTmf {

namespace {

// The first batch leaves 19 numbers to data, every later batch 199.
const std::uint64_t FirstBatchData = FirstIndexEntries - 1;
const std::uint64_t ChainedBatchData = ChainedIndexEntries - 1;
const std::uint64_t IndexBlockSize = ChainedIndexEntries * IndexEntrySize + 4;

std::uint64_t IndexBlocksBefore(std::uint64_t dataBlock) {
  if (dataBlock < FirstBatchData) return 0;
  return 1 + (dataBlock - FirstBatchData) / ChainedBatchData;
}

}  // namespace

std::uint64_t DataBlockPosition(std::uint64_t dataBlock, std::uint64_t storedBefore) {
  return FirstBlockPosition + storedBefore + IndexBlocksBefore(dataBlock) * IndexBlockSize;
}

}  // namespace KelTmf
