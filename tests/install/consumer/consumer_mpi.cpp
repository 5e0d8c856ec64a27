// A host of the installed MPI library: one rank (started alone, without
// mpirun) writes an empty scene through Scene_V2Mpi.
#include <DovWriter/DovWriterMpi.h>
#include <unistd.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  int status = 0;
  try {
    Kel::Dov::Scene_V2Mpi scene(MPI_COMM_WORLD, "installed");
    scene.createDefaultViews(scene.createObject(Kel::Dov::GroupObject));
    Kel::Dov::WriteOptions options;
    options.encoding = Kel::Dov::Encoding::Fast;
    scene.setWriteOptions(options);
    const std::string path = "/tmp/dovwriter_consumer_mpi_" + std::to_string(getpid()) + ".dov";
    scene.saveTo(path.c_str(), nullptr, false, true);
    scene.closeFile(path.c_str());
    std::printf("wrote and removed %s\n", path.c_str());
    std::remove(path.c_str());
  } catch (const Kel::Util::Exception& error) {
    std::fprintf(stderr, "%s", error.what());
    status = 1;
  }
  MPI_Finalize();
  return status;
}
