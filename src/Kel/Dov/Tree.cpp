#include "Kel/Dov/Tree.h"

#include "Platform/Platform.h"

namespace KelDov {

const std::string HeavyDataStream("Heavy Data");
const std::string DovTreeStream("Dov Tree");
const std::string LightDataStream("Light Data");
const std::string AttributesStream("Attributes");
const std::string ResourcesStream("Resources");
const std::string GlobalInformationStream("Global Information");
const std::string ViewPointsStream("View Points");

Tree::Tree() {
  // Default colours are drawn from the process-wide generator; every new
  // scene starts the sequence again so that its colours are reproducible.
  Platform::SeedRandom(0);
}

Tree::~Tree() {
  for (auto& entry : entries) delete entry.second.value;
}

}  // namespace KelDov
