#ifndef DOVWRITER_C_INTERFACE_MPI_H
#define DOVWRITER_C_INTERFACE_MPI_H

/* The C interface's scene of one file written by all ranks of an MPI job,
 * from the MPI library (link DovWriter::Mpi, or pkg-config dovwriter-mpi).
 * Everything else is in dovwriter.h. */

#include <mpi.h>

#include "dovwriter.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Collective over `comm`, a communicator as MPI_Comm_c2f gives it (or a
 * Fortran handle): a scene of interface version 2 whose dov_save_to and
 * dov_close_file are collective, with the same path on every rank; the file
 * holds the components of every rank's root, in rank order, under rank 0's
 * root. Free it with dov_scene_free, before MPI_Finalize. */
DOVWRITER_API int dov_scene_create_mpi(MPI_Fint comm, const char* title, dov_scene** scene);

#ifdef __cplusplus
}
#endif

#endif
