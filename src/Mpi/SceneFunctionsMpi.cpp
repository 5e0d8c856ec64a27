// The C interface's MPI scene: made here, handled by the C interface of the
// core library from then on.

#include <DovWriter/DovWriterMpi.h>
#include <DovWriter/dovwriter_mpi.h>

int dov_scene_create_mpi(MPI_Fint comm, const char* title, dov_scene** scene) {
  return Kel::Dov::makeCScene(
      [&] { return new Kel::Dov::Scene_V2Mpi(MPI_Comm_f2c(comm), title); }, scene);
}
