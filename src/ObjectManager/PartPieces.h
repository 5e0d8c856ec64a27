#ifndef DOVWRITER_OBJECTMANAGER_PARTPIECES_H
#define DOVWRITER_OBJECTMANAGER_PARTPIECES_H

// How the "Heavy Data" of the parts of a file that several processes write
// lies in the file. Each part cuts its stream into pieces of whole
// datasets, and the pieces lie round by round: in each round the next
// piece of every part that still has one, in rank order. A part can place
// a piece once every piece in front of it is known: the first rank's first
// piece at once, the others' about as soon as the ranks in front have
// compressed as much. So no part holds its compressed blocks until every
// part in front of it is done, and the last writes after the compressing
// are one piece's, not a whole part's.

#include <cstdint>
#include <vector>

namespace Kel {
namespace Dov {

struct PieceSize {
  std::uint64_t blocks = 0;  // data blocks
  std::uint64_t stored = 0;  // their bytes in the file
  std::uint64_t plain = 0;   // their bytes in the stream
  void add(const PieceSize& other) {
    blocks += other.blocks;
    stored += other.stored;
    plain += other.plain;
  }
};

class PieceTable {
 public:
  explicit PieceTable(int parts) : pieces(parts), ended(parts, false) {}

  // The next piece of `part`.
  void add(int part, const PieceSize& size) { pieces[part].push_back(size); }
  // `part` has no more pieces.
  void end(int part) { ended[part] = true; }
  bool allEnded() const;
  bool othersEnded(int part) const;
  std::size_t count(int part) const { return pieces[part].size(); }
  const PieceSize& at(int part, std::size_t round) const { return pieces[part][round]; }

  // The pieces in front of piece `round` of `part`, added up into `sum`;
  // false while one of them is not known yet.
  bool before(int part, std::size_t round, PieceSize& sum) const;

  // Calls visit(part, round) for every piece in file order.
  template <class Visit>
  void inFileOrder(Visit&& visit) const {
    for (std::size_t round = 0;; ++round) {
      bool any = false;
      for (std::size_t part = 0; part < pieces.size(); ++part)
        if (round < pieces[part].size()) {
          visit(static_cast<int>(part), round);
          any = true;
        }
      if (!any) return;
    }
  }

 private:
  std::vector<std::vector<PieceSize>> pieces;
  std::vector<bool> ended;
};

// The stored forms of a part's blocks, kept until their places are known,
// one behind the other in large chunks prepared for filling: fresh memory
// taken page by page costs a good part of what compressing costs, so once
// everything kept is in the file the chunks serve again.
class KeptBytes {
 public:
  const unsigned char* keep(const unsigned char* bytes, std::uint64_t size);
  // Everything kept is in the file: the memory serves again.
  void reuse();
  void release();

 private:
  std::vector<std::vector<unsigned char>> chunks;
  std::size_t filling = 0;
};

}  // namespace Dov
}  // namespace Kel

#endif
