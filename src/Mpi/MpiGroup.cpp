#include "Mpi/MpiGroup.h"

#include <algorithm>
#include <climits>

#include <DovWriter/Exception.h>

namespace Kel {
namespace Dov {

namespace {

// MPI counts are ints: larger messages go in pieces.
const std::uint64_t LargestPiece = INT_MAX;

int Piece(std::uint64_t left) { return static_cast<int>(std::min(left, LargestPiece)); }

void SendInPieces(const unsigned char* bytes, std::uint64_t count, int to, MPI_Comm comm) {
  for (std::uint64_t done = 0; done < count; done += LargestPiece)
    MPI_Send(bytes + done, Piece(count - done), MPI_BYTE, to, 0, comm);
}

void ReceiveInPieces(unsigned char* bytes, std::uint64_t count, int from, MPI_Comm comm) {
  for (std::uint64_t done = 0; done < count; done += LargestPiece)
    MPI_Recv(bytes + done, Piece(count - done), MPI_BYTE, from, 0, comm, MPI_STATUS_IGNORE);
}

std::string ErrorText(int code) {
  if (code == MPI_SUCCESS) return std::string();
  char text[MPI_MAX_ERROR_STRING];
  int length = 0;
  MPI_Error_string(code, text, &length);
  return std::string(text, length);
}

}  // namespace

MpiGroup::MpiGroup(MPI_Comm from) {
  int initialized = 0;
  MPI_Initialized(&initialized);
  if (!initialized)
    throw Kel::Util::Exception(19, "Scene_V2Mpi before MPI_Init", __FILE__, __LINE__,
                               "Kel::Dov::Scene_V2Mpi::Scene_V2Mpi");
  MPI_Comm_dup(from, &comm);
  MPI_Comm_rank(comm, &myRank);
  MPI_Comm_size(comm, &ranks);
}

MpiGroup::~MpiGroup() {
  int finalized = 0;
  MPI_Finalized(&finalized);
  if (finalized) return;
  if (file != MPI_FILE_NULL) MPI_File_close(&file);
  MPI_Comm_free(&comm);
}

void MpiGroup::sumOverLower(std::uint64_t* values, int count) {
  const std::vector<std::uint64_t> own(values, values + count);
  MPI_Exscan(own.data(), values, count, MPI_UINT64_T, MPI_SUM, comm);
  // MPI leaves rank 0's result undefined.
  if (myRank == 0) std::fill(values, values + count, 0);
}

std::vector<std::uint64_t> MpiGroup::gatherAll(const std::uint64_t* values, int count) {
  std::vector<std::uint64_t> all(static_cast<std::size_t>(count) * ranks);
  MPI_Allgather(values, count, MPI_UINT64_T, all.data(), count, MPI_UINT64_T, comm);
  return all;
}

std::vector<unsigned char> MpiGroup::gatherAtFirst(const std::vector<unsigned char>& bytes) {
  // Sizes first, then each rank's bytes in turn: rank 0 takes them in rank
  // order, and no count or displacement has to fit an int.
  const std::uint64_t size = bytes.size();
  std::vector<std::uint64_t> sizes(myRank == 0 ? ranks : 0);
  MPI_Gather(&size, 1, MPI_UINT64_T, sizes.data(), 1, MPI_UINT64_T, 0, comm);
  if (myRank != 0) {
    SendInPieces(bytes.data(), size, 0, comm);
    return std::vector<unsigned char>();
  }
  std::uint64_t total = 0;
  for (std::uint64_t part : sizes) total += part;
  std::vector<unsigned char> all(total);
  std::copy(bytes.begin(), bytes.end(), all.begin());
  std::uint64_t at = size;
  for (int from = 1; from < ranks; ++from) {
    ReceiveInPieces(all.data() + at, sizes[from], from, comm);
    at += sizes[from];
  }
  return all;
}

void MpiGroup::broadcast(std::vector<unsigned char>& bytes, int from) {
  std::uint64_t size = bytes.size();
  MPI_Bcast(&size, 1, MPI_UINT64_T, from, comm);
  bytes.resize(size);
  for (std::uint64_t done = 0; done < size; done += LargestPiece)
    MPI_Bcast(bytes.data() + done, Piece(size - done), MPI_BYTE, from, comm);
}

std::string MpiGroup::openShared(const char* path) {
  // Files report failures to the caller (MPI's default for files), which
  // turns them into one failure of every rank.
  return ErrorText(MPI_File_open(comm, path, MPI_MODE_WRONLY, MPI_INFO_NULL, &file));
}

std::string MpiGroup::writeAtAll(std::uint64_t position, const unsigned char* bytes,
                                 std::uint64_t count) {
  if (count > LargestPiece) return "a block of more than 2 GiB";
  MPI_Status status;
  const int code = MPI_File_write_at_all(file, static_cast<MPI_Offset>(position), bytes,
                                         static_cast<int>(count), MPI_BYTE, &status);
  if (code != MPI_SUCCESS) return ErrorText(code);
  int written = 0;
  MPI_Get_count(&status, MPI_BYTE, &written);
  return static_cast<std::uint64_t>(written) == count ? std::string() : "a short write";
}

std::string MpiGroup::closeShared() {
  if (file == MPI_FILE_NULL) return std::string();
  return ErrorText(MPI_File_close(&file));
}

}  // namespace Dov
}  // namespace Kel
