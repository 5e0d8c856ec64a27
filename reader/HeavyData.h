#ifndef DOVREADER_HEAVYDATA_H
#define DOVREADER_HEAVYDATA_H

// Byte ranges of "Heavy Data", with the last inflated block kept. Datasets
// are read one after the other and most of them share a block, so keeping
// that one block turns an inflation per dataset into one per block, while
// memory stays bounded by a single block.

#include <cstdint>
#include <string>
#include <vector>

#include "reader/Container.h"
#include "reader/Scene.h"

namespace DovReader {

class HeavyData {
 public:
  HeavyData(const Container& container, const std::string& path);

  std::uint64_t Length() const { return length_; }
  // Throws ReadError if the range lies beyond the stream.
  std::vector<unsigned char> Range(std::uint64_t offset, std::uint64_t length);
  // The values of a variable that holds its data (links already followed),
  // as 32-bit words in their original order.
  std::vector<std::uint32_t> Values(const Variable& holder);

 private:
  struct Part {
    BlockInfo block;
    std::uint64_t start = 0;   // offset of its first byte in the stream
    std::uint64_t length = 0;  // bytes before compression
  };

  const std::vector<unsigned char>& Plain(std::size_t part);

  const Container& container_;
  std::vector<Part> parts_;
  std::uint64_t length_ = 0;
  std::size_t cachedPart_ = SIZE_MAX;
  std::vector<unsigned char> cachedPlain_;
};

}  // namespace DovReader

#endif
