// The reader over arbitrary bytes: container, streams, scene and values.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string& path = DovFuzz::ScratchPath("reader.dov");
  DovFuzz::WriteBytes(path, data, size);
  DovFuzz::ReadEverything(path);
  return 0;
}
