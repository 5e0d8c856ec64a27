#ifndef DOVINSPECT_DIFF_H
#define DOVINSPECT_DIFF_H

// What differs between two model files: the global information (not the
// creation date, which differs between any two writes), the tree entries
// with their names, groups and materials, each geometry's variables, and
// their values within a tolerance.

#include <string>
#include <vector>

#include "Reading.h"

namespace DovInspect {

// Two numbers a and b are the same if |a - b| <= atol + rtol * max(|a|, |b|),
// or if both are NaN.
struct Tolerance {
  double relative = 0.0;
  double absolute = 0.0;
  bool Same(double a, double b) const;
};

// One line per difference; empty if the models are the same. The values of
// a dataset are read once, however many variables link to it.
std::vector<std::string> DiffModels(ModelFile& a, ModelFile& b, const Tolerance& tolerance);

}  // namespace DovInspect

#endif
