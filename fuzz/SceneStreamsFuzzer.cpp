// Scene streams in a sound container: the input holds the streams (see
// SplitStreams), which are packed as compressed blocks, so that mutations
// reach the tree, node and variable records instead of failing in zlib.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string& path = DovFuzz::ScratchPath("streams.dov");
  DovFuzz::PackStreams(path, DovFuzz::SplitStreams(data, size));
  DovFuzz::ReadEverything(path);
  // dump prints an entry and a variable chosen by the input's length.
  DovFuzz::RunEveryCommand(path, 2 + size % 5, size % 3);
  return 0;
}
