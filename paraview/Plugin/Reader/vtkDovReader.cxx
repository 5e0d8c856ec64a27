#include "vtkDovReader.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "reader/Model.h"
#include "vtkCellArray.h"
#include "vtkCellData.h"
#include "vtkCommand.h"
#include "vtkCompositeDataSet.h"
#include "vtkDataArraySelection.h"
#include "vtkFieldData.h"
#include "vtkFloatArray.h"
#include "vtkIdTypeArray.h"
#include "vtkInformation.h"
#include "vtkInformationVector.h"
#include "vtkMultiBlockDataSet.h"
#include "vtkObjectFactory.h"
#include "vtkPointData.h"
#include "vtkPoints.h"
#include "vtkStreamingDemandDrivenPipeline.h"
#include "vtkStringArray.h"
#include "vtkUnsignedCharArray.h"
#include "vtkUnsignedIntArray.h"
#include "vtkUnstructuredGrid.h"

using DovReader::Association;
using DovReader::FieldInfo;
using DovReader::kNoStep;
using DovReader::Model;
using DovReader::ModelPiece;

class vtkDovReader::Internals {
 public:
  std::unique_ptr<Model> model;
  std::string openedFile;
};

vtkStandardNewMacro(vtkDovReader);

namespace {

vtkSmartPointer<vtkDataArray> ResultArray(Model& model, const FieldInfo& field) {
  const std::vector<std::uint32_t> words = model.Values(field.entryId, field.index);
  vtkSmartPointer<vtkDataArray> array;
  if (field.isFloat)
    array = vtkSmartPointer<vtkFloatArray>::New();
  else
    array = vtkSmartPointer<vtkUnsignedIntArray>::New();
  array->SetName(field.name.c_str());
  array->SetNumberOfComponents(static_cast<int>(field.components));
  array->SetNumberOfTuples(static_cast<vtkIdType>(words.size() / field.components));
  // Both element types are four bytes: floats travel by their bits.
  std::copy(words.begin(), words.begin() + array->GetNumberOfValues(),
            static_cast<std::uint32_t*>(array->GetVoidPointer(0)));
  return array;
}

vtkSmartPointer<vtkPoints> MakePoints(const DovReader::PointSet& points) {
  vtkNew<vtkFloatArray> xyz;
  xyz->SetNumberOfComponents(3);
  xyz->SetNumberOfTuples(static_cast<vtkIdType>(points.Count()));
  std::copy(points.xyz.begin(), points.xyz.end(), xyz->GetPointer(0));
  auto result = vtkSmartPointer<vtkPoints>::New();
  result->SetData(xyz);
  return result;
}

vtkSmartPointer<vtkIdTypeArray> MakeNodeIds(const DovReader::PointSet& points) {
  auto ids = vtkSmartPointer<vtkIdTypeArray>::New();
  ids->SetName("Node Ids");
  ids->SetNumberOfTuples(static_cast<vtkIdType>(points.nodeIds.size()));
  std::copy(points.nodeIds.begin(), points.nodeIds.end(), ids->GetPointer(0));
  return ids;
}

void SetCells(vtkUnstructuredGrid* grid, const DovReader::CellSet& cells) {
  vtkNew<vtkIdTypeArray> offsets;
  offsets->SetNumberOfTuples(static_cast<vtkIdType>(cells.offsets.size() + 1));
  offsets->SetValue(0, 0);
  std::copy(cells.offsets.begin(), cells.offsets.end(), offsets->GetPointer(1));
  vtkNew<vtkIdTypeArray> connectivity;
  connectivity->SetNumberOfTuples(static_cast<vtkIdType>(cells.connectivity.size()));
  std::copy(cells.connectivity.begin(), cells.connectivity.end(), connectivity->GetPointer(0));
  vtkNew<vtkCellArray> cellArray;
  cellArray->SetData(offsets, connectivity);
  vtkNew<vtkUnsignedCharArray> types;
  types->SetNumberOfTuples(static_cast<vtkIdType>(cells.types.size()));
  std::copy(cells.types.begin(), cells.types.end(), types->GetPointer(0));
  grid->SetCells(types, cellArray);
}

void AddText(vtkUnstructuredGrid* grid, const char* name, const std::string& text) {
  vtkNew<vtkStringArray> array;
  array->SetName(name);
  array->InsertNextValue(text);
  grid->GetFieldData()->AddArray(array);
}

// What a block looks like in the model: its shape's colour and visibility,
// and where it stands in the tree.
void AddAppearance(vtkUnstructuredGrid* grid, const DovReader::ModelNode& node) {
  vtkNew<vtkFloatArray> color;
  color->SetName("Diffuse Color");
  color->SetNumberOfComponents(3);
  color->InsertNextTuple3(node.color[0], node.color[1], node.color[2]);
  vtkNew<vtkUnsignedCharArray> visible;
  visible->SetName("Visibility");
  visible->InsertNextValue(node.visible ? 1 : 0);
  grid->GetFieldData()->AddArray(color);
  grid->GetFieldData()->AddArray(visible);
  AddText(grid, "Tree Path", node.path);
}

// The step whose time is nearest to `time`; kNoStep for a model without.
int StepAt(const std::vector<double>& times, double time) {
  if (times.empty()) return kNoStep;
  std::size_t best = 0;
  for (std::size_t i = 1; i < times.size(); ++i)
    if (std::fabs(times[i] - time) < std::fabs(times[best] - time)) best = i;
  return static_cast<int>(best);
}

}  // namespace

vtkDovReader::vtkDovReader() : Internal(new Internals) {
  this->SetNumberOfInputPorts(0);
  for (vtkDataArraySelection* selection : {this->PointArrays.Get(), this->CellArrays.Get()})
    selection->AddObserver(vtkCommand::ModifiedEvent, this, &vtkDovReader::Modified);
}

vtkDovReader::~vtkDovReader() {
  this->SetFileName(nullptr);
  delete this->Internal;
}

void vtkDovReader::PrintSelf(ostream& os, vtkIndent indent) {
  this->Superclass::PrintSelf(os, indent);
  os << indent << "FileName: " << (this->FileName ? this->FileName : "(none)") << "\n";
  os << indent << "CellRule: " << this->CellRule << "\n";
}

int vtkDovReader::CanReadFile(const char* name) {
  try {
    Model model(name);
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

int vtkDovReader::GetNumberOfPointArrays() { return this->PointArrays->GetNumberOfArrays(); }
const char* vtkDovReader::GetPointArrayName(int index) {
  return this->PointArrays->GetArrayName(index);
}
int vtkDovReader::GetPointArrayStatus(const char* name) {
  return this->PointArrays->ArrayIsEnabled(name);
}
void vtkDovReader::SetPointArrayStatus(const char* name, int status) {
  this->PointArrays->SetArraySetting(name, status);
}
int vtkDovReader::GetNumberOfCellArrays() { return this->CellArrays->GetNumberOfArrays(); }
const char* vtkDovReader::GetCellArrayName(int index) {
  return this->CellArrays->GetArrayName(index);
}
int vtkDovReader::GetCellArrayStatus(const char* name) {
  return this->CellArrays->ArrayIsEnabled(name);
}
void vtkDovReader::SetCellArrayStatus(const char* name, int status) {
  this->CellArrays->SetArraySetting(name, status);
}

void vtkDovReader::Warn(const std::vector<std::string>& warnings) {
  for (const std::string& warning : warnings) vtkWarningMacro(<< this->FileName << ": " << warning);
}

int vtkDovReader::RequestInformation(vtkInformation*, vtkInformationVector**,
                                     vtkInformationVector* outputVector) {
  if (this->FileName == nullptr || this->FileName[0] == '\0') {
    vtkErrorMacro("No file name");
    return 0;
  }
  try {
    if (!this->Internal->model || this->Internal->openedFile != this->FileName) {
      this->Internal->model.reset(new Model(this->FileName));
      this->Internal->openedFile = this->FileName;
      this->PointArrays->RemoveAllArrays();  // those of the file before
      this->CellArrays->RemoveAllArrays();
    }
  } catch (const std::exception& e) {
    this->Internal->model.reset();
    vtkErrorMacro("Cannot read " << this->FileName << ": " << e.what());
    return 0;
  }
  const Model& model = *this->Internal->model;
  // Every result that is point data or cell data in some block at some step.
  const int steps = static_cast<int>(model.Steps().values.size());
  for (const ModelPiece& piece : model.Pieces()) {
    for (int step = steps == 0 ? kNoStep : 0; step < steps; ++step) {
      const std::uint64_t points = model.PointCount(piece, step);
      for (const FieldInfo& field : model.Fields(piece, step)) {
        for (std::uint32_t geometry : piece.geometries) {
          const Association association =
              DovReader::Classify(field, points, model.CellCount(geometry, step));
          if (association == Association::Point) this->PointArrays->AddArray(field.name.c_str());
          if (association == Association::Cell) this->CellArrays->AddArray(field.name.c_str());
        }
      }
      if (step == kNoStep) break;
    }
  }
  vtkInformation* info = outputVector->GetInformationObject(0);
  const std::vector<double>& times = model.Steps().times;
  info->Remove(vtkStreamingDemandDrivenPipeline::TIME_STEPS());
  info->Remove(vtkStreamingDemandDrivenPipeline::TIME_RANGE());
  if (!times.empty()) {
    info->Set(vtkStreamingDemandDrivenPipeline::TIME_STEPS(), times.data(),
              static_cast<int>(times.size()));
    const double range[2] = {times.front(), times.back()};
    info->Set(vtkStreamingDemandDrivenPipeline::TIME_RANGE(), range, 2);
  }
  return 1;
}

int vtkDovReader::RequestData(vtkInformation*, vtkInformationVector**,
                              vtkInformationVector* outputVector) {
  if (!this->Internal->model) return 0;
  Model& model = *this->Internal->model;
  vtkInformation* info = outputVector->GetInformationObject(0);
  vtkMultiBlockDataSet* output = vtkMultiBlockDataSet::GetData(info);
  const double time = info->Has(vtkStreamingDemandDrivenPipeline::UPDATE_TIME_STEP())
                          ? info->Get(vtkStreamingDemandDrivenPipeline::UPDATE_TIME_STEP())
                          : 0.0;
  const int step = StepAt(model.Steps().times, time);
  unsigned int block = 0;
  // A piece or geometry that cannot be read is left out with a warning;
  // the others still come.
  for (const ModelPiece& piece : model.Pieces()) {
    try {
      this->AddPiece(piece, step, output, block);
    } catch (const std::exception& e) {
      this->Warn({piece.path + " left out: " + e.what()});
    }
  }
  return 1;
}

void vtkDovReader::AddPiece(const ModelPiece& piece, int step, vtkMultiBlockDataSet* output,
                            unsigned int& block) {
  Model& model = *this->Internal->model;
  const DovReader::PointSet points = model.ReadPoints(piece, step);
  this->Warn(points.warnings);
  // The element sets of a mesh share their points and point data.
  const vtkSmartPointer<vtkPoints> shared = MakePoints(points);
  const std::vector<FieldInfo> fields = model.Fields(piece, step);
  std::vector<vtkSmartPointer<vtkAbstractArray>> pointArrays;
  if (!points.nodeIds.empty()) pointArrays.push_back(MakeNodeIds(points));
  for (const FieldInfo& field : fields)
    if (this->PointArrays->ArrayIsEnabled(field.name.c_str()) &&
        DovReader::Classify(field, points.Count(), 0) == Association::Point)
      pointArrays.push_back(ResultArray(model, field));
  const auto rule = static_cast<DovReader::CellRule>(this->CellRule);
  for (std::size_t position = 0; position < piece.geometries.size(); ++position) {
    const DovReader::ModelNode& node = model.Node(piece.geometries[position]);
    vtkNew<vtkUnstructuredGrid> grid;
    try {
      const DovReader::CellSet cells = model.ReadCells(piece, {position}, step, points, rule);
      this->Warn(cells.warnings);
      grid->SetPoints(shared);
      SetCells(grid, cells);
      for (const auto& array : pointArrays) grid->GetPointData()->AddArray(array);
      for (const FieldInfo& field : fields)
        if (this->CellArrays->ArrayIsEnabled(field.name.c_str()) &&
            DovReader::Classify(field, points.Count(), cells.Count()) == Association::Cell)
          grid->GetCellData()->AddArray(ResultArray(model, field));
    } catch (const std::exception& e) {
      this->Warn({node.path + " left out: " + e.what()});
      continue;
    }
    AddAppearance(grid, node);
    // Text instance values count 0, 1, 2 ... as times; the block names its
    // own, so that a step reads as what the host called it.
    if (step != kNoStep) AddText(grid, "Instance Value", model.Steps().values[step]);
    output->SetBlock(block, grid);
    output->GetMetaData(block)->Set(vtkCompositeDataSet::NAME(), node.path.c_str());
    ++block;
  }
}
