"""Writing: the compiled scene with numpy arrays converted on their way in."""

import numpy as np

from . import _core

_FLOAT32 = np.dtype(np.float32)
_UINT32 = np.dtype(np.uint32)
_EXACT_FLOAT32_INTEGERS = 2**24
_UINT32_MAX = 2**32 - 1


class Scene(_core.Scene):
    """A scene: objects that you create, fill and link, written by close_file.

    Arrays are numpy arrays (or anything numpy.asarray takes), 1-D or with one
    row per tuple; a 2-D array sets the array object's Dimension to its row
    length unless one is set already. The file holds float32 and uint32
    values only, and each role reads one of them: coordinates float32;
    connectivity, polylengths, node ids and element sets uint32; results and
    element ids either. Values are converted where nothing is lost: integers
    to uint32 when they lie in 0..2**32-1 (to float32 for coordinates, or for
    results that do not fit uint32, when they are whole numbers up to 2**24
    in size), float16 to float32. float64 values become float32 only when
    asked with dtype=numpy.float32, which rounds them. Anything else raises
    TypeError or ValueError, saying what the role takes; no array is left out
    of the file in silence.
    """

    def set_values(self, array, values, dtype=None):
        """Copies values into an array object (see the class for conversions)."""
        super().set_values(array, _stored_form(values, self._takes(array), dtype))

    def lend_values(self, array, values, dtype=None):
        """Like set_values, but the scene reads the numpy array itself.

        The array is kept alive until close_file has returned or the scene is
        gone; do not change it before then. An array that must be converted
        is converted once, and that copy is what the scene reads.
        """
        super().lend_values(array, _stored_form(values, self._takes(array), dtype))


def _stored_form(values, takes, dtype):
    """values as a C-ordered float32 or uint32 array for a role that takes
    `takes` ("float32", "uint32" or "any")."""
    values = np.asarray(values)
    if values.dtype.kind not in "biuf":
        raise TypeError(f"the file holds float32 and uint32 values, not {values.dtype}")
    if dtype is not None:
        return np.ascontiguousarray(_asked(values, takes, np.dtype(dtype)))
    if values.dtype.kind == "f":
        return np.ascontiguousarray(_from_floats(values, takes))
    return np.ascontiguousarray(_from_integers(values, takes))


def _asked(values, takes, dtype):
    if dtype not in (_FLOAT32, _UINT32):
        raise TypeError(f"dtype is numpy.float32 or numpy.uint32, not {dtype}")
    if takes not in ("any", dtype.name):
        raise TypeError(f"this array object takes {takes} values, not {dtype}")
    converted = values.astype(dtype)
    if dtype == _UINT32 and not np.array_equal(converted, values):
        raise ValueError("these values are not all whole numbers in 0..2**32-1, "
                         "which uint32 holds")
    return converted


def _from_floats(values, takes):
    if takes == "uint32":
        raise TypeError(f"this array object takes uint32 values, not {values.dtype}; "
                        "give whole numbers as an integer array")
    if values.dtype.itemsize > _FLOAT32.itemsize:
        raise TypeError(f"the file holds float32, not {values.dtype}: pass "
                        "dtype=numpy.float32 to round the values")
    return values.astype(_FLOAT32, copy=False)


def _from_integers(values, takes):
    low, high = (int(values.min()), int(values.max())) if values.size else (0, 0)
    if takes != "float32" and low >= 0 and high <= _UINT32_MAX:
        return values.astype(_UINT32, copy=False)
    if takes != "uint32" and max(-low, high) <= _EXACT_FLOAT32_INTEGERS:
        return values.astype(_FLOAT32)
    wanted = {"float32": "float32 (whole numbers exact up to 2**24)",
              "uint32": "uint32 (0..2**32-1)"}.get(takes, "uint32 or float32")
    raise ValueError(f"this array object takes {wanted}; these {values.dtype} values lie in "
                     f"{low}..{high}, which it cannot hold exactly")
