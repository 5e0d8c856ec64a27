#include "ObjectManager/PartPieces.h"

#include <algorithm>

#include "Platform/Platform.h"

namespace Kel {
namespace Dov {

namespace {
const std::uint64_t ChunkBytes = 64u << 20;
}  // namespace

bool PieceTable::allEnded() const {
  return std::find(ended.begin(), ended.end(), false) == ended.end();
}

bool PieceTable::othersEnded(int part) const {
  for (std::size_t other = 0; other < ended.size(); ++other)
    if (!ended[other] && static_cast<int>(other) != part) return false;
  return true;
}

bool PieceTable::before(int part, std::size_t round, PieceSize& sum) const {
  sum = PieceSize();
  for (std::size_t r = 0; r <= round; ++r)
    for (std::size_t other = 0; other < pieces.size(); ++other) {
      if (r == round && static_cast<int>(other) == part) return true;
      if (r < pieces[other].size())
        sum.add(pieces[other][r]);
      else if (!ended[other])
        return false;
    }
  return true;
}

const unsigned char* KeptBytes::keep(const unsigned char* bytes, std::uint64_t size) {
  while (filling < chunks.size() &&
         chunks[filling].capacity() - chunks[filling].size() < size)
    ++filling;
  if (filling == chunks.size()) {
    chunks.emplace_back();
    Platform::ReserveForFilling(chunks.back(), std::max(ChunkBytes, size));
  }
  // Within the capacity: the chunk never moves, so what it keeps stays put.
  std::vector<unsigned char>& chunk = chunks[filling];
  const std::size_t at = chunk.size();
  chunk.insert(chunk.end(), bytes, bytes + size);
  return chunk.data() + at;
}

void KeptBytes::reuse() {
  for (std::vector<unsigned char>& chunk : chunks) chunk.clear();
  filling = 0;
}

void KeptBytes::release() {
  chunks = std::vector<std::vector<unsigned char>>();
  filling = 0;
}

}  // namespace Dov
}  // namespace Kel
