// Sequences of public Scene_V1 calls (see ApiProgram.h), each finished file
// checked by verify and against the values the program recorded.

#include "ApiProgram.h"
#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  DovFuzz::RunApiProgram(data, size, DovFuzz::ScratchPath("api.dov"));
  return 0;
}
