import pytest

import dovwriter as dw
from conftest import small_scene


def scene_with_a_stray_group(path):
    """The small model and a group that no component reaches: left out of
    the file with a warning."""
    s, _ = small_scene(path)
    s.set_name(s.create_object(dw.GroupObject), "Stray")
    return s


def test_records_reach_the_handler(tmp_path):
    s, records = scene_with_a_stray_group(tmp_path / "small.dov"), []
    s.set_diagnostics(records.append)
    s.close_file(tmp_path / "small.dov")
    warning, = [r for r in records if r.kind == dw.Diagnostic.Warning]
    assert warning.code == 2 and "Stray" in warning.text and warning.object is not None
    progress = [r for r in records if r.kind == dw.Diagnostic.Progress]
    assert progress[0].done == 0 and progress[-1].done == progress[-1].total > 0


class Stop(Exception):
    pass


# Stopped at a warning nothing is written yet and a later close builds the
# file; stopped after numbers were written the file is incomplete (code 19).
@pytest.mark.parametrize("late", [False, True])
def test_a_handlers_exception_leaves_close_file_unchanged(tmp_path, late):
    path = tmp_path / "small.dov"
    s = scene_with_a_stray_group(path)

    def stop(record):
        if record.done > 0 if late else record.kind == dw.Diagnostic.Warning:
            raise Stop(f"stopped at {record.text!r}")

    s.set_diagnostics(stop)
    with pytest.raises(Stop, match="^stopped at "):
        s.close_file(path)
    s.set_diagnostics(None)
    if late:
        with pytest.raises(dw.Error) as failure:
            s.close_file(path)
        assert failure.value.code == 19
    else:
        s.close_file(path)
        with dw.open(path) as f:
            assert f.verify() == [] and len(f.geometries()) == 1
