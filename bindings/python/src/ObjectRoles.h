#ifndef DOVPYTHON_OBJECTROLES_H
#define DOVPYTHON_OBJECTROLES_H

// What the module keeps of each object of a scene beyond what the library
// reports: the roles an array object plays, the element type it holds and
// its "Dimension". The library stores an array of any element type but
// reads only 32-bit floats or unsigned integers, and only some of them per
// role; an array that its role cannot read is left out of the file without
// a word. These records let the module refuse that at the call that would
// cause it.

#include <cstdint>
#include <string>
#include <vector>

namespace DovPython {

enum Role : unsigned {
  CoordinatesRole = 1u << 0,
  ConnectivityRole = 1u << 1,
  PolylengthRole = 1u << 2,
  NodeIdsRole = 1u << 3,
  ElementSetRole = 1u << 4,
  ElementIdsRole = 1u << 5,
  ResultRole = 1u << 6
};

enum class Element { None, Float32, Uint32 };

struct ObjectFacts {
  int dimension = -1;  // -1: never set, which the library reads as 1
  unsigned roles = 0;
  Element stored = Element::None;
};

class ObjectRoles {
 public:
  void Add() { facts.emplace_back(); }
  // The index must be one of an object this scene made.
  ObjectFacts& operator[](std::uint64_t index) { return facts[index]; }

  // Throws TypeError unless the object may take `role` besides its roles so
  // far and the values it holds.
  void Admit(std::uint64_t index, Role role) const;
  // Throws TypeError unless values of `element` suit the object's roles.
  void CheckElement(std::uint64_t index, Element element) const;
  // What the object's roles take: "float32", "uint32" or "any".
  std::string Takes(std::uint64_t index) const;

 private:
  std::vector<ObjectFacts> facts;
};

}  // namespace DovPython

#endif
