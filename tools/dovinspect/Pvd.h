#ifndef DOVINSPECT_PVD_H
#define DOVINSPECT_PVD_H

// The .pvd collection that ties the exported pieces together: one data set
// per geometry (the part) and time step.

#include <ostream>
#include <string>
#include <vector>

namespace DovInspect {

struct PvdDataSet {
  double time = 0;
  unsigned part = 0;
  std::string file;  // relative to the .pvd
};

// `notes` become XML comments ahead of the collection, e.g. which text
// instance value each time step stands for.
void WritePvd(std::ostream& out, const std::vector<PvdDataSet>& dataSets,
              const std::vector<std::string>& notes);

}  // namespace DovInspect

#endif
