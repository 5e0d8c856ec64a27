#ifndef DOVWRITER_KEL_DOV_SHAPE_H
#define DOVWRITER_KEL_DOV_SHAPE_H

#include <string>

#include "Kel/Dov/Material.h"
#include "Kel/Dov/Node.h"

namespace KelDov {

// Gives what lies below it an appearance; stores nothing but its material.
class Shape : public Node {
 public:
  explicit Shape(const std::string& name) : Node(name) {}
  std::string TypeName() const override { return "Shape"; }
  std::string Version() const override { return "0.2"; }

  Material material;
};

}  // namespace KelDov

#endif
