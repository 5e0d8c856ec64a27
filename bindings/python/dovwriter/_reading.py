"""Reading: a model file's tree, geometries and values as numpy arrays."""

import math
import os
from dataclasses import dataclass

import numpy as np

from . import _core

_VALUE_SEPARATOR = "\x1e"
_KINDS = {"Group": "group", "Shape": "shape", "Geometry": "geometry", "": None}


def open(path):
    """Opens a model file for reading; use it as a context manager."""
    return File(path)


class File:
    """A model file open for reading. Values are read a block at a time.

    format_version      the format version, "1.1"
    global_information  dict: application_name, application_version,
                        format_version, creation_date, computer_name,
                        user_name, comment, version
    """

    def __init__(self, path):
        self.path = os.fspath(path)
        os.stat(self.path)  # a missing file raises as Python reports it
        self._model = _core.Model(self.path)
        self._records = {node[0]: node for node in self._model.nodes()}
        self.global_information = self._model.information()
        self.format_version = self.global_information["format_version"]

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()

    def close(self):
        """Lets go of the file; arrays already read stay valid."""
        self._model.close()

    def node(self, entry):
        """The tree entry with this id: a Geometry for a geometry, else a Node."""
        if entry not in self._records:
            raise KeyError(f"no tree entry {entry} in {self.path}")
        return (Geometry if _kind(self._records[entry]) == "geometry" else Node)(self, entry)

    def walk(self):
        """Every tree entry, depth first, parents before their children."""
        pending = [entry for entry, record in reversed(self._records.items()) if record[1] == 0]
        while pending:
            entry = pending.pop()
            yield self.node(entry)
            pending.extend(reversed(self._children(entry)))

    def geometries(self):
        """Every geometry of the file, in the order of the tree."""
        return [node for node in self.walk() if node.kind == "geometry"]

    def geometry(self, key):
        """A geometry by its entry id (int) or its path of names from the root."""
        if isinstance(key, (int, np.integer)):
            node = self.node(int(key))
            if node.kind != "geometry":
                raise KeyError(f"tree entry {key} is a {node.kind}, not a geometry")
            return node
        found = [g for g in self.geometries() if g.path == key]
        if len(found) == 1:
            return found[0]
        if found:
            ids = ", ".join(str(g.id) for g in found)
            raise KeyError(f"{len(found)} geometries have the path {key!r}; "
                           f"choose one by its id: {ids}")
        raise KeyError(f"no geometry {key!r}; the geometries are: "
                       + ", ".join(repr(g.path) for g in self.geometries()))

    @property
    def instance_groups(self):
        """{group name: [instance values]}, from the variable names.

        Values stand in order of first use; they are floats where every value
        of the group reads as a distinct number, else texts.
        """
        groups = {}
        for geometry in self.geometries():
            for variable in geometry.variables.values():
                if variable.instance is not None:
                    group, value = variable.instance
                    values = groups.setdefault(group, [])
                    if value not in values:
                        values.append(value)
        return {group: _as_numbers(values) for group, values in groups.items()}

    def verify(self):
        """Every structural violation of the file as a text; [] when sound."""
        return _core.verify(self.path)

    def _children(self, entry):
        return self._records[entry][2]


class Node:
    """One entry of the scene tree.

    id, kind ("group", "shape", "geometry", or None for an empty entry),
    name, path (names from the root, joined by "/"; a path longer than 4096
    bytes keeps its end behind ".../"), parent, children,
    matrix (4x4 float64: the group transformations from the root down to it,
    each translation x rotation x scale, the rotation an axis and an angle in
    radians), color (diffuse RGBA of the shape at or above it, or None) and
    visible (False if it or anything above it is hidden).
    """

    def __init__(self, file, entry):
        self._file = file
        self.id = entry
        record = file._records[entry]
        self.kind = _kind(record)
        self.name = record[4]
        self._parent = record[1]
        self._placement = None

    def __repr__(self):
        return f"<{type(self).__name__} {self.id} {self.path!r}>"

    @property
    def path(self):
        return self._file._records[self.id][5]

    @property
    def parent(self):
        return self._file.node(self._parent) if self._parent else None

    @property
    def children(self):
        return [self._file.node(child) for child in self._file._children(self.id)]

    @property
    def matrix(self):
        return self._placed()[0].copy()

    @property
    def color(self):
        return self._placed()[1]

    @property
    def visible(self):
        return self._placed()[2]

    def _placed(self):
        if self._placement is None:
            matrix, color, visible = self._file._model.placement(self.id)
            self._placement = matrix, color, visible
        return self._placement


@dataclass(frozen=True)
class Variable:
    """One variable of a geometry.

    name       as stored; per-value data is "<base>\\x1e<group> = <value>"
    base       the name before the separator
    instance   (group, value text) for per-value data, else None
    type       the variable type of the format (1 coordinates, 6 cells, ...)
    data_type  numpy.float32, numpy.uint32, or None for no data
    width      values per tuple
    count      tuples (values // width)
    link       (entry id, variable index) of the data it links to, or None
    """

    index: int
    name: str
    base: str
    instance: tuple
    type: int
    data_type: object
    width: int
    count: int
    link: tuple


class Geometry(Node):
    """A geometry: a Node with variables, read with read()."""

    @property
    def variables(self):
        """{name: Variable}, in stored order."""
        if not hasattr(self, "_variables"):
            fields = self._file._model.variables(self.id)
            self._variables = {v.name: v for v in map(_variable, range(len(fields)), fields)}
        return self._variables

    def read(self, name, **instance):
        """The values of a variable as a numpy array owning its memory.

        float32 or uint32; shape (count, width) for a width above 1. Links
        are followed and the stored byte planes undone. Per-value data is
        named by its base name and its instance value as a keyword, as in
        read("Stress", Load=0.5); values compare as the library writes them
        (6 significant digits), or as numbers.
        """
        variable = self._find(name, instance)
        values = self._file._model.read(self.id, variable.index)
        if variable.width > 1 and values.size % variable.width == 0:
            values = values.reshape(-1, variable.width)
        return values

    def _find(self, name, instance):
        variables = self.variables
        if len(instance) > 1:
            raise TypeError("read takes one instance group and value")
        if not instance:
            if name in variables:
                return variables[name]
            plain = [v for v in variables.values() if v.base == name and v.instance is None]
            if len(plain) == 1:
                return plain[0]
            groups = sorted({v.instance[0] for v in variables.values()
                             if v.base == name and v.instance})
            if groups:
                raise KeyError(f"{name!r} is given per instance value: name one, as in "
                               f"read({name!r}, **{{{groups[0]!r}: value}})")
            raise KeyError(f"no variable {name!r} in {self.path!r}")
        (group, value), = instance.items()
        candidates = [v for v in variables.values()
                      if v.base == name and v.instance and v.instance[0] == group]
        for variable in candidates:
            if _same_value(variable.instance[1], value):
                return variable
        known = ", ".join(v.instance[1] for v in candidates) or "none"
        raise KeyError(f"{name!r} has no value {value!r} of {group!r} in {self.path!r}; "
                       f"its values: {known}")


def _kind(record):
    return _KINDS.get(record[3], record[3].lower())


def _variable(index, fields):
    name, type_, data_type, width, values, link_entry, link_index = fields
    base, separator, rest = name.partition(_VALUE_SEPARATOR)
    group, equals, value = rest.partition(" = ")
    return Variable(
        index=index, name=name, base=base,
        instance=(group, value) if separator and equals else None,
        type=type_,
        data_type={1: np.dtype(np.float32), 5: np.dtype(np.uint32)}.get(data_type),
        width=width, count=values // width if width else values,
        link=(link_entry, link_index) if link_entry else None)


def _value_text(value):
    """The text the library makes of an instance value."""
    if isinstance(value, (str, bytes)):
        return os.fsdecode(value) if isinstance(value, bytes) else value
    if isinstance(value, (int, np.integer)):
        return str(int(value))
    return "%g" % value


def _same_value(text, value):
    if text == _value_text(value):
        return True
    try:
        return not isinstance(value, (str, bytes)) and float(text) == float(value)
    except ValueError:
        return False


def _as_numbers(values):
    try:
        numbers = [float(value) for value in values]
    except ValueError:
        return values
    finite = all(math.isfinite(n) for n in numbers)
    return numbers if finite and len(set(numbers)) == len(numbers) else values

