// Closing one part of a file that several processes write together. Each
// process builds its own tree and compresses its own "Heavy Data" into
// blocks, in pieces of whole datasets that lie in the file round by round
// (PartPieces.h). The processes tell each other the size of every piece
// they finish, and each writes its blocks as soon as their places are
// known; what is left when all are done goes in one collective write.
// Prefix sums over the processes tell each where its entries stand; the
// tree records and the sizes of the blocks, which are small, go to rank 0,
// which writes the tree, the index and the rest, as a single writer would.

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <new>

#include "Kel/Tmf/BlockPipeline.h"
#include "Kel/Tmf/BlockPlaces.h"
#include "Kel/Util/Raise.h"
#include "ObjectManager/Diagnostics.h"
#include "ObjectManager/ObjectManager.h"
#include "ObjectManager/PartPieces.h"

namespace Kel {
namespace Dov {

namespace {

const char* const SaveToMethod = "Kel::Dov::Scene_V2Part::saveTo";
const char* const CloseFileMethod = "Kel::Dov::Scene_V2Part::closeFile";

// The tree streams that a part's entries fill, in the order in which their
// bytes travel to rank 0.
const std::string* const PartStreams[] = {&KelDov::DovTreeStream, &KelDov::LightDataStream,
                                          &KelDov::AttributesStream, &KelDov::ResourcesStream};

// A failure as it travels between ranks: its code, then its description.
std::vector<unsigned char> EncodeFailure(const std::exception_ptr& failure) {
  std::int32_t code = 16;
  std::string text = "unknown failure";
  try {
    std::rethrow_exception(failure);
  } catch (const Kel::Util::Exception& caught) {
    code = caught.GetCode();
    text = caught.GetDescription();
  } catch (const std::bad_alloc&) {
    code = 0;
    text = "Memory Allocation Error";
  } catch (const std::exception& caught) {
    text = caught.what();
  } catch (...) {
  }
  std::vector<unsigned char> bytes(sizeof code);
  std::memcpy(bytes.data(), &code, sizeof code);
  bytes.insert(bytes.end(), text.begin(), text.end());
  return bytes;
}

// Every rank learns whether a step failed anywhere; if it did, every rank
// throws: the lowest failing rank its own failure, the others its code and
// text. So no rank goes on to a collective step that another has left.
void Agree(PartGroup& group, const std::exception_ptr& failure, const char* method) {
  const int first = group.firstFlagged(static_cast<bool>(failure));
  if (first == group.size()) return;
  std::vector<unsigned char> bytes;
  if (first == group.rank()) bytes = EncodeFailure(failure);
  group.broadcast(bytes, first);
  if (first == group.rank()) std::rethrow_exception(failure);
  std::int32_t code = 16;
  if (bytes.size() >= sizeof code) std::memcpy(&code, bytes.data(), sizeof code);
  const std::string description(bytes.begin() + std::min(bytes.size(), sizeof code), bytes.end());
  const std::string text = "rank " + std::to_string(first) + " of " +
                           std::to_string(group.size()) + " failed: " + description;
  KEL_RAISE(code, text.c_str(), method);
}

template <class Step>
void Collectively(PartGroup& group, const char* method, Step&& step) {
  std::exception_ptr failure;
  try {
    step();
  } catch (...) {
    failure = std::current_exception();
  }
  Agree(group, failure, method);
}

std::exception_ptr WriteFailure(const std::string& path, const std::string& reason) {
  try {
    const std::string text = "Unable to write to file \"" + path + "\": " + reason;
    KEL_RAISE(10, text.c_str(), CloseFileMethod);
  } catch (...) {
    return std::current_exception();
  }
}

// What a part brings to the file's tree; summed over the parts in front
// of it, where its own begins.
enum PartCount { Entries, LightBytes, PartCounts };
// What every rank tells every other of its root: the ids of its first and
// last top-level entries in the file, and what decides the root's mark.
enum PartEnd { FirstTop, LastTop, EntryCount, ComponentCount, MeshCount, PartEnds };

// A piece of "Heavy Data" is about this many blocks: the last writes after
// all are done are one piece's, and each piece adds at most one short block.
const std::uint32_t BlocksPerPiece = 16;
const std::size_t MostKeptBlocks = 4 * BlocksPerPiece;

// What the ranks tell each other while they compress: a piece finished,
// and then that they are done, or have failed.
enum NoteKind { PieceDone, PartDone, PartFailed };
enum NoteValue { Kind, Blocks, Stored, Plain, NoteValues };

struct KeptBlock {
  std::uint32_t plainLength = 0;
  std::uint8_t flags = 0;
  std::uint64_t size = 0;
  std::size_t piece = 0;
  std::uint64_t blockInPiece = 0;
  std::uint64_t storedInPiece = 0;
  const unsigned char* bytes = nullptr;  // in KeptBytes; none once in the file
};

void Append(std::vector<unsigned char>& out, std::uint64_t value) {
  for (int i = 0; i < 8; ++i) out.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

// Reads what Append wrote, from a message that this library made itself.
std::uint64_t Take(const unsigned char*& in) {
  std::uint64_t value = 0;
  for (int i = 0; i < 8; ++i) value |= static_cast<std::uint64_t>(in[i]) << (8 * i);
  in += 8;
  return value;
}

}  // namespace

class PartClose {
 public:
  PartClose(ObjectManager& scene, PartGroup& group)
      : scene(scene), group(group), me(group.rank()), table(group.size()) {}

  void run() {
    Collectively(group, CloseFileMethod, [&] { check(); });
    const std::string failure = group.openShared(scene.fileName.c_str());
    if (!failure.empty()) std::rethrow_exception(WriteFailure(scene.fileName, failure));
    try {
      runOnOpenFile();
    } catch (...) {
      // Every rank comes here at the same step: each failure is agreed on.
      group.closeShared();
      throw;
    }
  }

 private:
  void check() {
    scene.refuseCloseInState();
    if (scene.options.encoding != Encoding::Fast)
      KEL_RAISE(16, "closeFile: a file written by several processes takes the Fast encoding "
                    "only (setWriteOptions)", CloseFileMethod);
  }

  void runOnOpenFile() {
    buildAndTell();
    place();
    std::vector<unsigned char> part;
    Collectively(group, CloseFileMethod, [&] {
      scene.RelocatePart(placement);
      part = pack();
    });
    std::vector<unsigned char> parts = group.gatherAtFirst(part);
    part = std::vector<unsigned char>();
    Collectively(group, CloseFileMethod, [&] {
      if (me == 0) compose(parts);
    });
    parts = std::vector<unsigned char>();
    writeBlocks();
    Collectively(group, CloseFileMethod, [&] {
      if (me == 0)
        scene.explainingFailures("closeFile", false,
                                 [&] { scene.FinishSave(shared, std::string()); });
    });
    scene.endClose(*progress);
  }

  // The build, then the end of this rank's telling; then every other
  // rank's notes, to their end, while writing what they place. Only then
  // are the ranks agreed on whether all went well: a rank that fails still
  // tells the others, so none waits for it.
  void buildAndTell() {
    std::exception_ptr failure;
    try {
      build();
      if (current.blocks != 0) finishPiece();
    } catch (...) {
      failure = std::current_exception();
    }
    tellNote(failure ? PartFailed : PartDone, PieceSize());
    table.end(me);
    if (failure) failed = true;
    while (!table.allEnded()) {
      hearOne(true);
      if (failed) continue;
      try {
        writePlaceable();
      } catch (...) {
        failure = std::current_exception();
        failed = true;
      }
    }
    Agree(group, failure, CloseFileMethod);
  }

  // The walk from the root, with the blocks of numbers compressed by the
  // rank's threads, and the length of its tree records measured.
  void build() {
    progress = scene.beginBuilding();
    KelTmf::Index& index = scene.GetFile().index;
    index.keepFinished = [&](const KelTmf::FinishedBlock& block) { keep(index, block); };
    {
      const ObjectManager::ParallelWrite parallel(scene);
      // One rank alone writes what a single writer writes.
      if (group.size() > 1) index.CutPiecesEvery(BlocksPerPiece);
      scene.explainingFailures("closeFile", false, [&] {
        scene.buildTree();
        index.FinishStream(KelDov::HeavyDataStream);
      });
    }
    KelTmf::TmFile scratch;
    scene.SaveEntries(scratch, 0, me == 0);
    counts[Entries] = scene.size() - 1;
    counts[LightBytes] = scratch.index.GetStreamLength(KelDov::LightDataStream);
  }

  // A block as the pipeline finishes it, in number order: to the file at
  // once where its place is known, else kept.
  void keep(KelTmf::Index& index, const KelTmf::FinishedBlock& block) {
    const KelTmf::BlockRecord& record = index.records[block.number];
    KeptBlock kept{block.plainLength, record.flags, block.size, table.count(me),
                   current.blocks, current.stored, nullptr};
    hearAll();
    if (!failed) writePlaceable();
    std::uint64_t position = 0;
    const bool now = !failed && unwritten == blocks.size() && placeOf(kept, position);
    if (now)
      write(position, block.bytes, block.size);
    else if (!failed)
      kept.bytes = keptBytes.keep(block.bytes, block.size);
    blocks.push_back(kept);
    if (now) ++unwritten;
    // A rank far ahead of the others waits for them rather than keep all
    // it makes: its memory stays bounded, and where ranks share cores the
    // waiting rank's core serves the others.
    while (!failed && blocks.size() - unwritten > MostKeptBlocks && !table.othersEnded(me) &&
           hearOne(true))
      writePlaceable();
    current.add(PieceSize{1, block.size, block.plainLength});
    if (index.blockWritten) index.blockWritten(record, block.plainLength);
    const std::vector<std::uint64_t>& ends = index.pieceEnds;
    if (table.count(me) < ends.size() && ends[table.count(me)] == block.number) finishPiece();
  }

  void finishPiece() {
    table.add(me, current);
    tellNote(PieceDone, current);
    current = PieceSize();
  }

  void tellNote(NoteKind kind, const PieceSize& size) {
    const std::uint64_t note[NoteValues] = {kind, size.blocks, size.stored, size.plain};
    group.tell(note, NoteValues);
  }

  bool hearOne(bool wait) {
    int from = 0;
    std::uint64_t note[NoteValues];
    if (!group.hear(from, note, NoteValues, wait)) return false;
    if (note[Kind] == PieceDone)
      table.add(from, PieceSize{note[Blocks], note[Stored], note[Plain]});
    else
      table.end(from);
    // Another rank's failure fails the file: nothing more is written.
    if (note[Kind] == PartFailed) failed = true;
    return true;
  }

  void hearAll() {
    while (hearOne(false)) {
    }
  }

  // The pieces in front of piece `round` of this rank, once all are known.
  // Pieces are placed in order, and a place once known stays, so each is
  // worked out once.
  bool frontOf(std::size_t round, PieceSize& front) {
    while (fronts.size() <= round) {
      if (!table.before(me, fronts.size(), front)) return false;
      fronts.push_back(front);
    }
    front = fronts[round];
    return true;
  }

  // Where a block goes, once the pieces in front of its piece are known.
  bool placeOf(const KeptBlock& block, std::uint64_t& position) {
    PieceSize front;
    if (!frontOf(block.piece, front)) return false;
    position = KelTmf::DataBlockPosition(front.blocks + block.blockInPiece,
                                         front.stored + block.storedInPiece);
    return true;
  }

  void write(std::uint64_t position, const unsigned char* bytes, std::uint64_t size) {
    const std::string failure = group.writeNow({position, bytes, size});
    if (!failure.empty()) std::rethrow_exception(WriteFailure(scene.fileName, failure));
  }

  // Writes the kept blocks whose places have become known, in order.
  void writePlaceable() {
    std::uint64_t position = 0;
    while (unwritten < blocks.size() && placeOf(blocks[unwritten], position)) {
      write(position, blocks[unwritten].bytes, blocks[unwritten].size);
      blocks[unwritten++].bytes = nullptr;
    }
    if (unwritten == blocks.size()) keptBytes.reuse();
  }

  // Where this part's tree stands: its shifts from the prefix sums, its
  // pieces of "Heavy Data" from the table, and its neighbours in the chain
  // of top-level entries from every rank's ends.
  void place() {
    std::copy(counts, counts + PartCounts, before);
    group.sumOverLower(before, PartCounts);
    placement.entryShift = static_cast<std::uint32_t>(before[Entries]);
    std::uint64_t begin = 0;
    for (std::size_t round = 0; round < table.count(me); ++round) {
      PieceSize front;
      frontOf(round, front);
      placement.heavyPieces.push_back({begin, front.plain - begin});
      begin += table.at(me, round).plain;
    }
    const LinkList components = scene.readLinks(scene.root, "Components");
    std::uint64_t meshes = 0;
    for (std::uint64_t component : components)
      if (scene.objects[component].type == MeshObject) ++meshes;
    const std::uint64_t ends[PartEnds] = {shifted(scene.FirstTop()), shifted(scene.LastTop()),
                                          counts[Entries], components.size(), meshes};
    const std::vector<std::uint64_t> all = group.gatherAll(ends, PartEnds);
    std::uint64_t allComponents = 0, allMeshes = 0;
    totalEntries = 1;
    for (int rank = 0; rank < group.size(); ++rank) {
      const std::uint64_t* end = &all[PartEnds * rank];
      totalEntries += end[EntryCount];
      allComponents += end[ComponentCount];
      allMeshes += end[MeshCount];
      if (end[FirstTop] == 0) continue;
      if (placement.firstTop == 0) placement.firstTop = static_cast<std::uint32_t>(end[FirstTop]);
      placement.lastTop = static_cast<std::uint32_t>(end[LastTop]);
      if (rank < me) placement.previousTop = static_cast<std::uint32_t>(end[LastTop]);
      if (rank > me && placement.nextTop == 0)
        placement.nextTop = static_cast<std::uint32_t>(end[FirstTop]);
    }
    // The one root marks, as a root of its own would, several components
    // of which one is a mesh.
    if (auto root = dynamic_cast<KelDov::Group*>(scene[KelDov::Tree::RootId].value))
      root->rootFlag = allComponents >= 2 && allMeshes != 0 ? 1 : 0;
  }

  std::uint64_t shifted(std::uint32_t id) const { return id == 0 ? 0 : id + before[Entries]; }

  // The message to rank 0: the sizes of the blocks, then (but from rank 0
  // itself) the part's bytes of each tree stream.
  std::vector<unsigned char> pack() {
    if (before[Entries] + counts[Entries] >= std::numeric_limits<std::uint32_t>::max())
      KEL_RAISE(1, "closeFile: more tree entries than 32-bit ids can tell", CloseFileMethod);
    std::vector<unsigned char> out;
    for (const KeptBlock& block : blocks) {
      Append(out, block.plainLength);
      Append(out, block.size);
      Append(out, block.flags);
    }
    if (me == 0) return out;
    KelTmf::TmFile scratch;
    scene.SaveEntries(scratch, before[LightBytes], false);
    for (const std::string* stream : PartStreams) {
      const std::vector<unsigned char> bytes = scratch.index.HeldStreamBytes(*stream);
      Append(out, bytes.size());
      out.insert(out.end(), bytes.begin(), bytes.end());
    }
    return out;
  }

  // Rank 0: the index of every rank's blocks, piece by piece in file
  // order, then the tree streams, rank 0's entries saved here and every
  // other rank's appended as they came.
  void compose(const std::vector<unsigned char>& parts) {
    shared.stream = scene.GetFile().stream;
    scene.GetFile().stream = nullptr;
    std::fflush(shared.stream);
    // The rest is compressed as a single writer compresses it.
    scene.startParallelWrite(shared);
    KelTmf::Index& index = shared.index;
    const unsigned char* in = parts.data();
    std::vector<const unsigned char*> blockSizes, streams;
    for (int rank = 0; rank < group.size(); ++rank) {
      blockSizes.push_back(in);
      std::uint64_t blockCount = 0;
      for (std::size_t round = 0; round < table.count(rank); ++round)
        blockCount += table.at(rank, round).blocks;
      in += 24 * blockCount;
      if (rank == 0) continue;
      streams.push_back(in);
      for (std::size_t stream = 0; stream < 4; ++stream) {
        const std::uint64_t length = Take(in);
        in += length;
      }
    }
    table.inFileOrder([&](int rank, std::size_t round) {
      for (std::uint64_t block = 0; block < table.at(rank, round).blocks; ++block) {
        const std::uint64_t plainLength = Take(blockSizes[rank]), size = Take(blockSizes[rank]),
                            flags = Take(blockSizes[rank]);
        index.AdoptWrittenBlock(KelDov::HeavyDataStream, static_cast<std::uint32_t>(plainLength),
                                static_cast<std::uint32_t>(size), static_cast<std::uint8_t>(flags));
      }
    });
    index.Put(KelDov::DovTreeStream, static_cast<std::uint32_t>(totalEntries));
    scene.SaveEntries(shared, 0, true);
    for (const unsigned char* part : streams)
      for (const std::string* stream : PartStreams) {
        const std::uint64_t length = Take(part);
        if (length != 0) index.Put(*stream, part, length);
        part += length;
      }
  }

  // What is left of every rank's blocks, all in one collective write; their
  // memory goes once they are in the file.
  void writeBlocks() {
    std::vector<PartGroup::Piece> pieces;
    // Every rank has ended: every place is known.
    std::uint64_t position = 0;
    for (const KeptBlock& block : blocks)
      if (block.bytes != nullptr && placeOf(block, position))
        pieces.push_back({position, block.bytes, block.size});
    const std::string failure = group.writeShared(pieces);
    keptBytes.release();
    Agree(group, failure.empty() ? std::exception_ptr() : WriteFailure(scene.fileName, failure),
          CloseFileMethod);
  }

  ObjectManager& scene;
  PartGroup& group;
  const int me;
  std::unique_ptr<CloseProgress> progress;
  PieceTable table;
  std::vector<PieceSize> fronts;   // of this rank's pieces whose places are known
  PieceSize current;               // of the piece being compressed
  std::vector<KeptBlock> blocks;   // every block of this rank, in order
  std::size_t unwritten = 0;       // the first of them not in the file
  bool failed = false;             // here or on another rank: nothing more is written
  KeptBytes keptBytes;
  std::uint64_t counts[PartCounts] = {};
  std::uint64_t before[PartCounts] = {};
  std::uint64_t totalEntries = 0;
  KelDov::PartPlacement placement;
  KelTmf::TmFile shared;  // rank 0: the file, with the index of every rank's blocks
};

void ObjectManager::saveToAsPart(PartGroup& group, const char* path, bool overwrite) {
  const FileState state = fileState;
  const std::string name = fileName;
  try {
    Collectively(group, SaveToMethod, [&] {
      if (group.rank() == 0) {
        saveTo(path, overwrite);
      } else {
        bindPath(path);
        fileState = FileState::Bound;
      }
    });
  } catch (...) {
    // Bound on every rank or on none.
    fileState = state;
    fileName = name;
    throw;
  }
}

void ObjectManager::refusePartAlone(const char* operation) const {
  if (!partOfGroup) return;
  const std::string text = std::string(operation) +
                           " through a base handle of a part scene: its collective form "
                           "(Scene_V2Part, Scene_V2Mpi) writes the file together with the others";
  KEL_RAISE(16, text.c_str(), operation);
}

void ObjectManager::closeFileAsPart(PartGroup& group, const char* path) {
  // A closeFile that some ranks ignore and others take would leave them
  // waiting for each other.
  const std::uint64_t ignored = path == nullptr || fileName != path;
  const std::vector<std::uint64_t> all = group.gatherAll(&ignored, 1);
  const auto ignoring = std::count(all.begin(), all.end(), 1u);
  if (ignoring == group.size()) return explainIgnoredClose(path);
  if (ignoring != 0)
    KEL_RAISE(16, "closeFile: the ranks name different files; nothing was written",
              CloseFileMethod);
  PartClose(*this, group).run();
}

}  // namespace Dov
}  // namespace Kel
