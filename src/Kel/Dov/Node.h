#ifndef DOVWRITER_KEL_DOV_NODE_H
#define DOVWRITER_KEL_DOV_NODE_H

#include <cstdint>
#include <string>

namespace KelDov {

// Base of every node of the scene tree. Each class tells its type name and
// version; both stand in the file ahead of the node's content.
class Node {
 public:
  explicit Node(const std::string& name) : name(name) {}
  virtual ~Node() = default;
  virtual std::string TypeName() const { return "Node"; }
  virtual std::string Version() const { return "0.1"; }
  std::uint8_t GetSpareByte() const { return spareByte; }

  std::string name;
  std::uint8_t spareByte = 0;
  std::uint8_t secondSpareByte = 0;
  std::uint32_t spareWord = 0;
};

}  // namespace KelDov

#endif
