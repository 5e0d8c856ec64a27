#include "Diff.h"

#include <Kel/Util/Coding.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <map>
#include <set>

#include "ValueNames.h"

namespace DovInspect {

bool Tolerance::Same(double a, double b) const {
  if (a == b || (std::isnan(a) && std::isnan(b))) return true;
  return std::fabs(a - b) <= absolute + relative * std::max(std::fabs(a), std::fabs(b));
}

namespace {

std::string Quoted(const std::string& text) { return "\"" + Readable(text) + "\""; }

std::string NumberText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.9g", value);
  return text;
}

class Differ {
 public:
  Differ(ModelFile& a, ModelFile& b, const Tolerance& tolerance)
      : a_(a), b_(b), tolerance_(tolerance) {}

  std::vector<std::string> Run() {
    CompareInformation();
    CompareTree();
    return lines_;
  }

 private:
  void Differs(const std::string& where, const std::string& what) {
    lines_.push_back(where + ": " + what);
  }

  void CompareText(const std::string& where, const std::string& field, const std::string& x,
                   const std::string& y) {
    if (x != y) Differs(where, field + " " + Quoted(x) + " vs " + Quoted(y));
  }

  void CompareNumbers(const std::string& where, const std::string& field, const float* x,
                      const float* y, int count) {
    for (int i = 0; i < count; ++i) {
      if (tolerance_.Same(x[i], y[i])) continue;
      Differs(where, field + "[" + std::to_string(i) + "] " + NumberText(x[i]) + " vs " +
                         NumberText(y[i]));
    }
  }

  void CompareInformation() {
    const DovReader::GlobalInformation& x = a_.Scene().Information();
    const DovReader::GlobalInformation& y = b_.Scene().Information();
    const std::string where = "information";
    CompareText(where, "record version", x.version, y.version);
    CompareText(where, "application", x.applicationName, y.applicationName);
    CompareText(where, "application version", x.applicationVersion, y.applicationVersion);
    CompareText(where, "format version", x.formatVersion, y.formatVersion);
    CompareText(where, "computer", x.computerName, y.computerName);
    CompareText(where, "user", x.userName, y.userName);
    CompareText(where, "comment", x.comment, y.comment);
  }

  // Entries are matched by id: the same model written twice gives the same
  // ids in the same order.
  void CompareTree() {
    const std::vector<DovReader::TreeRecord>& xs = a_.Scene().Records();
    const std::vector<DovReader::TreeRecord>& ys = b_.Scene().Records();
    if (xs.size() != ys.size()) {
      Differs("tree", std::to_string(xs.size()) + " vs " + std::to_string(ys.size()) + " entries");
    }
    std::map<std::uint32_t, const DovReader::TreeRecord*> others;
    for (const DovReader::TreeRecord& y : ys) others[y.id] = &y;
    for (const DovReader::TreeRecord& x : xs) {
      auto found = others.find(x.id);
      if (found == others.end()) {
        Differs(Where(x), "only in the first file");
        continue;
      }
      CompareEntry(x, *found->second);
      others.erase(found);
    }
    for (const auto& rest : others) {
      Differs("[" + std::to_string(rest.first) + "] " + Readable(b_.PathOf(rest.first)),
              "only in the second file");
    }
  }

  std::string Where(const DovReader::TreeRecord& x) const {
    return "[" + std::to_string(x.id) + "] " + Readable(a_.PathOf(x.id));
  }

  void CompareEntry(const DovReader::TreeRecord& x, const DovReader::TreeRecord& y) {
    const std::string where = Where(x);
    if (x.parent != y.parent) {
      Differs(where, "parent " + std::to_string(x.parent) + " vs " + std::to_string(y.parent));
    }
    CompareText(where, "name", x.name, y.name);
    CompareText(where, "type", x.typeName, y.typeName);
    CompareText(where, "version", x.version, y.version);
    if (x.typeName != y.typeName) return;
    if (x.group && y.group) CompareGroup(where, *x.group, *y.group);
    if (x.material && y.material) CompareMaterial(where, *x.material, *y.material);
    if (x.typeName == "Geometry") CompareGeometry(x, y);
  }

  void CompareGroup(const std::string& where, const DovReader::GroupContent& x,
                    const DovReader::GroupContent& y) {
    CompareNumbers(where, "translation", x.translation, y.translation, 3);
    CompareNumbers(where, "rotation", x.rotation, y.rotation, 4);
    CompareNumbers(where, "scale", x.scale, y.scale, 3);
    if (x.rootFlag != y.rootFlag) Differs(where, "root flag differs");
    CompareAttributes(where, x.attributes, y.attributes);
  }

  static bool SameAttribute(const DovReader::Attribute& a, const DovReader::Attribute& b) {
    return a.key == b.key && a.kind == b.kind && a.word == b.word && a.longWord == b.longWord &&
           a.text == b.text;
  }

  // Equal lists are the same whatever keys they repeat; otherwise each key
  // is looked up in the other list.
  void CompareAttributes(const std::string& where, const DovReader::AttributeList& x,
                         const DovReader::AttributeList& y) {
    if (std::equal(x.entries.begin(), x.entries.end(), y.entries.begin(), y.entries.end(),
                   SameAttribute)) {
      return;
    }
    for (const DovReader::Attribute& attribute : x.entries) {
      const DovReader::Attribute* other = y.Find(attribute.key);
      const std::string field = "attribute " + Quoted(attribute.key);
      if (!other) {
        Differs(where, field + " only in the first file");
      } else if (!SameAttribute(attribute, *other)) {
        Differs(where, field + " differs");
      }
    }
    for (const DovReader::Attribute& attribute : y.entries) {
      if (!x.Find(attribute.key)) {
        Differs(where, "attribute " + Quoted(attribute.key) + " only in the second file");
      }
    }
  }

  void CompareMaterial(const std::string& where, const DovReader::MaterialContent& x,
                       const DovReader::MaterialContent& y) {
    if (x.visible != y.visible) Differs(where, "visibility differs");
    CompareNumbers(where, "diffuse", x.diffuse, y.diffuse, 4);
    CompareNumbers(where, "ambient", x.ambient, y.ambient, 4);
    CompareNumbers(where, "specular", x.specular, y.specular, 4);
    CompareNumbers(where, "emissive", x.emissive, y.emissive, 4);
  }

  static std::map<std::uint32_t, GeometryInfo> ById(const ModelFile& model) {
    std::map<std::uint32_t, GeometryInfo> geometries;
    for (GeometryInfo& geometry : model.Geometries()) {
      geometries.emplace(geometry.entryId, std::move(geometry));
    }
    return geometries;
  }

  // Variables are matched by name; how a file shares a dataset (a link or
  // a copy) is no difference, only the values are.
  void CompareGeometry(const DovReader::TreeRecord& x, const DovReader::TreeRecord& y) {
    if (geometriesA_.empty()) geometriesA_ = ById(a_);
    if (geometriesB_.empty()) geometriesB_ = ById(b_);
    // A name that stands twice is matched in order of its occurrences.
    std::map<std::string, std::deque<const VariableInfo*>> ys;
    for (const VariableInfo& variable : geometriesB_.at(y.id).variables) {
      ys[variable.name].push_back(&variable);
    }
    for (const VariableInfo& variable : geometriesA_.at(x.id).variables) {
      const std::string where = Where(x) + " " + Readable(variable.name);
      std::deque<const VariableInfo*>& others = ys[variable.name];
      if (others.empty()) {
        Differs(where, "only in the first file");
        continue;
      }
      CompareVariable(where, x.id, variable, y.id, *others.front());
      others.pop_front();
    }
    for (const auto& rest : ys) {
      for (std::size_t i = 0; i < rest.second.size(); ++i) {
        Differs(Where(x) + " " + Readable(rest.first), "only in the second file");
      }
    }
  }

  void CompareVariable(const std::string& where, std::uint32_t entryA, const VariableInfo& x,
                       std::uint32_t entryB, const VariableInfo& y) {
    if (x.type != y.type) {
      Differs(where, "type " + std::to_string(x.type) + " vs " + std::to_string(y.type));
    }
    if (x.dataType != y.dataType || x.width != y.width || x.count != y.count) {
      Differs(where, "element type, width or count " + std::to_string(x.dataType) + "/" +
                         std::to_string(x.width) + "/" + std::to_string(x.count) + " vs " +
                         std::to_string(y.dataType) + "/" + std::to_string(y.width) + "/" +
                         std::to_string(y.count));
      return;
    }
    if (x.count == 0 || !compared_.insert({x.offset, y.offset}).second) return;
    CompareValues(where, a_.Words(entryA, x.index), b_.Words(entryB, y.index), x.dataType);
  }

  double Number(std::uint32_t word, std::uint8_t dataType) const {
    return dataType == kFloatData ? double(Kel::Util::BitsToFloat(word)) : double(word);
  }

  void CompareValues(const std::string& where, const std::vector<std::uint32_t>& xs,
                     const std::vector<std::uint32_t>& ys, std::uint8_t dataType) {
    std::uint64_t differing = 0, worst = 0;
    double largest = -1;
    for (std::size_t i = 0; i < xs.size() && i < ys.size(); ++i) {
      const double x = Number(xs[i], dataType), y = Number(ys[i], dataType);
      if (tolerance_.Same(x, y)) continue;
      ++differing;
      const double distance = std::isnan(x - y) ? INFINITY : std::fabs(x - y);
      if (distance > largest) {
        largest = distance;
        worst = i;
      }
    }
    if (differing == 0) return;
    Differs(where, std::to_string(differing) + " of " + std::to_string(xs.size()) +
                       " values differ, most at [" + std::to_string(worst) +
                       "]: " + NumberText(Number(xs[worst], dataType)) + " vs " +
                       NumberText(Number(ys[worst], dataType)));
  }

  ModelFile& a_;
  ModelFile& b_;
  const Tolerance tolerance_;
  std::map<std::uint32_t, GeometryInfo> geometriesA_, geometriesB_;
  std::set<std::pair<std::uint64_t, std::uint64_t>> compared_;  // dataset offsets
  std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> DiffModels(ModelFile& a, ModelFile& b, const Tolerance& tolerance) {
  return Differ(a, b, tolerance).Run();
}

}  // namespace DovInspect
