// The limit: what zlib alone needs, on one core, for the bytes that the
// library compresses. The file is read back and every compressed block is
// inflated (not timed) and compressed again with compress2 at level 6, so
// the input bytes and the cuts are exactly those of the write.

#include <zlib.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "Measure.h"
#include "Writers.h"
#include "reader/Container.h"

namespace bench {

LimitFigures MeasureLimit(const std::string& path) {
  const std::vector<std::string> problems = DovReader::Container::Verify(path);
  if (!problems.empty()) throw std::runtime_error("unsound file: " + problems.front());
  const DovReader::Container container = DovReader::Container::Open(path);
  LimitFigures figures;
  figures.sameBytes = true;
  Stopwatch watch;
  for (const DovReader::BlockInfo& block : container.Blocks()) {
    if (!block.IsStreamBlock() || !block.IsCompressed()) continue;
    const std::vector<unsigned char> stored = container.ReadBlockBytes(block);
    const std::vector<unsigned char> plain = container.ReadBlockPlain(block);
    std::vector<unsigned char> again(compressBound(plain.size()));
    uLongf againLength = again.size();
    const int result = watch.Time([&] {
      return compress2(again.data(), &againLength, plain.data(), plain.size(), 6);
    });
    if (result != Z_OK) throw std::runtime_error("compress2 failed");
    figures.sameBytes = figures.sameBytes && againLength + 4 == stored.size() &&
                        std::memcmp(again.data(), stored.data() + 4, againLength) == 0;
    figures.plainBytes += plain.size();
    figures.blocks += 1;
    if (block.name == "Heavy Data" && plain.size() > figures.largestHeavyBlock)
      figures.largestHeavyBlock = plain.size();
  }
  figures.wallSeconds = watch.WallSeconds();
  figures.cpuSeconds = watch.CpuSeconds();
  return figures;
}

}  // namespace bench
