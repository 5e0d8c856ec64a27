#ifndef DOVREADER_CONTAINER_H
#define DOVREADER_CONTAINER_H

// Reading side of the container file: walks the head, the first index and
// the chain of index blocks, places each block by adding up the sizes in
// front of it, and hands out named streams joined from their blocks.
// Stands on its own: it shares no code with the writer but the byte coding,
// so that it checks the writer instead of repeating it.

#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace DovReader {

// Everything that makes a file, a block or a request unreadable.
class ReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

const std::uint64_t FirstBlockPosition = 2800;
const std::uint32_t IndexBlockSize = 27804;
const std::uint8_t FlagCompressed = 1;

struct BlockInfo {
  std::uint64_t number = 0;
  std::uint8_t id = 0;
  std::string name;  // the name field up to its first zero byte
  std::uint32_t size = 0;
  std::uint8_t flags = 0;
  std::uint64_t position = 0;

  bool IsCompressed() const { return (flags & FlagCompressed) != 0; }
  bool IsIndexBlock() const;
  bool IsPoolBlock() const;
  bool IsStreamBlock() const { return !IsIndexBlock() && !IsPoolBlock(); }
};

// Not for use by several threads at once: reads share one file position,
// and the last inflated block is kept for the next range.
class Container {
 public:
  using BlockCallback = std::function<void(const BlockInfo&, const std::vector<unsigned char>&)>;

  // Fails with ReadError if the file cannot be read or its head and index
  // chain cannot be walked.
  static Container Open(const std::string& path);
  // Every violation of the format in the file at `path`, one line each;
  // also those that make Open fail. Empty for a sound file.
  static std::vector<std::string> Verify(const std::string& path);

  // Every violation found in the opened file, one line each.
  std::vector<std::string> Verify() const;

  const std::vector<BlockInfo>& Blocks() const { return blocks; }
  std::uint64_t FileLength() const { return fileLength; }
  // Names of the streams, in the order of their first blocks.
  std::vector<std::string> StreamNames() const;
  // Bytes of the stream before compression; 0 for an unknown name.
  std::uint64_t StreamLength(const std::string& name) const;
  // The whole stream, joined from its blocks, each checked to inflate to
  // exactly its stated length.
  std::vector<unsigned char> ReadStream(const std::string& name) const;
  // `length` bytes at `offset` of the stream; inflates only the blocks that
  // hold them, and keeps the last one, so that reading a stream's datasets
  // one after the other inflates each block once.
  std::vector<unsigned char> ReadStreamRange(const std::string& name, std::uint64_t offset,
                                             std::uint64_t length) const;
  // Calls `callback` with each block of the stream and its plain bytes, in
  // stream order.
  void ForEachStreamBlock(const std::string& name, const BlockCallback& callback) const;

  // The bytes of a block as they lie in the file, and as they were put.
  std::vector<unsigned char> ReadBlockBytes(const BlockInfo& block) const;
  std::vector<unsigned char> ReadBlockPlain(const BlockInfo& block) const;

 private:
  explicit Container(const std::string& path);

  std::vector<unsigned char> ReadAt(std::uint64_t offset, std::uint64_t count) const;
  void ReadHead();
  void WalkIndexes();
  // Checks an index block and returns its entries; empty if the chain
  // cannot be followed (the reason is recorded as fatal).
  std::vector<unsigned char> ReadChainedIndex(const BlockInfo& block);
  // `nameFieldPadded`: only zero bytes behind the name in its field.
  void CheckEntry(const BlockInfo& block, std::uint32_t nameSize, std::uint8_t reserved,
                  bool nameFieldPadded);
  std::vector<const BlockInfo*> StreamBlocks(const std::string& name) const;
  // A block of a stream and where its plain bytes stand in the stream.
  struct StreamPart {
    std::size_t block;
    std::uint64_t start, length;
  };
  // The parts of a stream, worked out on first use.
  const std::vector<StreamPart>& Parts(const std::string& name) const;
  const std::vector<unsigned char>& KeptPlain(std::size_t block) const;
  // The length before compression, from the block's first four bytes.
  std::uint64_t PlainLength(const BlockInfo& block) const;
  void CheckBlocks(std::vector<std::string>& lines) const;

  std::string path;
  std::shared_ptr<std::FILE> file;
  std::uint64_t fileLength = 0;
  std::vector<BlockInfo> blocks;
  std::vector<std::string> fatal;     // the walk cannot be trusted
  std::vector<std::string> problems;  // found while walking, not fatal
  mutable std::map<std::string, std::vector<StreamPart>> parts;
  mutable std::size_t keptBlock = SIZE_MAX;
  mutable std::vector<unsigned char> keptPlain;
};

}  // namespace DovReader

#endif
