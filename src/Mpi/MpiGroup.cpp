#include "Mpi/MpiGroup.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <thread>

#include <DovWriter/Exception.h>

namespace Kel {
namespace Dov {

namespace {

// What tell() sends; collective steps never match it.
const int TellTag = 7;

// MPI counts are ints: larger messages go in pieces.
const std::uint64_t LargestPiece = INT_MAX;

// A piece that one write cannot take.
const char* const TooLargePiece = "a block of 2 GiB or more";

// Asks `done` until it says yes, without holding a processor in between.
// The ranks of a machine share its cores with their compressing threads; a
// rank that waits for a slower one would otherwise spin on a core that the
// slower one needs.
template <class Done>
bool PollAsleep(Done&& done, bool wait) {
  for (;;) {
    if (done()) return true;
    if (!wait) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
}

void WaitAsleep(MPI_Request& request) {
  PollAsleep(
      [&] {
        int done = 0;
        MPI_Test(&request, &done, MPI_STATUS_IGNORE);
        return done != 0;
      },
      true);
}

int PieceCount(std::uint64_t left) { return static_cast<int>(std::min(left, LargestPiece)); }

void SendInPieces(const unsigned char* bytes, std::uint64_t count, int to, MPI_Comm comm) {
  for (std::uint64_t done = 0; done < count; done += LargestPiece)
    MPI_Send(bytes + done, PieceCount(count - done), MPI_BYTE, to, 0, comm);
}

void ReceiveInPieces(unsigned char* bytes, std::uint64_t count, int from, MPI_Comm comm) {
  for (std::uint64_t done = 0; done < count; done += LargestPiece)
    MPI_Recv(bytes + done, PieceCount(count - done), MPI_BYTE, from, 0, comm, MPI_STATUS_IGNORE);
}

std::string ErrorText(int code) {
  if (code == MPI_SUCCESS) return std::string();
  char text[MPI_MAX_ERROR_STRING];
  int length = 0;
  MPI_Error_string(code, text, &length);
  return std::string(text, length);
}

// Some MPI-IO layers report a failed write (a full disk, a file-size
// limit) only through the count of bytes written.
std::string ShortWrite(MPI_Status& status, std::uint64_t wanted) {
  MPI_Count written = 0;
  MPI_Get_elements_x(&status, MPI_BYTE, &written);
  if (written >= 0 && static_cast<std::uint64_t>(written) == wanted) return std::string();
  return "wrote " + std::to_string(written) + " of " + std::to_string(wanted) + " bytes";
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
  if (!finalized) MPI_Comm_free(&comm);
}

void MpiGroup::sumOverLower(std::uint64_t* values, int count) {
  const std::vector<std::uint64_t> own(values, values + count);
  MPI_Request request;
  MPI_Iexscan(own.data(), values, count, MPI_UINT64_T, MPI_SUM, comm, &request);
  WaitAsleep(request);
  // MPI leaves rank 0's result undefined.
  if (myRank == 0) std::fill(values, values + count, 0);
}

std::vector<std::uint64_t> MpiGroup::gatherAll(const std::uint64_t* values, int count) {
  std::vector<std::uint64_t> all(static_cast<std::size_t>(count) * ranks);
  MPI_Request request;
  MPI_Iallgather(values, count, MPI_UINT64_T, all.data(), count, MPI_UINT64_T, comm, &request);
  WaitAsleep(request);
  return all;
}

std::vector<unsigned char> MpiGroup::gatherAtFirst(const std::vector<unsigned char>& bytes) {
  // Sizes first, then each rank's bytes in turn: rank 0 takes them in rank
  // order, and no count or displacement has to fit an int.
  const std::uint64_t size = bytes.size();
  std::vector<std::uint64_t> sizes(myRank == 0 ? ranks : 0);
  MPI_Request request;
  MPI_Igather(&size, 1, MPI_UINT64_T, sizes.data(), 1, MPI_UINT64_T, 0, comm, &request);
  WaitAsleep(request);
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
  MPI_Request request;
  MPI_Ibcast(&size, 1, MPI_UINT64_T, from, comm, &request);
  WaitAsleep(request);
  bytes.resize(size);
  for (std::uint64_t done = 0; done < size; done += LargestPiece)
    MPI_Bcast(bytes.data() + done, PieceCount(size - done), MPI_BYTE, from, comm);
}

std::string MpiGroup::agreed(const std::string& failure) {
  const int first = firstFlagged(!failure.empty());
  if (first == ranks) return std::string();
  std::vector<unsigned char> text(failure.begin(), failure.end());
  broadcast(text, first);
  return "rank " + std::to_string(first) + ": " + std::string(text.begin(), text.end());
}

std::string MpiGroup::openShared(const char* path) {
  // Files report failures to the caller (MPI's default for files); every
  // step is agreed on before the next collective one, so that no rank
  // waits for one that has given up.
  const std::string failure =
      agreed(ErrorText(MPI_File_open(comm, path, MPI_MODE_WRONLY, MPI_INFO_NULL, &file)));
  if (!failure.empty()) closeShared();
  return failure;
}

std::string MpiGroup::writeNow(const Piece& piece) {
  if (piece.count > LargestPiece) return TooLargePiece;
  MPI_Status status;
  const int code = MPI_File_write_at(file, static_cast<MPI_Offset>(piece.position), piece.bytes,
                                     static_cast<int>(piece.count), MPI_BYTE, &status);
  return code != MPI_SUCCESS ? ErrorText(code) : ShortWrite(status, piece.count);
}

std::string MpiGroup::writeShared(const std::vector<Piece>& pieces) {
  std::string failure;
  for (const Piece& piece : pieces)
    if (piece.count > LargestPiece) failure = TooLargePiece;
  failure = agreed(failure);
  if (failure.empty()) failure = agreed(writePieces(pieces));
  finishTelling();
  const std::string closing = agreed(ErrorText(MPI_File_close(&file)));
  return failure.empty() ? closing : failure;
}

void MpiGroup::closeShared() {
  finishTelling();
  if (file != MPI_FILE_NULL) MPI_File_close(&file);
}

void MpiGroup::tell(const std::uint64_t* values, int count) {
  // Sends that are done give their memory back as new ones go out.
  while (!told.empty()) {
    int done = 0;
    MPI_Testall(static_cast<int>(told.front().requests.size()), told.front().requests.data(),
                &done, MPI_STATUSES_IGNORE);
    if (!done) break;
    told.pop_front();
  }
  told.emplace_back();
  Told& message = told.back();
  message.values.assign(values, values + count);
  for (int to = 0; to < ranks; ++to) {
    if (to == myRank) continue;
    message.requests.emplace_back();
    MPI_Isend(message.values.data(), count, MPI_UINT64_T, to, TellTag, comm,
              &message.requests.back());
  }
}

bool MpiGroup::hear(int& from, std::uint64_t* values, int count, bool wait) {
  MPI_Status status;
  const bool arrived = PollAsleep(
      [&] {
        int any = 0;
        MPI_Iprobe(MPI_ANY_SOURCE, TellTag, comm, &any, &status);
        return any != 0;
      },
      wait);
  if (!arrived) return false;
  from = status.MPI_SOURCE;
  MPI_Recv(values, count, MPI_UINT64_T, from, TellTag, comm, MPI_STATUS_IGNORE);
  return true;
}

void MpiGroup::finishTelling() {
  for (Told& message : told)
    MPI_Waitall(static_cast<int>(message.requests.size()), message.requests.data(),
                MPI_STATUSES_IGNORE);
  told.clear();
}

std::string MpiGroup::writePieces(const std::vector<Piece>& pieces) {
  // One type for where the pieces go in the file and one for where they lie
  // in memory: a single collective write takes them all.
  const int count = static_cast<int>(pieces.size());
  std::vector<int> lengths(count);
  std::vector<MPI_Aint> places(count), addresses(count);
  for (int i = 0; i < count; ++i) {
    lengths[i] = static_cast<int>(pieces[i].count);
    places[i] = static_cast<MPI_Aint>(pieces[i].position);
    MPI_Get_address(pieces[i].bytes, &addresses[i]);
  }
  MPI_Datatype inFile, inMemory;
  MPI_Type_create_hindexed(count, lengths.data(), places.data(), MPI_BYTE, &inFile);
  MPI_Type_create_hindexed(count, lengths.data(), addresses.data(), MPI_BYTE, &inMemory);
  MPI_Type_commit(&inFile);
  MPI_Type_commit(&inMemory);
  char native[] = "native";
  std::string failure =
      ErrorText(MPI_File_set_view(file, 0, MPI_BYTE, inFile, native, MPI_INFO_NULL));
  MPI_Status status;
  const int code = MPI_File_write_all(file, failure.empty() ? MPI_BOTTOM : nullptr,
                                      failure.empty() ? 1 : 0, inMemory, &status);
  if (failure.empty()) failure = ErrorText(code);
  if (failure.empty()) {
    std::uint64_t total = 0;
    for (const Piece& piece : pieces) total += piece.count;
    failure = ShortWrite(status, total);
  }
  MPI_Type_free(&inFile);
  MPI_Type_free(&inMemory);
  return failure;
}

}  // namespace Dov
}  // namespace Kel
