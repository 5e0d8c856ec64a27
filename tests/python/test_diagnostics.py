import pytest

import dovwriter as dw
from conftest import small_scene


class Stop(Exception):
    pass


def scene_with_a_stray_group(path):
    """The small model and a group that no component reaches, which the
    file leaves out with a warning."""
    s, _ = small_scene(path)
    s.set_name(s.create_object(dw.GroupObject), "Stray")
    return s


def test_records_reach_the_handler(tmp_path):
    path = tmp_path / "small.dov"
    s = scene_with_a_stray_group(path)
    records = []
    s.set_diagnostics(records.append)
    s.close_file(path)
    warnings = [r for r in records if r.kind == dw.Diagnostic.Warning]
    assert [(r.code, r.object is not None) for r in warnings] == [(2, True)]
    assert "Stray" in warnings[0].text
    progress = [r for r in records if r.kind == dw.Diagnostic.Progress]
    assert progress[0].done == 0 and progress[-1].done == progress[-1].total > 0


@pytest.mark.parametrize("stop_at, then", [
    (dw.Diagnostic.Warning, "builds"),     # nothing written yet: a later close builds it
    ("late progress", "refuses"),          # the file is incomplete: code 19 after
])
def test_a_handlers_exception_leaves_close_file_unchanged(tmp_path, stop_at, then):
    path = tmp_path / "small.dov"
    s = scene_with_a_stray_group(path)

    def handler(record):
        if record.kind == stop_at or (stop_at == "late progress" and record.done > 0):
            raise Stop(f"stopped at {record.text!r}")

    s.set_diagnostics(handler)
    with pytest.raises(Stop, match="^stopped at "):
        s.close_file(path)
    s.set_diagnostics(None)
    if then == "builds":
        s.close_file(path)
        with dw.open(path) as f:
            assert f.verify() == [] and len(f.geometries()) == 1
    else:
        with pytest.raises(dw.Error) as failure:
            s.close_file(path)
        assert failure.value.code == 19
