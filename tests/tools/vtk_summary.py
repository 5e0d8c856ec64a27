"""Reads VTK XML files with VTK's own reader and prints what the tests
compare, one tab-separated record per line after 'file <path>'. A grid with
time steps is read at each step in turn with one reader, as ParaView does;
arrays of step k > 0 carry ' @k' behind their name. A .pvd collection is
read as XML. Any error VTK reports fails the run."""
import sys
import xml.etree.ElementTree as ElementTree

import vtk


def line(*fields):
    print("\t".join(str(f) for f in fields))


def values(array):
    # Without numpy: VTK's arrays hand out their values one by one.
    return " ".join(repr(array.GetValue(i)) for i in range(array.GetNumberOfValues()))


errors = []


def record_error(caller, event):
    errors.append(caller.GetClassName())


def update(reader, path):
    reader.Update()
    if errors:
        sys.exit("VTK reported an error reading %s" % path)


def print_arrays(grid, suffix):
    for kind, data in (("pointdata", grid.GetPointData()), ("celldata", grid.GetCellData())):
        for i in range(data.GetNumberOfArrays()):
            array = data.GetArray(i)
            line(kind + " " + array.GetName() + suffix, array.GetNumberOfComponents(), values(array))


def print_field_data(grid):
    data = grid.GetFieldData()
    for i in range(data.GetNumberOfArrays()):
        array = data.GetAbstractArray(i)
        texts = [array.GetVariantValue(k).ToString() for k in range(array.GetNumberOfValues())]
        line("fielddata " + array.GetName(), "|".join(texts))


def print_cells(grid):
    types, nodes = [], []
    for c in range(grid.GetNumberOfCells()):
        # GetCell hands out one shared cell: take its ids before the next.
        ids = grid.GetCell(c).GetPointIds()
        types.append(str(grid.GetCellType(c)))
        nodes.extend(str(ids.GetId(k)) for k in range(ids.GetNumberOfIds()))
    line("celltypes", " ".join(types))
    line("cellnodes", " ".join(nodes))


def read_vtu(path):
    reader = vtk.vtkXMLUnstructuredGridReader()
    reader.AddObserver("ErrorEvent", record_error)
    reader.SetFileName(path)
    reader.UpdateInformation()
    steps = reader.GetNumberOfTimeSteps()
    update(reader, path)
    grid = reader.GetOutput()
    line("steps", steps)
    line("counts", grid.GetNumberOfPoints(), grid.GetNumberOfCells())
    if grid.GetPoints() is not None:
        line("coordinates", values(grid.GetPoints().GetData()))
    print_cells(grid)
    print_field_data(grid)
    print_arrays(grid, "")
    for step in range(1, steps):
        reader.SetTimeStep(step)
        update(reader, path)
        print_arrays(reader.GetOutput(), " @%d" % step)


for path in sys.argv[1:]:
    line("file", path)
    if path.endswith(".pvd"):
        for n, dataset in enumerate(ElementTree.parse(path).getroot().iter("DataSet")):
            line("dataset %d" % n, dataset.get("timestep"), dataset.get("part"),
                 dataset.get("file"))
    else:
        read_vtu(path)
