"""Renders a model file with ParaView, offscreen, to a PNG: the plate
coloured by its stress at the last load state, the bolts in their own
colour. Run with pvpython:

    pvpython render_demo.py [--plugin PATH/DovReader.so] MODEL.dov OUT.png [--check]

--plugin loads the reader plugin with LoadPlugin (otherwise it must come
through PV_PLUGIN_PATH); --check fails unless the picture shows the model.
"""
import argparse
import sys

from paraview.simple import (ColorBy, GetActiveViewOrCreate, GetColorTransferFunction,
                             GetScalarBar, LoadPlugin, OpenDataFile, Render, SaveScreenshot,
                             Show)

WIDTH, HEIGHT = 800, 500


def parse_arguments():
    parser = argparse.ArgumentParser(description="Render a model file to a PNG.")
    parser.add_argument("--plugin", help="path of the DovReader plugin library")
    parser.add_argument("model")
    parser.add_argument("picture")
    parser.add_argument("--check", action="store_true", help="fail on a blank picture")
    return parser.parse_args()


def render(model, picture):
    reader = OpenDataFile(model)
    if reader is None:
        sys.exit("no reader for %s: is the DovReader plugin loaded?" % model)
    last = reader.TimestepValues[-1] if reader.TimestepValues else 0.0
    view = GetActiveViewOrCreate("RenderView")
    view.ViewSize = [WIDTH, HEIGHT]
    view.ViewTime = last
    view.OrientationAxesVisibility = 0
    view.UseColorPaletteForBackground = 0
    view.Background = [1.0, 1.0, 1.0]
    display = Show(reader, view)
    display.AmbientColor = display.DiffuseColor = [0.72, 0.72, 0.75]
    ColorBy(display, ("POINTS", "Stress"))
    stress = GetColorTransferFunction("Stress")
    stress.ApplyPreset("Cool to Warm", True)
    bar = GetScalarBar(stress, view)
    bar.Title, bar.ComponentTitle = "Stress", "(MPa)"
    bar.TitleColor = bar.LabelColor = [0.1, 0.1, 0.1]
    Render(view)  # the first render places the camera; ours comes after
    # From the clamped edge, above and in front, so that the bolts stand up.
    view.CameraFocalPoint = [100, 62, 0]
    view.CameraPosition = [-50, -210, 225]
    view.CameraViewUp = [0, 0, 1]
    view.CameraViewAngle = 30
    display.SetScalarBarVisibility(view, True)
    Render(view)
    SaveScreenshot(picture, view, ImageResolution=[WIDTH, HEIGHT])


def check(picture):
    """The picture must be the asked size, and much of it not the white
    background, in many colours."""
    from vtkmodules.vtkIOImage import vtkPNGReader

    reader = vtkPNGReader()
    reader.SetFileName(picture)
    reader.Update()
    image = reader.GetOutput()
    if image.GetDimensions()[:2] != (WIDTH, HEIGHT):
        sys.exit("picture is %s, not %dx%d" % (image.GetDimensions()[:2], WIDTH, HEIGHT))
    scalars = image.GetPointData().GetScalars()
    pixels = scalars.GetNumberOfTuples()
    background = (255.0, 255.0, 255.0)
    colours, drawn = set(), 0
    for i in range(0, pixels, 7):
        rgb = scalars.GetTuple(i)[:3]
        colours.add(rgb)
        drawn += rgb != background
    share = 7.0 * drawn / pixels
    if share < 0.1 or len(colours) < 50:
        sys.exit("picture looks blank: %.0f %% drawn, %d colours" % (100 * share, len(colours)))
    print("picture %s: %.0f %% drawn, %d colours" % (picture, 100 * share, len(colours)))


def main():
    arguments = parse_arguments()
    if arguments.plugin:
        LoadPlugin(arguments.plugin, remote=False, ns=globals())
    render(arguments.model, arguments.picture)
    if arguments.check:
        check(arguments.picture)


main()
