"""Makes the files of this folder by Blender, another program that writes cameras: one camera under a moving rig, keyed at each
frame. Run by Blender's own Python, or by one that has its module `bpy`, in the folder that the files shall go to.

expected.csv has what Blender itself says of the camera: its matrix in the world, z up, for row vectors, and its focal length.
"""

import math

import bpy  # first: it brings the others along
import addon_utils
from mathutils import Euler, Matrix

LAST = 24
GLB_LENS = 50.0  # the format has no animated lens

bpy.ops.wm.read_factory_settings(use_empty=True)
scene = bpy.context.scene
scene.render.fps = 24
scene.render.resolution_x, scene.render.resolution_y = 1920, 1080
scene.frame_start, scene.frame_end = 0, LAST

rig = bpy.data.objects.new("rig", None)
lens = bpy.data.cameras.new("shot_lens")
shot = bpy.data.objects.new("shot", lens)
for thing in (rig, shot):
    scene.collection.objects.link(thing)
shot.parent = rig
scene.camera = shot
lens.sensor_fit = "HORIZONTAL"
lens.sensor_width, lens.sensor_height = 36.0, 24.0
rig.rotation_mode = "XYZ"
shot.rotation_mode = "XYZ"

for frame in range(LAST + 1):
    part = frame / LAST
    rig.location = (6.0 * part, -2.0 + part * part, 1.0 + 0.5 * math.sin(6.0 * part))
    rig.rotation_euler = (0.2 * part, -0.15, math.radians(200.0 * part))
    shot.location = (0.3, -1.5 + part, 0.25)
    shot.rotation_euler = (math.radians(80.0 + 25.0 * math.sin(5.0 * part)), 0.1 * part, math.radians(-40.0 * part))
    lens.lens = 24.0 + 60.0 * part ** 1.5
    for thing, channels in ((rig, ("location", "rotation_euler")), (shot, ("location", "rotation_euler")), (lens, ("lens",))):
        for channel in channels:
            thing.keyframe_insert(channel, frame=frame)

TO_Y_UP = Matrix(((1, 0, 0, 0), (0, 0, 1, 0), (0, -1, 0, 0), (0, 0, 0, 1)))  # (x, y, z) becomes (x, z, -y)
euler = Euler((0.0, 0.0, 0.0), "ZXY")
with open("expected.csv", "w", encoding="ascii") as expected, open("shot.chan", "w", encoding="ascii") as chan:
    expected.write("frame,lens," + ",".join(f"m{row}{column}" for row in range(4) for column in range(4)) + "\n")
    for frame in range(LAST + 1):
        scene.frame_set(frame)
        matrix = shot.matrix_world
        # Blender's vectors are columns.
        numbers = [matrix[column][row] for row in range(4) for column in range(4)]
        expected.write(f"{frame},{lens.lens:.9g}," + ",".join(f"{number:.9g}" for number in numbers) + "\n")
        turned = TO_Y_UP @ matrix
        euler = turned.to_3x3().to_euler("ZXY", euler)
        place = turned.to_translation()
        angles = [math.degrees(angle) for angle in euler]
        field_of_view = math.degrees(2.0 * math.atan(0.5 * 36.0 * 1080 / 1920 / lens.lens))
        chan.write(" ".join(f"{number:.9g}" for number in (frame, *place, *angles, field_of_view)) + "\n")

bpy.ops.wm.usd_export(filepath="shot_z_up.usda", export_animation=True, xform_op_mode="TRS", export_lights=False,
                      export_materials=False, convert_world_material=False)
bpy.ops.wm.usd_export(filepath="shot_y_up.usdc", export_animation=True, xform_op_mode="MAT", export_lights=False,
                      export_materials=False, convert_world_material=False, convert_orientation=True,
                      export_global_forward_selection="NEGATIVE_Z", export_global_up_selection="Y")

lens.animation_data_clear()
lens.lens = GLB_LENS
addon_utils.enable("io_scene_gltf2")
bpy.ops.export_scene.gltf(filepath="shot.glb", export_format="GLB", export_cameras=True, export_animations=True,
                          export_frame_range=True, export_animation_mode="SCENE")
