#ifndef DOVWRITER_MPI_MPIGROUP_H
#define DOVWRITER_MPI_MPIGROUP_H

// The collective steps of a part writer on MPI: the one place where the
// library calls MPI.

#include <DovWriter/ScenePart.h>
#include <mpi.h>

#include <deque>
#include <vector>

namespace Kel {
namespace Dov {

class MpiGroup : public PartGroup {
 public:
  // Collective: duplicates `comm`.
  explicit MpiGroup(MPI_Comm comm);
  ~MpiGroup() override;

  int rank() const override { return myRank; }
  int size() const override { return ranks; }
  void sumOverLower(std::uint64_t* values, int count) override;
  std::vector<std::uint64_t> gatherAll(const std::uint64_t* values, int count) override;
  std::vector<unsigned char> gatherAtFirst(const std::vector<unsigned char>& bytes) override;
  void broadcast(std::vector<unsigned char>& bytes, int from) override;
  std::string openShared(const char* path) override;
  std::string writeNow(const Piece& piece) override;
  std::string writeShared(const std::vector<Piece>& pieces) override;
  void closeShared() override;
  void tell(const std::uint64_t* values, int count) override;
  bool hear(int& from, std::uint64_t* values, int count, bool wait) override;

 private:
  // The first failure on any rank, as every rank's text; "" where none.
  std::string agreed(const std::string& failure);
  // Sets the open file's view to `pieces` and writes them all at once.
  std::string writePieces(const std::vector<Piece>& pieces);

  // Waits until every value told has been taken.
  void finishTelling();

  MPI_Comm comm = MPI_COMM_NULL;
  MPI_File file = MPI_FILE_NULL;
  // What tell() sent and MPI may still read, with the request of each send.
  struct Told {
    std::vector<std::uint64_t> values;
    std::vector<MPI_Request> requests;
  };
  std::deque<Told> told;
  int myRank = 0;
  int ranks = 1;
};

}  // namespace Dov
}  // namespace Kel

#endif
