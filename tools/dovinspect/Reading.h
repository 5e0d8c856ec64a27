#ifndef DOVINSPECT_READING_H
#define DOVINSPECT_READING_H

// A model file opened for the commands: the container, the scene read from
// it, and the geometries in the form the commands use. Values are fetched
// one variable at a time, so that "Heavy Data" is never inflated whole; the
// container keeps the last block it inflated for the next variable.

#include <string>
#include <vector>

#include "Model.h"
#include "reader/Container.h"
#include "reader/Scene.h"

namespace DovInspect {

const std::size_t kMaxShownPath = 4096;

class ModelFile : public ValueSource {
 public:
  // Throws DovReader::ReadError if the container or the scene is unreadable.
  explicit ModelFile(const std::string& path);
  ModelFile(const ModelFile&) = delete;
  ModelFile& operator=(const ModelFile&) = delete;

  const std::string& FilePath() const { return path_; }
  const DovReader::Container& Container() const { return container_; }
  const DovReader::Scene& Scene() const { return scene_; }

  // Names from the root down to the entry, joined by '/'. A path longer
  // than kMaxShownPath bytes shows only its end, behind ".../", so that the
  // paths of a deep tree take space in proportion to its entries.
  std::string PathOf(std::uint32_t entryId) const;
  std::uint32_t DepthOf(std::uint32_t entryId) const { return scene_.Depth(entryId); }
  std::vector<GeometryInfo> Geometries() const;

  // One variable's values as 32-bit words (floats by their bits), links
  // followed and byte planes undone.
  std::vector<std::uint32_t> Words(std::uint32_t entryId, std::size_t variableIndex) override;

 private:
  std::string path_;
  DovReader::Container container_;
  DovReader::Scene scene_;
};

// The geometries that `selector` names: "#<entry id>", a path, or a path
// prefix (all geometries below a group). An empty selector names all.
std::vector<GeometryInfo> SelectGeometries(const std::vector<GeometryInfo>& all,
                                           const std::string& selector);
// "no geometry at 'SELECTOR'", with the closest paths of `all`.
std::string NoGeometryAt(const std::vector<GeometryInfo>& all, const std::string& selector);

}  // namespace DovInspect

#endif
