#ifndef DOVWRITER_MPI_MPIGROUP_H
#define DOVWRITER_MPI_MPIGROUP_H

// The collective steps of a part writer on MPI: the one place where the
// library calls MPI.

#include <DovWriter/ScenePart.h>
#include <mpi.h>

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
  std::string writeShared(const char* path, const std::vector<Piece>& pieces) override;

 private:
  // The first failure on any rank, as every rank's text; "" where none.
  std::string agreed(const std::string& failure);
  // Sets the file's view to `pieces` and writes them all at once.
  std::string writePieces(MPI_File file, const std::vector<Piece>& pieces);

  MPI_Comm comm = MPI_COMM_NULL;
  int myRank = 0;
  int ranks = 1;
};

}  // namespace Dov
}  // namespace Kel

#endif
