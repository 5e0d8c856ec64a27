"""meshio: a model, a mesh or a geometry as one meshio.Mesh, and ".dov" for meshio.read."""

import os
import warnings

import numpy as np

from ._reading import File, _same_value

# Cell types by the numbers the reader gives them (VTK's), as meshio names
# them. A poly-vertex and a poly-line have no meshio name; they become
# vertices and line segments, each carrying the data of its cell.
_MESHIO_TYPES = {1: "vertex", 3: "line", 5: "triangle", 7: "polygon", 9: "quad",
                 10: "tetra", 12: "hexahedron", 13: "wedge", 14: "pyramid"}
_POLY_VERTEX, _POLY_LINE = 2, 4


def to_meshio(source, time=None):
    """One meshio.Mesh of a File (the whole model), a group or mesh (every
    geometry below it) or a single Geometry (an element set with the points
    of its mesh).

    Points are placed by the groups above them; cells are typed by their
    points (4, 5, 6 and 8 nodes not in one plane are solids). Results
    become point_data or cell_data by their tuple count; "Node Ids" is point
    data (-1 where a piece has none) and "Element Set" cell data, numbering
    the geometries piece by piece; cell_sets holds the same by geometry path.
    `time` is an instance value; None takes the last one. Several pieces in
    one mesh: a result that some lack is NaN there.
    """
    file, node = (source, None) if isinstance(source, File) else (source._file, source)
    step = _step(file, time)
    chosen = _chosen_sets(file, node)
    geometries = [g for positions in chosen.values() for g in positions.values()]
    parts = [_Part(file._model.piece(index, step, sorted(positions)), positions, geometries)
             for index, positions in chosen.items()]
    for part in parts:
        for warning in part.warnings:
            warnings.warn(warning, stacklevel=2)
    return _merged(parts, [file._records[g][5] for g in geometries])


def _step(file, time):
    values = file._model.steps()[0]
    if not values:
        if time is not None:
            raise ValueError(f"{file.path} has no instance values, so no time {time!r}")
        return -1
    if time is None:
        return len(values) - 1
    for step, value in enumerate(values):
        if _same_value(value, time):
            return step
    raise ValueError(f"{file.path} has no time {time!r}; its times: " + ", ".join(values))


def _chosen_sets(file, node):
    """{piece index: {position in the piece: geometry id}} of the geometries
    at or below `node` (all where `node` is None)."""
    below = None if node is None else {n.id for n in _subtree(node)}
    chosen = {}
    for index, (_, _, geometries) in enumerate(file._model.pieces()):
        positions = {p: g for p, g in enumerate(geometries) if below is None or g in below}
        if positions:
            chosen[index] = positions
    if not chosen:
        where = file.path if node is None else repr(node.path)
        raise ValueError(f"no geometry in {where}")
    return chosen


def _subtree(node):
    pending = [node]
    while pending:
        node = pending.pop()
        yield node
        pending.extend(node.children)


class _Part:
    """One piece read at a step, its cells grouped into meshio's blocks."""

    def __init__(self, piece, positions, geometries):
        self.points = piece["points"]
        self.node_ids = piece["node_ids"] if len(piece["node_ids"]) else None
        self.warnings = list(piece["warnings"])
        # The piece numbers its element sets by position; the mesh by the
        # order of all geometries it holds.
        numbers = np.full(max(positions) + 1, -1, dtype=np.int32)
        for position, geometry in positions.items():
            numbers[position] = geometries.index(geometry)
        self.blocks = _blocks(piece["connectivity"], piece["offsets"], piece["types"],
                              self.warnings)
        self.point_data, self.cell_data = {}, {"Element Set": numbers[piece["element_set"]]}
        for name, association, values, count, width in piece["fields"]:
            if association is None:
                self.warnings.append(f"result {name!r}: {count} values in tuples of {width} fit "
                                     f"neither the points nor the cells, left out")
            else:
                (self.point_data if association == "point" else self.cell_data)[name] = values


def _blocks(connectivity, offsets, types, notes):
    """[(meshio type, node indices, cell of each row)]: runs of cells of one
    type and node count."""
    if len(types) == 0:
        return []
    sizes = np.diff(offsets, prepend=0)
    starts = offsets - sizes
    cuts = np.flatnonzero((types[1:] != types[:-1]) | (sizes[1:] != sizes[:-1])) + 1
    blocks = []
    for begin, end in zip([0, *cuts], [*cuts, len(types)]):
        cells, size, kind = np.arange(begin, end), sizes[begin], types[begin]
        rows = starts[begin:end, None] + np.arange(size)
        if kind == _POLY_VERTEX:
            blocks.append(("vertex", connectivity[rows].reshape(-1, 1), np.repeat(cells, size)))
        elif kind == _POLY_LINE:
            pairs = np.stack([connectivity[rows[:, :-1]], connectivity[rows[:, 1:]]], axis=-1)
            blocks.append(("line", pairs.reshape(-1, 2), np.repeat(cells, size - 1)))
        elif kind in _MESHIO_TYPES:
            blocks.append((_MESHIO_TYPES[kind], connectivity[rows], cells))
        else:
            notes.append(f"{len(cells)} cells without nodes left out")
    return blocks


def _merged(parts, paths):
    import meshio

    first = np.cumsum([0] + [len(part.points) for part in parts])
    cells = [(kind, nodes + base) for part, base in zip(parts, first)
             for kind, nodes, _ in part.blocks]
    point_data = {name: np.concatenate(arrays)
                  for name, arrays in _gathered(parts, "point_data", _point_count).items()}
    if any(part.node_ids is not None for part in parts):
        point_data["Node Ids"] = np.concatenate(
            [np.full(len(p.points), -1) if p.node_ids is None else p.node_ids for p in parts])
    cell_data = {name: [values[rows] for values, part in zip(arrays, parts)
                        for _, _, rows in part.blocks]
                 for name, arrays in _gathered(parts, "cell_data", _cell_count).items()}
    sets = cell_data["Element Set"]
    cell_sets = {path: [np.flatnonzero(numbers == k) for numbers in sets]
                 for k, path in enumerate(paths)}
    points = np.concatenate([part.points for part in parts])
    return meshio.Mesh(points, cells, point_data=point_data, cell_data=cell_data,
                       cell_sets=cell_sets)


def _point_count(part):
    return len(part.points)


def _cell_count(part):
    return len(part.cell_data["Element Set"])


def _gathered(parts, kind, count):
    """{name: [values of each part]}, NaN where a part lacks the result; a
    result whose tuples differ in width between parts is left out."""
    gathered = {}
    for name in dict.fromkeys(n for part in parts for n in getattr(part, kind)):
        present = [getattr(part, kind).get(name) for part in parts]
        shapes = {values.shape[1:] for values in present if values is not None}
        if len(shapes) > 1:
            warnings.warn(f"result {name!r} has tuples of different widths in the pieces, "
                          "left out", stacklevel=3)
            continue
        if all(values is not None for values in present):
            gathered[name] = present
            continue
        shape = shapes.pop()
        # float32 holds NaN; a uint32 result does not and becomes float64.
        dtype = np.result_type(np.float32, *(v.dtype for v in present if v is not None))
        gathered[name] = [np.full((count(part),) + shape, np.nan, dtype) if values is None
                          else values for values, part in zip(present, parts)]
    return gathered


def _read(path):
    with File(path) as f:
        return to_meshio(f)


def _refuse_writing(path, mesh, *args, **kwargs):
    raise NotImplementedError(f"meshio cannot write {os.fspath(path)!r}: model files are "
                              "written with dovwriter.Scene")


def register():
    """Lets meshio.read open ".dov" files: the whole model at its last time."""
    try:
        import meshio
    except ImportError:
        return
    meshio.register_format("dov", [".dov"], _read, {"dov": _refuse_writing})
