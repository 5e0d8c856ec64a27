#include "Kel/Dov/FramedRecord.h"
#include "Kel/Dov/Tree.h"
#include "Kel/Log/Log.h"
#include "Platform/Platform.h"

namespace KelDov {

namespace {

const char* const TreeFormatVersion = "1.1";
const char* const GlobalInformationVersion = "0.1";
const char* const CreationDateFormat = "%a %b %d %H:%M:%S %Y %Z";

// Fields 1 to 6 of a tree record: the entry's id and its five links.
void PutTreeLinks(KelTmf::Index& index, const KelAdt::TreeEntry<Node*>& entry) {
  index.Put(DovTreeStream, entry.id);
  index.Put(DovTreeStream, entry.parent);
  index.Put(DovTreeStream, entry.previousSibling);
  index.Put(DovTreeStream, entry.nextSibling);
  index.Put(DovTreeStream, entry.firstChild);
  index.Put(DovTreeStream, entry.lastChild);
}

// The node's content, in the streams its class uses. Nodes of other classes
// store nothing beyond their tree record.
void PutNodeContent(KelTmf::TmFile& file, const Node& node) {
  const std::string typeName = node.TypeName();
  if (typeName == "Group") {
    if (auto group = dynamic_cast<const Group*>(&node))
      WriteGroup(file.index, *group, LightDataStream, AttributesStream);
  } else if (typeName == "Shape") {
    if (auto shape = dynamic_cast<const Shape*>(&node))
      PutMaterial(file.index, ResourcesStream, shape->material);
  } else if (typeName == "Geometry") {
    if (auto geometry = dynamic_cast<const Geometry*>(&node))
      geometry->WriteTm(file, LightDataStream, HeavyDataStream, AttributesStream);
  }
}

void PutInformationFields(KelTmf::Block& block, const GlobalInformation& information) {
  block.Put(information.applicationName);
  block.Put(information.applicationVersion);
  block.Put(information.formatVersion);
  block.Put(information.creationDate);
  block.Put(information.computerName);
  block.Put(information.userName);
  block.Put(information.comment);
}

}  // namespace

void PutGlobalInformation(KelTmf::Index& index, const std::string& stream,
                          const std::vector<GlobalInformation>& list) {
  index.PutRecord(stream, [&](KelTmf::Block& block) {
    block.Put(static_cast<std::uint32_t>(list.size()));
    for (const GlobalInformation& information : list)
      PutFramedRecord(block, GlobalInformationVersion,
                      [&](KelTmf::Block& b) { PutInformationFields(b, information); });
  });
}

void Tree::SetStreamFile(const std::string& path, bool overwrite) {
  KEL_LOG(1000, "KelDov::Tree::SetStreamFile", "Setting dov file \"" << path << "\"");
  file.OpenFileForWriting(path, overwrite);
  formatVersion = TreeFormatVersion;
  // The head goes straight to the file, at offset 0 of the freshly opened
  // stream; the index keeps the 12 bytes free for it.
  file.WriteHead();
}

void Tree::Save(KelTmf::TmFile& file, const std::string& comment) {
  SaveTree(file);
  FinishSave(file, comment);
}

void Tree::FinishSave(KelTmf::TmFile& file, const std::string& comment) {
  SaveGlobalInfo(file, comment);
  for (const std::string* name : {&HeavyDataStream, &DovTreeStream, &LightDataStream,
                                  &AttributesStream, &ResourcesStream, &GlobalInformationStream,
                                  &ViewPointsStream})
    file.index.SetBlockFlags(*name, KelTmf::BlockFlagCompress);
  file.index.WriteAllBuffersToFileStream(file.stream);
  file.CloseFile();
}

void Tree::SaveTree(KelTmf::TmFile& file) {
  KEL_LOG(1000, "KelDov::Tree::SaveTree", "Saving dov tree ... ");
  KelTmf::Index& index = file.index;
  index.Put(DovTreeStream, static_cast<std::uint32_t>(entries.size()));
  SaveEntries(file, 0, true);
  KEL_LOG(1000, "KelDov::Tree::SaveTree", "Dov tree saved. ");
}

void Tree::SaveEntries(KelTmf::TmFile& file, std::uint64_t lightShift, bool withRoot) {
  KelTmf::Index& index = file.index;
  // Entry by entry, each node's content right after its record: this walk
  // is what keeps "Attributes" and "Resources", which carry no offsets, in
  // step with the tree.
  for (const auto& item : entries) {
    const Entry& entry = item.second;
    if (!withRoot && entry.id == RootId) continue;
    const Node* node = entry.value;
    PutTreeLinks(index, entry);
    index.Put(DovTreeStream, node ? node->name : std::string());
    index.Put(DovTreeStream, node ? node->TypeName() : std::string());
    index.Put(DovTreeStream, node ? node->Version() : std::string());
    index.Put(DovTreeStream, lightShift + index.GetStreamLength(LightDataStream));
    if (node) PutNodeContent(file, *node);
  }
}

void Tree::SaveGlobalInfo(KelTmf::TmFile& file, const std::string& comment) {
  KEL_LOG(1000, "KelDov::Tree::SaveGlobalInfo", "Saving global information ...");
  information.creationDate = Platform::LocalTimeText(
      CreationDateFormat, creationTimePinned ? creationTime : Platform::Now());
  information.formatVersion = formatVersion;
  if (information.includeMachineInfo) {
    information.computerName = Platform::ComputerName();
    information.userName = Platform::UserName();
  }
  information.comment = comment;
  informationList.push_back(information);
  PutGlobalInformation(file.index, GlobalInformationStream, informationList);
  file.index.SetBlockFlags(GlobalInformationStream, KelTmf::BlockFlagCompress);
  KEL_LOG(1000, "KelDov::Tree::SaveGlobalInfo", "Global information saved.");
}

}  // namespace KelDov
