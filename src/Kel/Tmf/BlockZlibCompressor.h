#ifndef DOVWRITER_KEL_TMF_BLOCKZLIBCOMPRESSOR_H
#define DOVWRITER_KEL_TMF_BLOCKZLIBCOMPRESSOR_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "Kel/Tmf/Block.h"

namespace KelTmf {

// Receives the bytes a compressor makes, in order.
typedef std::function<void(const unsigned char* bytes, std::size_t count)> ByteSink;

// One zlib stream with compress2's parameters, fed in as many pieces as the
// caller likes: deflate's output depends only on the bytes and not on how
// they were cut, so the result is compress2's stream of all pieces joined.
// Output goes to the sink in pieces of at most PieceBytes.
class ZlibStream {
 public:
  static constexpr std::size_t PieceBytes = 1 << 18;

  ZlibStream(std::int32_t level, ByteSink sink);
  ~ZlibStream();
  ZlibStream(const ZlibStream&) = delete;
  ZlibStream& operator=(const ZlibStream&) = delete;

  void Feed(const unsigned char* bytes, std::uint64_t count);
  // Ends the stream and returns the number of bytes it came to.
  std::uint64_t Finish();

 private:
  // Runs deflate until the input is used up (or, finishing, the stream ends),
  // handing every full piece to the sink.
  void Deflate(int flush);
  void Drain();

  struct State;
  std::unique_ptr<State> state;
  std::vector<unsigned char> piece;
  ByteSink sink;
};

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
