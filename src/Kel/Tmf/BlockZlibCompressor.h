#ifndef DOVWRITER_KEL_TMF_BLOCKZLIBCOMPRESSOR_H
#define DOVWRITER_KEL_TMF_BLOCKZLIBCOMPRESSOR_H

#include <cstdint>

#include "Kel/Tmf/Block.h"

namespace KelTmf {

// Rewrites a block in place, after its last put and before it is written.
class BlockTransformation {
 public:
  virtual ~BlockTransformation() = default;
  virtual void operator()(Block& block) = 0;
};

// Replaces the block's contents by [u32 plain length][zlib stream], the
// stream made by compress2 at the given level.
class BlockZlibCompressor : public BlockTransformation {
 public:
  explicit BlockZlibCompressor(std::int32_t level) : level(level) {}
  void operator()(Block& block) override;

 private:
  std::int32_t level;
};

}  // namespace KelTmf

#endif
