#ifndef vtkDovReader_h
#define vtkDovReader_h

// Reads a model file into a multiblock data set: one block per geometry,
// named by its path in the scene tree, its points placed by the groups
// above it and its cells typed by their shape. The element sets of one
// mesh share their points and point arrays. Node ids are point data; each
// block's diffuse colour, visibility and path are field data. Results are
// point or cell data by their number of tuples, each selectable; numeric
// instance values are the time steps, text values count 0, 1, 2 ... in
// order of first use, and each block names its step's value.

#include "DovParaViewReaderModule.h"  // for the export macro
#include "vtkMultiBlockDataSetAlgorithm.h"
#include "vtkNew.h"

#include <string>  // for std::string
#include <vector>  // for std::vector

class vtkDataArraySelection;
class vtkMultiBlockDataSet;
namespace DovReader {
struct ModelPiece;
}

class DOVPARAVIEWREADER_EXPORT vtkDovReader : public vtkMultiBlockDataSetAlgorithm {
 public:
  static vtkDovReader* New();
  vtkTypeMacro(vtkDovReader, vtkMultiBlockDataSetAlgorithm);
  void PrintSelf(ostream& os, vtkIndent indent) override;

  vtkSetStringMacro(FileName);
  vtkGetStringMacro(FileName);

  // 0: by shape (default), 1: every cell flat, 2: 4, 5, 6 and 8 nodes solid.
  vtkSetClampMacro(CellRule, int, 0, 2);
  vtkGetMacro(CellRule, int);

  int GetNumberOfPointArrays();
  const char* GetPointArrayName(int index);
  int GetPointArrayStatus(const char* name);
  void SetPointArrayStatus(const char* name, int status);
  int GetNumberOfCellArrays();
  const char* GetCellArrayName(int index);
  int GetCellArrayStatus(const char* name);
  void SetCellArrayStatus(const char* name, int status);

  // True if the file opens as a model file.
  static int CanReadFile(const char* name);

 protected:
  vtkDovReader();
  ~vtkDovReader() override;

  int RequestInformation(vtkInformation*, vtkInformationVector**, vtkInformationVector*) override;
  int RequestData(vtkInformation*, vtkInformationVector**, vtkInformationVector*) override;

 private:
  vtkDovReader(const vtkDovReader&) = delete;
  void operator=(const vtkDovReader&) = delete;

  // Data left out of the output, and why, as VTK warnings.
  void Warn(const std::vector<std::string>& warnings);

  // Adds a block per geometry of `piece`, from `block` on.
  void AddPiece(const DovReader::ModelPiece& piece, int step, vtkMultiBlockDataSet* output,
                unsigned int& block);

  class Internals;
  Internals* Internal;
  char* FileName = nullptr;
  int CellRule = 0;
  vtkNew<vtkDataArraySelection> PointArrays;
  vtkNew<vtkDataArraySelection> CellArrays;
};

#endif
