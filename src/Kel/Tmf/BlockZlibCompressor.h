#ifndef DOVWRITER_KEL_TMF_BLOCKZLIBCOMPRESSOR_H
#define DOVWRITER_KEL_TMF_BLOCKZLIBCOMPRESSOR_H

#include <cstddef>
#include <cstdint>
#include <functional>

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

  // Produces the same bytes as operator() without building them in memory:
  // the transformed form of the block ([u32 plain length][zlib stream]) goes
  // to `sink` in pieces of at most StreamPieceBytes, and its length is
  // returned. The block is left as it was. A large block thus needs no
  // second buffer of its compressed size beside it while it is written.
  typedef std::function<void(const unsigned char* bytes, std::size_t count)> Sink;
  static constexpr std::size_t StreamPieceBytes = 1 << 18;
  std::uint64_t Stream(const Block& block, const Sink& sink) const;

 private:
  std::int32_t level;
};

}  // namespace KelTmf

#endif
