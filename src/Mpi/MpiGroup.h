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
  std::string openShared(const char* path) override;
  std::string writeAtAll(std::uint64_t position, const unsigned char* bytes,
                         std::uint64_t count) override;
  std::string closeShared() override;

 private:
  MPI_Comm comm = MPI_COMM_NULL;
  MPI_File file = MPI_FILE_NULL;
  int myRank = 0;
  int ranks = 1;
};

}  // namespace Dov
}  // namespace Kel

#endif
