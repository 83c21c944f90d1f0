"""Prints the cameras of a USD stage as JSON, for `lumivar` to read.

    {"cameras": [{"name": "/World/cam", "up_axis": "Y",
                  "samples": [{"time": 0.0, "matrix": [16 numbers],
                               "focal_length": 50.0, "horizontal_aperture": 36.0}]}],
     "warnings": ["..."]}

A time is in seconds: time code / time codes per second, so time code 0 is second 0. A matrix leads from the camera to the
world, row by row, for row vectors, in the axes and the unit of the stage. Focal length and aperture have one unit; only their
quotient matters.

There is a sample at each time at which the file has one for the camera's lens or for any transform above it, also between
frames and through layer offsets. USD interpolates each number of a transform by itself; who reads this moves a camera on a
straight line and turns it by the shortest way. Where the two would differ by more than a two hundredth of a pixel, samples are
added in between. One thing is not followed: some programs write angles that go from 180 to -180 from one frame to the next,
which would turn the camera right round within this frame.

Run by the interpreter that scripts/install-usd sets up. What goes wrong is one line on standard error, with exit code 1.
"""

import argparse
import contextlib
import json
import math
import os
import re
import sys

try:
    from pxr import Gf, Sdf, Tf, Usd, UsdGeom
except ImportError as error:
    sys.exit(f"this Python cannot load usd-core ({error}); run scripts/install-usd once")

# What the added samples are held to.
FRAME_WIDTH = 1920.0  # pixels
MOST_PIXELS = 0.005  # by which a star far away may be misplaced
MOST_UNITS = 2.5e-6  # by which the camera may be: 0.005 pixels for a star at one unit, by a lens as long as the frame is wide
UNEVEN = 1e-3  # by which the axes of a camera may differ in length: a pixel at the edge of the frame
MOST_SAMPLES = 100000  # of a camera
# Where else than in its middle an interval is looked at: whole turns hide from no three places at such uneven distances.
ASIDE = (0.19, 0.77)
SHORTEST = 1.0 / 1024.0  # time codes; a jump between two samples is not followed further
MOST_WORDS = 200  # characters of a complaint that the library makes: a broken file has one for each of its parts
WILD = math.radians(45.0)  # off the shortest way in the middle of a frame: no camera moves so, it is angles that jump


class Unusable(Exception):
    """What the user is told, without the file's name."""


class Moment:
    """A camera at one time code."""

    def __init__(self, camera, code):
        time = Usd.TimeCode(code)
        self.camera = camera
        self.code = code
        self.matrix = camera.ComputeLocalToWorldTransform(time)
        self.focal_length = number(camera.GetFocalLengthAttr(), time)
        self.horizontal_aperture = number(camera.GetHorizontalApertureAttr(), time)
        if not (0.0 < self.focal_length < math.inf and 0.0 < self.horizontal_aperture < math.inf):
            raise self.fault(
                f"has the focal length {self.focal_length:g} and the horizontal aperture "
                f"{self.horizontal_aperture:g}; both have to be above 0")
        axes = [self.matrix.GetRow3(row) for row in range(3)]
        lengths = [axis.GetLength() for axis in axes]
        self.position = self.matrix.ExtractTranslation()
        if not math.isfinite(sum(lengths) + self.position.GetLength()):
            raise self.fault("has a matrix with what is no number")
        if min(lengths) < 1e-12:
            raise self.fault("has a scale of 0")
        if self.matrix.GetDeterminant3() < 0.0:
            raise self.fault("is mirrored by a negative scale")
        right, up, back = (axis / length for axis, length in zip(axes, lengths))
        self.evenly_scaled = (max(lengths) - min(lengths) <= UNEVEN * max(lengths)
                              and max(abs(right * up), abs(up * back), abs(back * right)) <= UNEVEN)
        # Forward and up stay where a scale pulls the axes apart.
        right = Gf.Cross(up, back).GetNormalized()
        up = Gf.Cross(back, right)
        turn = Gf.Matrix4d(1.0)
        for row, axis in enumerate((right, up, back)):
            turn.SetRow3(row, axis)
        self.turn = turn.ExtractRotationQuat().GetNormalized()
        self.lens = self.focal_length / self.horizontal_aperture

    def fault(self, words):
        return Unusable(f"the camera {self.camera.GetPath()} at time code {self.code:g} {words}")

    def sample(self, codes_per_second):
        return {
            "time": self.code / codes_per_second,
            "matrix": [self.matrix[row][column] for row in range(4) for column in range(4)],
            "focal_length": self.focal_length,
            "horizontal_aperture": self.horizontal_aperture,
        }


def number(attribute, time):
    """The attribute's value; where it is blocked at this time, its fallback or its value without a time."""
    value = attribute.Get(time)
    if value is None:
        value = attribute.Get()
    return math.nan if value is None else float(value)


def angle_off(before, between, after):
    """From the shortest turn from `before` to `after` at its time, in radians where it is small, and no less where it is not."""
    turn = Gf.Slerp((between.code - before.code) / (after.code - before.code), before.turn, after.turn)
    return 2.0 * min((turn - between.turn).GetLength(), (turn + between.turn).GetLength())


def follows(before, between, after):
    """Whether a straight line and the shortest turn from `before` to `after` come by `between`."""
    part = (between.code - before.code) / (after.code - before.code)
    lens = before.lens + part * (after.lens - before.lens)
    if abs(lens / between.lens - 1.0) * FRAME_WIDTH / 2.0 > MOST_PIXELS:
        return False
    if angle_off(before, between, after) * between.lens * FRAME_WIDTH > MOST_PIXELS:
        return False
    position = before.position + part * (after.position - before.position)
    # Far from the origin single precision, in which many files have their numbers, allows no more.
    allowed = max(MOST_UNITS, 1e-7 * between.position.GetLength())
    return (position - between.position).GetLength() <= allowed


class Path:
    """The camera at the given time codes, and in between where it does not go straight."""

    def __init__(self, camera, codes, codes_per_frame):
        self.keys = [Moment(camera, code) for code in codes]
        self.moments = [self.keys[0]]
        self.is_full = False
        self.jumps = []  # time codes before angles that jump
        for start, end in zip(self.keys, self.keys[1:]):
            if end.code - start.code <= 1.001 * codes_per_frame:
                middle = Moment(camera, 0.5 * (start.code + end.code))
                if angle_off(start, middle, end) > WILD:
                    self.jumps.append(start.code)
                    self.moments.append(end)
                    continue
            self.add_to(camera, end)

    def add_to(self, camera, end):
        open_ends = [end]
        while open_ends:
            before, after = self.moments[-1], open_ends[-1]
            span = after.code - before.code
            if len(self.moments) + len(open_ends) >= MOST_SAMPLES:
                self.is_full = True
            elif span > SHORTEST:
                middle = Moment(camera, before.code + 0.5 * span)
                if not (follows(before, middle, after)
                        and all(follows(before, Moment(camera, before.code + part * span), after) for part in ASIDE)):
                    open_ends.append(middle)
                    continue
            self.moments.append(open_ends.pop())


def knots(attribute):
    return list(attribute.GetSpline().GetKnots().keys()) if attribute.HasSpline() else []


def authored_codes(camera):
    """The time codes of all samples that have a say in where the camera is and what it sees, sorted."""
    codes = set()
    for attribute in (camera.GetFocalLengthAttr(), camera.GetHorizontalApertureAttr()):
        codes.update(attribute.GetTimeSamples(), knots(attribute))
    prim = camera.GetPrim()
    while prim and not prim.IsPseudoRoot():
        transform = UsdGeom.Xformable(prim)
        if transform:
            codes.update(transform.GetTimeSamples())
            for operation in transform.GetOrderedXformOps():
                codes.update(knots(operation.GetAttr()))
            if transform.GetResetXformStack():
                break
        prim = prim.GetParent()
    # Offsets of layers leave differences in the last digit between times that are one.
    distinct = []
    for code in sorted(codes):
        if not distinct or code - distinct[-1] > 1e-9 * max(1.0, abs(code)):
            distinct.append(code)
    return distinct


def varies_or_differs(attribute, usual):
    return attribute.ValueMightBeTimeVarying() or number(attribute, Usd.TimeCode.Default()) != usual


def losses(camera):
    """What the camera has and a view of stars does not carry, in words."""
    if (varies_or_differs(camera.GetHorizontalApertureOffsetAttr(), 0.0)
            or varies_or_differs(camera.GetVerticalApertureOffsetAttr(), 0.0)):
        yield "its aperture offset is left out: the picture is not shifted"
    if (varies_or_differs(camera.GetShutterOpenAttr(), 0.0)
            or varies_or_differs(camera.GetShutterCloseAttr(), 0.0)):
        yield "its shutter is left out: the scene's is used"
    if varies_or_differs(camera.GetFStopAttr(), 0.0):
        yield "its f-stop is left out: stars have no depth of field"


def read_camera(camera, stage, warnings):
    """The camera as the JSON has it. Throws `Unusable`."""
    path = str(camera.GetPath())
    projections = {camera.GetProjectionAttr().Get(code) for code in [
        Usd.TimeCode.Default(), *camera.GetProjectionAttr().GetTimeSamples()]}
    if UsdGeom.Tokens.orthographic in projections:
        raise Unusable(f"the camera {path} is orthographic; only a perspective one sees stars")
    codes = authored_codes(camera)
    if not codes:
        codes = [stage.GetStartTimeCode() if stage.HasAuthoredTimeCodeRange() else 0.0]
    codes_per_second = stage.GetTimeCodesPerSecond()
    moves = Path(camera, codes, codes_per_second / stage.GetFramesPerSecond())
    warnings.extend(f"{path}: {loss}" for loss in losses(camera))
    if not all(moment.evenly_scaled for moment in moves.keys):
        warnings.append(f"{path}: its uneven scale is taken off: the picture is not stretched")
    if moves.jumps:
        warnings.append(
            f"{path}: its angles jump within a frame, first behind time code {moves.jumps[0]:g}; "
            "it is turned the short way there")
    if moves.is_full:
        warnings.append(f"{path}: it has {MOST_SAMPLES} samples, too few to follow its move in between; add keys to the file")
    return {
        "name": path,
        "up_axis": UsdGeom.GetStageUpAxis(stage),
        "samples": [moment.sample(codes_per_second) for moment in moves.moments],
    }


def chosen(cameras, name):
    """The camera of that prim path, or the only one of that last name."""
    found = [camera for camera in cameras if str(camera.GetPath()) == name]
    if not found:
        found = [camera for camera in cameras if camera.GetPrim().GetName() == name]
    if len(found) == 1:
        return found
    paths = ", ".join(str(camera.GetPath()) for camera in found or cameras)
    if found:
        raise Unusable(f'several cameras are called "{name}": {paths}; give the whole path of one')
    raise Unusable(f'there is no camera "{name}"; there is {paths}')


def told(failure):
    """The first complaint of the library as part of a line, without its own names."""
    texts = [getattr(complaint, "commentary", str(complaint)) for complaint in failure.args]
    text = " ".join((texts or [str(failure)])[0].split())
    place = re.match(r"(?P<file>.*):(?P<line>\d+):(?P<column>\d+): (?P<what>.*)", text)
    if place:
        what = place["what"] if "pxrInternal" not in place["what"] else "this is not as the format wants it"
        return f"line {place['line']}, column {place['column']}: {what}"
    return text[:MOST_WORDS]


def opened(file):
    if not os.path.isfile(file):
        raise Unusable("there is no such file")
    try:
        stage = Usd.Stage.Open(os.path.abspath(file))
    except Tf.ErrorException as failure:
        raise Unusable(f"cannot be read as USD: {told(failure)}") from failure
    if not stage:
        raise Unusable("cannot be read as USD")
    return stage


def missing_parts(stage):
    """What the stage refers to and does not find: (prim path, words)."""
    return [(problem.rootSite.path, " ".join(str(problem).split()).rstrip("."))
            for problem in stage.GetCompositionErrors()]


def read_cameras(file, name):
    stage = opened(file)
    if not (stage.GetTimeCodesPerSecond() > 0.0 and stage.GetFramesPerSecond() > 0.0):
        raise Unusable("it has no time codes or frames per second; both have to be above 0")
    missing = missing_parts(stage)
    prims = Usd.PrimRange.Stage(stage, Usd.TraverseInstanceProxies())
    cameras = [UsdGeom.Camera(prim) for prim in prims if prim.IsA(UsdGeom.Camera)]
    if not cameras:
        raise Unusable("it has no camera" + "".join(f"; {words}" for _, words in missing[:1]))
    if name:
        cameras = chosen(cameras, name)
    warnings = [words for _, words in missing]
    converted, faults = [], []
    for camera in cameras:
        try:
            for path, words in missing:
                # A lost layer of the whole stage is told, but the camera may well be in another.
                if path != Sdf.Path.absoluteRootPath and camera.GetPath().HasPrefix(path):
                    raise Unusable(f"the camera {camera.GetPath()} lacks a part: {words}")
            converted.append(read_camera(camera, stage, warnings))
        except Unusable as fault:
            faults.append(str(fault))
    if not converted:
        raise Unusable(faults[0])
    return {"cameras": converted, "warnings": warnings + [f"left out: {fault}" for fault in faults]}


@contextlib.contextmanager
def silence():
    """The library writes warnings of its own to both standard streams."""
    sys.stdout.flush()
    sys.stderr.flush()
    kept = [(number, os.dup(number)) for number in (1, 2)]
    nowhere = os.open(os.devnull, os.O_WRONLY)
    try:
        for number, _ in kept:
            os.dup2(nowhere, number)
        yield
    finally:
        os.close(nowhere)
        for number, copy in kept:
            os.dup2(copy, number)
            os.close(copy)


def main():
    parser = argparse.ArgumentParser(
        description="Prints the cameras of a USD stage as JSON: samples of place, turn and lens over time.",
        epilog="Example: usd_cameras.py shot.usdc --camera /World/cam")
    parser.add_argument("file", help="a .usd, .usda, .usdc or .usdz file")
    parser.add_argument("--camera", default="", metavar="NAME",
                        help="only this one: its prim path, or the last name of it where no other camera has that")
    arguments = parser.parse_args()
    try:
        with silence():
            text = json.dumps(read_cameras(arguments.file, arguments.camera), allow_nan=False)
    except Unusable as fault:
        sys.exit(f"{arguments.file}: {fault}")
    except Tf.ErrorException as failure:
        sys.exit(f"{arguments.file}: {told(failure)}")
    print(text)


if __name__ == "__main__":
    main()
