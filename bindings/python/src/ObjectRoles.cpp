#include "ObjectRoles.h"

#include <pybind11/pybind11.h>

namespace DovPython {

namespace {

const unsigned FloatRoles = CoordinatesRole;
const unsigned IntegerRoles = ConnectivityRole | PolylengthRole | NodeIdsRole | ElementSetRole;

const char* RoleName(unsigned role) {
  switch (role) {
    case CoordinatesRole:
      return "coordinates";
    case ConnectivityRole:
      return "connectivity";
    case PolylengthRole:
      return "a polylength";
    case NodeIdsRole:
      return "node ids";
    case ElementSetRole:
      return "an element set";
    case ElementIdsRole:
      return "element ids";
    default:
      return "a result";
  }
}

const char* ValuesOf(unsigned role) {
  if (role & FloatRoles) return "float32";
  if (role & IntegerRoles) return "uint32";
  return "float32 or uint32";
}

// The role that decides what the object takes, if any, else the first.
unsigned Deciding(unsigned roles) {
  unsigned first = 0;
  for (unsigned role = 1; role <= ResultRole; role <<= 1) {
    if ((roles & role) == 0) continue;
    if (role & (FloatRoles | IntegerRoles)) return role;
    if (first == 0) first = role;
  }
  return first;
}

// "connectivity (uint32 values)"
std::string Described(unsigned roles) {
  const unsigned role = Deciding(roles);
  return std::string(RoleName(role)) + " (" + ValuesOf(role) + " values)";
}

bool Fits(unsigned roles, Element element) {
  if (element == Element::Float32) return (roles & IntegerRoles) == 0;
  if (element == Element::Uint32) return (roles & FloatRoles) == 0;
  return true;
}

const char* ElementName(Element element) {
  return element == Element::Float32 ? "float32" : "uint32";
}

}  // namespace

void ObjectRoles::Admit(std::uint64_t index, Role role) const {
  const ObjectFacts& object = facts[index];
  const unsigned roles = object.roles | role;
  const std::string start =
      "object " + std::to_string(index) + " cannot serve as " + Described(role);
  if ((roles & FloatRoles) && (roles & IntegerRoles))
    throw pybind11::type_error(start + ": it serves as " + Described(object.roles) + " already");
  if (!Fits(roles, object.stored))
    throw pybind11::type_error(start + ": it holds " + ElementName(object.stored) +
                               " values; set its values again as " + ValuesOf(role));
}

void ObjectRoles::CheckElement(std::uint64_t index, Element element) const {
  const ObjectFacts& object = facts[index];
  if (!Fits(object.roles, element))
    throw pybind11::type_error("object " + std::to_string(index) + " cannot hold " +
                               ElementName(element) + " values: it serves as " +
                               Described(object.roles));
}

std::string ObjectRoles::Takes(std::uint64_t index) const {
  const unsigned role = Deciding(facts[index].roles);
  return role & (FloatRoles | IntegerRoles) ? ValuesOf(role) : "any";
}

}  // namespace DovPython
