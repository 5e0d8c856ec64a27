// Every dovinspect command over arbitrary bytes. The first two bytes choose
// the entry and the variable that dump prints; the rest is the file.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::string& path = DovFuzz::ScratchPath("dovinspect.dov");
  DovFuzz::WriteBytes(path, data + 2, size - 2);
  DovFuzz::RunEveryCommand(path, data[0], data[1]);
  return 0;
}
