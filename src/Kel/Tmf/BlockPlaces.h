#ifndef DOVWRITER_KEL_TMF_BLOCKPLACES_H
#define DOVWRITER_KEL_TMF_BLOCKPLACES_H

// Where a block of data lands in a file whose data blocks come first, one
// behind the other: the numbers come from the pool (a first batch of 20,
// then batches of 200, the last number of each batch becoming the index
// block in front of the next), and blocks lie in number order. Lets each of
// several writers place its blocks knowing only how many blocks, and how
// many stored bytes, the writers in front of it have.

#include <cstdint>

namespace KelTmf {

// The place of the `dataBlock`-th data block (index blocks not counted),
// when the data blocks in front of it take `storedBefore` bytes.
std::uint64_t DataBlockPosition(std::uint64_t dataBlock, std::uint64_t storedBefore);

}  // namespace KelTmf

#endif
