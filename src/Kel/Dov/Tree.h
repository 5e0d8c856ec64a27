#ifndef DOVWRITER_KEL_DOV_TREE_H
#define DOVWRITER_KEL_DOV_TREE_H

// The scene tree with its file: owns the nodes, knows which named stream
// receives what, writes datasets while the tree is built and everything
// else when it is saved.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Kel/Adt/AdtTree.h"
#include "Kel/Dov/AttributeMap.h"
#include "Kel/Dov/Geometry.h"
#include "Kel/Dov/Group.h"
#include "Kel/Dov/Node.h"
#include "Kel/Dov/NumericArray.h"
#include "Kel/Dov/Shape.h"
#include "Kel/Tmf/TmFile.h"

namespace KelDov {

// Who wrote the file, and when.
struct GlobalInformation {
  bool includeMachineInfo = false;
  std::string applicationName;
  std::string applicationVersion;
  std::string formatVersion;
  std::string creationDate;
  std::string computerName;
  std::string userName;
  std::string comment;
};

// Stream names of a model file.
extern const std::string HeavyDataStream;         // "Heavy Data"
extern const std::string DovTreeStream;           // "Dov Tree"
extern const std::string LightDataStream;         // "Light Data"
extern const std::string AttributesStream;        // "Attributes"
extern const std::string ResourcesStream;         // "Resources"
extern const std::string GlobalInformationStream; // "Global Information"
extern const std::string ViewPointsStream;        // "View Points"

// Where the entries and datasets of one part stand in a file that several
// writers make together, each from a tree of its own: the first part's
// root is the file's root, and every part's top-level entries become its
// children, in part order.
struct PartPlacement {
  std::uint32_t entryShift = 0;   // added to every id but the root's
  // The part's "Heavy Data" goes to the file in pieces of whole datasets:
  // where each begins in the part's own stream, ascending from 0, and what
  // is added to the offsets of the datasets in it.
  struct HeavyPiece {
    std::uint64_t begin;
    std::uint64_t shift;
  };
  std::vector<HeavyPiece> heavyPieces;
  std::uint64_t HeavyOffset(std::uint64_t offset) const;
  std::uint32_t previousTop = 0;  // the last top-level entry of the parts in front; 0: none
  std::uint32_t nextTop = 0;      // the first top-level entry of the parts behind; 0: none
  std::uint32_t firstTop = 0;     // the root's first and last children in the whole file
  std::uint32_t lastTop = 0;
};

class Tree : public KelAdt::Tree<Node*> {
 public:
  Tree();
  virtual ~Tree();
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  // New child of the current entry, made current, holding a new node.
  void AddGroup(const std::string& name);
  void AddGroup(const std::string& name, bool visible);
  void AddGeometry(const std::string& name);

  // On the geometry of the current entry. Adding again under the same name
  // replaces type, array and offset and merges the attributes.
  VariableRef AddVariable(const std::string& name, Geometry::VariableType type,
                          std::uint64_t offset, const NumericArray& array,
                          const AttributeMap& attributes);
  void LinkVariable(const VariableRef& variable, const VariableRef& target);

  // Puts one dataset into "Heavy Data" in byte planes and returns its
  // offset in the stream; full blocks leave for the file at once.
  std::uint64_t WriteStreamDataset(const std::vector<std::uint32_t>& values, std::uint8_t width);
  std::uint64_t WriteStreamDataset(const std::vector<float>& values, std::uint8_t width);
  std::uint64_t WriteStreamDataset(const std::uint32_t* values, std::uint64_t count,
                                   std::uint8_t width);
  std::uint64_t WriteStreamDataset(const float* values, std::uint64_t count, std::uint8_t width);
  std::uint64_t WriteStreamDataset(const void* values, std::uint64_t count, std::uint8_t width);

  // Opens the file and writes its 12-byte head.
  void SetStreamFile(const std::string& path, bool overwrite);
  // Saves tree and global information, writes all blocks and the index,
  // closes the file.
  void Save(KelTmf::TmFile& file, const std::string& comment);
  void SaveTree(KelTmf::TmFile& file);
  // What Save does after SaveTree: global information, all blocks, index.
  void FinishSave(KelTmf::TmFile& file, const std::string& comment);
  // The records of the entries (without the root's unless `withRoot`) and
  // their contents, with `lightShift` added to their offsets into "Light
  // Data": the part of the tree streams that follows the parts in front.
  void SaveEntries(KelTmf::TmFile& file, std::uint64_t lightShift, bool withRoot);
  // Renumbers the entries and moves the dataset offsets to where `placement`
  // puts this part; links between entries of the part stay right.
  void RelocatePart(const PartPlacement& placement);
  // The first and last children of the root; 0 where it has none.
  std::uint32_t FirstTop() { return (*this)[RootId].firstChild; }
  std::uint32_t LastTop() { return (*this)[RootId].lastChild; }
  static constexpr std::uint32_t RootId = 1;
  void SaveGlobalInfo(KelTmf::TmFile& file, const std::string& comment);

  // Dates the file at `time` (seconds since 1970) instead of the moment
  // of the save: two writes of one scene then give the same bytes, which
  // is how tests compare ways of writing.
  void PinCreationTime(std::int64_t time) {
    creationTime = time;
    creationTimePinned = true;
  }

  KelTmf::TmFile& GetFile() { return file; }
  GlobalInformation& GetInformation() { return information; }
  const std::string& GetFormatVersion() const { return formatVersion; }

 protected:
  // Adds a child entry under the current one, makes it current and stores
  // `node` in it; the tree owns the node from then on.
  void AddNodeHolding(Node* node);
  // Reorders `count` values into "Heavy Data", whose blocks go through
  // zlib into the file as they fill where their place is known.
  template <class Values>
  std::uint64_t PutDataset(const Values& values, std::uint64_t count, std::uint8_t width);
  // The geometry of the current entry, or a code-5 failure under `method`.
  Geometry& CurrentGeometry(const char* method);

  std::uint8_t spareByte = 0;
  std::string formatVersion;
  std::vector<GlobalInformation> informationList;
  GlobalInformation information;
  KelTmf::TmFile file;
  std::vector<std::shared_ptr<void>> sharedList;
  std::int64_t creationTime = 0;
  bool creationTimePinned = false;
};

// Keys of variable attributes that describe how the host held its data, not
// the data: AddVariable never keeps them.
bool IsDroppedAttributeKey(const std::string& key);

// The framed records of a list of global information, whole in one block.
void PutGlobalInformation(KelTmf::Index& index, const std::string& stream,
                          const std::vector<GlobalInformation>& list);

}  // namespace KelDov

#endif
