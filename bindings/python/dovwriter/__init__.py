"""Read and write model files with numpy.

Reading::

    import dovwriter
    with dovwriter.open("plate.dov") as f:
        for node in f.walk():
            print(node.path, node.kind)
        g = f.geometry("Bracket assembly/Plate/Flange/Flange")
        xyz = g.read("Coordinates")              # float32, shape (n, 3)
        u = g.read("Displacement", Load=0.5)     # a result at one instance value

meshio: dovwriter.to_meshio(f, time=0.5) makes one meshio.Mesh of a file,
a group or a geometry; meshio.read("plate.dov") works once dovwriter is
imported.

Writing: dovwriter.Scene offers every operation of the library's newest
scene interface under snake_case names, taking numpy arrays.

Failures of the library, and files that cannot be read, raise
dovwriter.Error with .code, .description and .text.
"""

from ._core import (
    Diagnostic,
    DiagnosticRecord,
    Encoding,
    Error,
    Identifier,
    ObjectType,
    ColorType,
    MeshType,
    VariableType,
    log_trace_to_file,
    verify,
)
from ._core import (  # the enumerators, as C++ hosts write them
    ArrayObject, MaterialObject, TransformationObject, ElementSetObject, InstanceGroupObject,
    GeometryObject, ShapeObject, GroupObject, MeshObject,
    DiffusiveColor, SpecularColor, EmissiveColor, AmbientColor,
    CellMesh, LineMesh, PointMesh,
    ScalarVariable, VectorVariable, SixComponentVariableA, SixComponentVariableB,
)
from ._reading import File, Geometry, Node, Variable, open
from ._meshio import to_meshio, register as _register_with_meshio
from ._scene import Scene

_register_with_meshio()

__all__ = [name for name in dir() if not name.startswith("_")]
