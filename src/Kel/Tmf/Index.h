#ifndef DOVWRITER_KEL_TMF_INDEX_H
#define DOVWRITER_KEL_TMF_INDEX_H

// The table of all blocks of one container file, and the front through
// which everything is written: values are put under a stream name, and the
// index cuts each stream into numbered blocks, places them and finally
// writes the chained index areas.

#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Kel/Tmf/Block.h"
#include "Kel/Tmf/BlockCoding.h"

namespace KelTmf {

const std::uint32_t IndexEntrySize = 139;
const std::uint32_t IndexNameFieldSize = 128;
const std::uint32_t FirstIndexEntries = 20;
const std::uint32_t ChainedIndexEntries = 200;
const std::uint32_t DefaultBlockLimit = 0xC800000;
const std::uint8_t BlockFlagCompress = 1;
const std::uint8_t BlockFlagFreeze = 32;
const std::uint64_t FileHeadSize = 12;
const std::uint64_t FirstBlockPosition = 2800;

// Bookkeeping of one block; the stored part is its 139-byte index entry.
struct BlockRecord {
  std::uint8_t id = 0;
  std::string name;
  std::uint64_t position = 0;
  std::uint32_t size = 0;
  std::uint8_t flags = 0;
  std::uint8_t reserved = 0;
  bool frozen = false;
  bool bufferReset = false;
  std::uint32_t plainLength = 0;
};

class BlockPipeline;
class DeflatingBlock;
struct FinishedBlock;

struct BlockSizeLimiter {
  std::vector<std::uint64_t> blocks;
  std::uint32_t limit = DefaultBlockLimit;
};

class Index {
 public:
  Index();
  ~Index();
  Index(const Index&) = delete;
  Index& operator=(const Index&) = delete;

  std::uint64_t AddBlock(const std::string& name);
  std::uint64_t AllocateEmptyBlocks(std::uint64_t count);
  std::uint64_t AppendBlockRecord(const std::string& name);
  static bool IsEmptyBlockName(const std::string& name);
  static bool IsIndexBlockName(const std::string& name);
  BlockSizeLimiter& GetBlockSizeLimiter(const std::string& name);
  // The block that a put of `putBytes` goes into: the stream's last one if
  // it is open, below its limit and able to hold the put, else a new one.
  std::uint64_t SelectBlock(const std::string& name, std::uint64_t putBytes = 0);

  // Every put refuses a stream name that begins like one of the two
  // reserved block names (code 16), and a value larger than a block can
  // hold (code 1). A value that would carry the last block past that goes
  // into a new block instead.
  // raw(n) into the stream.
  void Put(const std::string& name, const void* data, std::uint64_t byteCount);
  // Typed puts; each value lies whole in one block.
  void Put(const std::string& name, bool value);
  void Put(const std::string& name, std::uint8_t value);
  void Put(const std::string& name, std::uint32_t value);
  void Put(const std::string& name, std::uint64_t value);
  void Put(const std::string& name, float value);
  void Put(const std::string& name, const std::string& value);
  // A string literal must not fall to the bool overload.
  void Put(const std::string& name, const char* value) { Put(name, std::string(value)); }
  void Put(const std::string& name, const std::vector<std::string>& values);
  void Put(const std::string& name, const std::vector<std::uint8_t>& values);
  void Put(const std::string& name, const std::vector<std::uint32_t>& values);
  void Put(const std::string& name, const std::vector<std::uint64_t>& values);

  // Puts a compound value that must lie whole in one block (a framed
  // record, a list of records, a dataset encoded in place): selects the
  // block once, checks it as a typed put does, and lets `encode` write
  // into it. `encode` must touch only that block: another put through the
  // index may add blocks and move the one it holds.
  template <class Encode>
  void PutRecord(const std::string& name, Encode&& encode) {
    Block& block = BlockForTypedPut(name, 0);
    encode(block);
  }

  // Puts a value of `byteCount` bytes, which `encode(out, begin, end)`
  // writes to `out` (bytes `begin` to `end` of the value), whole into one
  // block of `name`, like PutRecord, for a stream whose blocks the caller
  // will mark compressed before they are written. Where the block's place
  // in the file is known (every block in front of it is final), the value
  // is encoded into a staging buffer that serves put after put and goes
  // through zlib straight into `stream`: the block never holds its bytes,
  // and the file is the same as if it had. A stream cut evenly (see
  // CutEvenly) takes the value in as many pieces as it fills blocks.
  template <class Encode>
  void PutCompressed(const std::string& name, std::FILE* stream, std::uint64_t byteCount,
                     Encode&& encode) {
    if (!evenStream.empty() && name == evenStream)
      return PutAcrossBlocks(name, stream, byteCount, encode);
    const CompressedPut put = BeginCompressedPut(name, stream, byteCount);
    encode(put.out, 0, byteCount);
    if (put.staged) FeedStaged(byteCount);
  }
  typedef std::function<void(unsigned char* out, std::uint64_t begin, std::uint64_t end)>
      RangeEncoder;

  // From here to StopParallel(), compressed blocks are compressed by
  // `threads` threads (the caller's own included) while puts go on, and
  // written to `stream` in number order by the caller's thread; with
  // `coding.fast` through the faster encoder. The file is the one a
  // sequential write makes, for the fast coding but its compressed bytes.
  void StartParallel(unsigned threads, const BlockCoding& coding, std::FILE* stream);
  // Drops the blocks not written yet and ends every thread; also done by
  // the destructor.
  void StopParallel();
  // From now on the compressed puts of `name` are cut into blocks of
  // exactly `blockBytes` plain bytes (the last one excepted), a value
  // spanning as many blocks as it fills, and each full block leaves at
  // once. Meant for writing in parallel.
  void CutEvenly(const std::string& name, std::uint32_t blockBytes);
  // For the stream cut evenly (after CutEvenly), on the pipeline only: a
  // put that begins `blockCount` blocks' worth of bytes or more behind the
  // last cut sends the open block off first, so that the value starts a
  // new block. Each cut is kept as the number of the last block in front
  // of it: a run of whole values between two cuts can go to a place of
  // its own in the stream, as the parts of a file that several processes
  // write do.
  void CutPiecesEvery(std::uint32_t blockCount);
  std::vector<std::uint64_t> pieceEnds;
  // Told of every data block once it is in the file, with its plain length:
  // how a long write reports its progress. Index blocks are not reported.
  std::function<void(const BlockRecord& record, std::uint32_t plainLength)> blockWritten;
  // Set before StartParallel, the blocks that the pipeline finishes are
  // handed here in number order instead of being written: a part of a file
  // that several processes write keeps its blocks until their places in
  // the file are known. The block's bytes are valid during the call only.
  std::function<void(const FinishedBlock& block)> keepFinished;
  // Sends the open last block of `name` (marked compressed) to the pipeline
  // and returns once every block given is finished.
  void FinishStream(const std::string& name);
  // Sends the last block of `name`, if it is still open, to the pipeline,
  // marked with `flags`.
  void SubmitOpenBlock(const std::string& name, std::uint8_t flags);
  // Enters a block of `name` that was written by someone else: it takes the
  // number a put would give it, and its place by the position rule.
  std::uint64_t AdoptWrittenBlock(const std::string& name, std::uint32_t plainLength,
                                  std::uint32_t size, std::uint8_t flags);
  // The plain bytes of a stream whose blocks are all still in memory.
  std::vector<unsigned char> HeldStreamBytes(const std::string& name);

  // Off, every put is held in its block until the block is written: the
  // plain path, which the compressing one must match byte for byte.
  bool compressWhilePutting = true;

  std::uint64_t GetStreamLength(const std::string& name);
  void SetBlockFlags(const std::string& name, std::uint8_t flag);
  // Sets the size at which a stream's next put starts a new block. The
  // library itself keeps DefaultBlockLimit; tests and tuning use smaller.
  void SetBlockLimit(const std::string& name, std::uint32_t limit);
  // What one block can hold, for every stream: Block::MaxLength, which
  // tests make small instead of putting gigabytes.
  std::uint64_t blockCapacity = Block::MaxLength;

  void WriteBufferToFileStream(std::uint64_t number, std::FILE* stream);
  void WriteIndexBufferToFileStream(std::uint64_t number, std::FILE* stream);
  void FlushFrozen(std::FILE* stream);
  void WriteAllBuffersToFileStream(std::FILE* stream);

  // The position rule: block 0 lies right behind the first index, every
  // other block right behind its predecessor. Valid for a block once all
  // blocks in front of it are written (index blocks aside, whose size is
  // fixed from the start).
  std::uint64_t BlockPosition(std::uint64_t number);

  std::vector<BlockRecord> records;
  std::vector<Block> blocks;
  std::map<std::string, BlockSizeLimiter> limiters;
  std::uint8_t nextId = 1;
  std::uint64_t indexPosition = FileHeadSize;
  std::uint64_t indexSize = 0;

 private:
  Block& BlockForTypedPut(const std::string& name, std::uint64_t putBytes);
  // SelectBlock for a put of `putBytes`, failing with `code` and
  // `description` if the block can take no more bytes. A block being
  // compressed into the file takes only compressed puts.
  std::uint64_t SelectOpenBlock(const std::string& name, std::uint64_t putBytes, std::int32_t code,
                                const char* description, bool compressedPut = false);
  // Where a compressed put is encoded: into its block, or into the staging
  // buffer, from which it goes on to zlib.
  struct CompressedPut {
    unsigned char* out;
    bool staged;
  };
  CompressedPut BeginCompressedPut(const std::string& name, std::FILE* stream,
                                   std::uint64_t byteCount);
  void FeedStaged(std::uint64_t byteCount);
  void PutAcrossBlocks(const std::string& name, std::FILE* stream, std::uint64_t byteCount,
                       const RangeEncoder& encode);
  // Gives a block about to be filled a buffer from the pipeline, one that
  // served before where there is one: fresh memory costs more to fill.
  void ProvideBuffer(std::uint64_t number, std::uint64_t plainBytes);
  // Writes block `number` now, or, writing in parallel, hands it to the
  // pipeline, which writes it in turn.
  void WriteOrSubmit(std::uint64_t number, std::FILE* stream);
  // The pipeline's writing of a finished block, on the caller's thread.
  void WriteFinished(const FinishedBlock& block, std::FILE* stream);
  // The parts of a block's write that every way of writing shares, so that
  // the trace is the same whichever way: the first lines, and the end, once
  // the record has the block's stored size and place, with `write` putting
  // the bytes there.
  void LogWriteBegins(std::uint64_t number);
  void LogPlainLength(std::uint32_t plainLength);
  void EndBlockWrite(std::uint64_t number, bool compressed, std::uint32_t plainLength,
                     const std::function<void()>& write);
  bool IsDeflating(std::uint64_t number) const;
  // True if block `number` is still empty and its place in the file known.
  bool CanDeflateWhilePutting(std::uint64_t number, std::FILE* stream) const;
  void StartDeflating(std::uint64_t number, std::uint64_t position, std::FILE* stream);
  // Starts compressing a block held in memory into the file, if its place
  // can be taken; false leaves it to the path through memory.
  bool DeflateHeldBlock(std::uint64_t number, std::FILE* stream);
  // Ends the block being compressed into the file; it is left released,
  // with its stored length, and its record tells its size.
  void FinishDeflating(BlockRecord& record, Block& block);
  // The first batch of 20 pool blocks, with the first index's size.
  void AllocateFirstBatch();
  std::uint64_t TakeFromPool();
  // Turns pool block `number` into the index block of a new batch.
  void MakeIndexBlock(std::uint64_t number);
  // The records of the 200 blocks that index block `number` describes.
  std::vector<BlockRecord> ChainedEntries(std::uint64_t number) const;
  BlockRecord& RecordAt(std::uint64_t number, const char* method);
  // Written and frozen, or an index block (whose size never changes).
  bool IsFinal(std::uint64_t number) const;
  void WriteFirstIndex(std::FILE* stream);

  // The one block whose bytes are on their way through zlib into the file.
  std::unique_ptr<DeflatingBlock> deflating;
  // Where compressed puts are encoded; reused, grown to the largest put.
  Block staging;
  std::unique_ptr<BlockPipeline> parallel;
  std::string evenStream;
  std::uint32_t evenBlockBytes = 0;
  std::uint64_t evenPutBytes = 0;  // put into the even stream so far
  std::uint64_t pieceBytes = 0;
  std::uint64_t lastCut = 0;
};

}  // namespace KelTmf

#endif
