# Builds small animated scenes in Blender, exports each one as a binary FBX
# file, and writes next to it what Blender itself evaluates: the world matrix
# of every object and bone at a few frames, as text.
#
# Run headless (Blender is used only as a black-box exporter and evaluator):
#   PYTHONHASHSEED=0 blender -b --factory-startup --python-exit-code 1 \
#       -P make_animation.py -- OUTDIR
#
# Object ids in the files come from Python string hashes: PYTHONHASHSEED=0
# gives the same ids on every run. See README.md for the facts and for how
# Blender's frame maps to the file's.

import math
import os
import struct
import sys

import bpy
from mathutils import Euler, Matrix, Quaternion, Vector

FPS = 24
FIRST, LAST = 1, 17
# Frames sampled for every object: on the action's keys (1, 9, 17) and
# between them. Blender bakes the animation into one key per frame, so these
# are on the file's keys.
FRAMES = [1, 4, 5, 9, 12, 17]
# Frames between the file's keys, sampled only for objects whose exported
# channels move linearly there (see LINEAR_BETWEEN_FRAMES in each scene).
SUBFRAMES = [4.5, 12.25]


def out_dir():
    argv = sys.argv
    if "--" not in argv or len(argv) <= argv.index("--") + 1:
        raise SystemExit("usage: blender -b --factory-startup --python-exit-code 1 "
                         "-P make_animation.py -- OUTDIR")
    path = os.path.abspath(argv[argv.index("--") + 1])
    os.makedirs(path, exist_ok=True)
    return path


def check(cond, what):
    if not cond:
        raise RuntimeError("scene check failed: " + what)


def reset_scene(name):
    bpy.ops.wm.read_factory_settings(use_empty=True)
    scene = bpy.context.scene
    scene.name = name
    scene.render.fps = FPS
    scene.render.fps_base = 1.0
    scene.frame_start = FIRST
    scene.frame_end = LAST
    scene.unit_settings.system = 'METRIC'
    scene.unit_settings.scale_length = 1.0
    return scene


def link(obj):
    bpy.context.scene.collection.objects.link(obj)
    return obj


def empty(name, parent=None):
    obj = link(bpy.data.objects.new(name, None))
    obj.empty_display_type = 'PLAIN_AXES'
    if parent:
        obj.parent = parent
    return obj


def radians(v):
    return [math.radians(a) for a in v]


def key_rotation(target, mode, frame, value):
    """Keys a rotation given in degrees (Euler), (w, x, y, z) or (angle, axis)."""
    target.rotation_mode = mode
    if mode == 'QUATERNION':
        q = Quaternion(value[1:], math.radians(value[0])) if len(value) == 4 else value
        target.rotation_quaternion = q
        target.keyframe_insert("rotation_quaternion", frame=frame)
    elif mode == 'AXIS_ANGLE':
        target.rotation_axis_angle = [math.radians(value[0])] + list(value[1:])
        target.keyframe_insert("rotation_axis_angle", frame=frame)
    else:
        target.rotation_euler = Euler(radians(value), mode)
        target.keyframe_insert("rotation_euler", frame=frame)


def key_location(target, frame, value):
    target.location = value
    target.keyframe_insert("location", frame=frame)


def key_scale(target, frame, value):
    target.scale = value
    target.keyframe_insert("scale", frame=frame)


def make_linear(id_data):
    ad = id_data.animation_data
    if ad and ad.action:
        for fc in ad.action.fcurves:
            for kp in fc.keyframe_points:
                kp.interpolation = 'LINEAR'


def export(path, object_types):
    # Axes as Blender has them (+Z up, -Y front: the exporter's 'Y' forward)
    # and units as metres in the file's "UnitScaleFactor" rather than as a
    # scale on the root nodes: the file's global matrices are Blender's world
    # matrices, with rows for columns.
    result = bpy.ops.export_scene.fbx(
        filepath=path, use_selection=False, object_types=object_types,
        axis_forward='Y', axis_up='Z', global_scale=1.0, apply_unit_scale=True,
        apply_scale_options='FBX_SCALE_UNITS', add_leaf_bones=False,
        primary_bone_axis='Y', secondary_bone_axis='X', use_armature_deform_only=False,
        bake_anim=True, bake_anim_use_all_bones=True, bake_anim_use_nla_strips=False,
        bake_anim_use_all_actions=False, bake_anim_force_startend_keying=True,
        bake_anim_step=1.0, bake_anim_simplify_factor=0.0, use_custom_props=False,
        embed_textures=False, path_mode='RELATIVE')
    check(result == {'FINISHED'}, "export of " + path)


def world_matrices(scene):
    """Blender's world matrix of every object and bone, by name."""
    worlds = {}
    for obj in scene.objects:
        worlds[obj.name] = obj.matrix_world.copy()
        if obj.type == 'ARMATURE':
            for pb in obj.pose.bones:
                worlds[pb.name] = obj.matrix_world @ pb.matrix
    return worlds


def write_facts(scene, path, linear_between_frames):
    """One line per object (or bone) and frame: the frame, its time in
    seconds, the name and the 16 elements of Blender's world matrix, row
    after row, as Blender writes it (columns are the axes, translation in the
    last column; lengths in metres)."""
    lines = ["# Blender %s, %d fps. frame seconds name m00 m01 m02 m03 m10 ... m33 "
             "(matrix_world; bones: armature matrix_world @ pose bone matrix)" % (bpy.app.version_string, FPS)]
    for frame in FRAMES + SUBFRAMES:
        whole = int(math.floor(frame))
        scene.frame_set(whole, subframe=frame - whole)
        for name, m in sorted(world_matrices(scene).items()):
            if frame not in FRAMES and name not in linear_between_frames:
                continue
            elements = " ".join("%.9g" % m[r][c] for r in range(4) for c in range(4))
            lines.append("%g %.17g %s %s" % (frame, frame / FPS, name, elements))
    scene.frame_set(FIRST)
    with open(path, "w") as f:
        f.write("\n".join(lines) + "\n")


# (a) empties keyed in four rotation modes, and a parent-child pair with a
# parent inverse and non-uniform scale above the child (shear in the world)
def scene_object_actions(outdir):
    scene = reset_scene("ObjectActions")
    keys = {  # name: (rotation mode, [(frame, rotation, location)])
        "EulerXYZ": ('XYZ', [(1, (0, 0, 0), (0, 0, 0)), (9, (30, 20, 60), (1, 2, 3)),
                             (17, (10, -40, 90), (2, 0, 1))]),
        "EulerZYX": ('ZYX', [(1, (10, 0, 0), (0, 1, 0)), (9, (30, 20, 60), (1, 2, 3)),
                             (17, (-20, 40, 120), (0, 0, 2))]),
        "Quaternion": ('QUATERNION', [(1, (0, 0, 0, 1), (1, 0, 0)), (9, (90, 0, 0, 1), (1, 1, 0)),
                                      (17, (120, 0.6, 0.8, 0), (1, 1, 1))]),
        "AxisAngle": ('AXIS_ANGLE', [(1, (0, 0, 0, 1), (-1, 0, 0)), (9, (60, 1, 0, 0), (-1, 2, 0)),
                                     (17, (150, 0, 0.6, 0.8), (-2, 0, 0))]),
    }
    for name, (mode, frames) in keys.items():
        obj = empty(name)
        for frame, rotation, location in frames:
            key_rotation(obj, mode, frame, rotation)
            key_location(obj, frame, location)
        make_linear(obj)

    parent = empty("Parent")
    for frame, rotation, location, scale in ((1, (0, 0, 0), (0, 0, 0), (2, 1, 0.5)),
                                             (9, (0, 0, 45), (1, 0, 0), (2, 1, 0.5)),
                                             (17, (20, 0, 90), (1, 1, 0), (1, 1.5, 0.5))):
        key_rotation(parent, 'XYZ', frame, rotation)
        key_location(parent, frame, location)
        key_scale(parent, frame, scale)
    make_linear(parent)
    child = empty("Child", parent)
    # A turned and moved parent inverse, as Blender keeps it after parenting
    # with the parent elsewhere.
    child.matrix_parent_inverse = (Matrix.Translation((0.5, -1.0, 0.25)) @
                                   Euler(radians((0, 30, 0)), 'XYZ').to_matrix().to_4x4())
    for frame, rotation, location in ((1, (0, 0, 30), (1, 0, 0)), (9, (45, 0, 30), (1, 0, 1)),
                                      (17, (45, 60, 0), (0, 1, 1))):
        key_rotation(child, 'XYZ', frame, rotation)
        key_location(child, frame, location)
    make_linear(child)
    grandchild = empty("GrandChild", child)
    grandchild.location = (0, 2, 0)
    grandchild.rotation_euler = Euler(radians((0, 0, 15)), 'XYZ')
    scene.frame_set(FIRST)

    check(child.matrix_world.to_3x3().is_orthogonal is False, "child's world is sheared")
    export(os.path.join(outdir, "object_actions.fbx"), {'EMPTY'})
    # Euler XYZ channels and locations are exported as they are keyed, one
    # linear key per frame; the parent's too. Other modes are converted to
    # Euler XYZ per frame, and the child's channels hold its parent inverse,
    # so between frames they do not follow Blender's interpolation.
    write_facts(scene, os.path.join(outdir, "object_actions.txt"), {"EulerXYZ", "Parent"})


# (b) an armature, itself moved and scaled non-uniformly, whose bones are
# keyed in the four rotation modes and with locations
BONES = [  # name, parent, head, tail, roll (degrees), rotation mode
    ("Hip", None, (0, 0, 0), (0, 0, 1), 0, 'XYZ'),
    ("Spine", "Hip", (0, 0, 1), (0, 0.2, 2), 10, 'ZYX'),
    ("Arm", "Spine", (0, 0.2, 2), (1, 0.2, 2), 0, 'QUATERNION'),
    ("Hand", "Arm", (1, 0.2, 2), (1.5, 0.5, 2), 30, 'AXIS_ANGLE'),
]


def scene_armature_action(outdir):
    scene = reset_scene("ArmatureAction")
    arm = bpy.data.armatures.new("RigData")
    rig = link(bpy.data.objects.new("Rig", arm))
    bpy.context.view_layer.objects.active = rig
    rig.select_set(True)
    bpy.ops.object.mode_set(mode='EDIT')
    for name, parent, head, tail, roll, _ in BONES:
        eb = arm.edit_bones.new(name)
        eb.head = head
        eb.tail = tail
        eb.roll = math.radians(roll)
        if parent:
            eb.parent = arm.edit_bones[parent]
            eb.use_connect = False
    bpy.ops.object.mode_set(mode='OBJECT')

    for frame, location, scale in ((1, (0, 0, 0), (1, 1, 1)), (9, (0, 1, 0), (1.5, 1, 1)),
                                   (17, (1, 1, 0), (1.5, 0.5, 1))):
        key_location(rig, frame, location)
        key_scale(rig, frame, scale)
    rig.rotation_mode = 'XYZ'
    rig.rotation_euler = Euler(radians((0, 0, 20)), 'XYZ')

    bone_keys = {
        "Hip": [(1, (0, 0, 0)), (9, (20, 0, 10)), (17, (0, 30, 0))],
        "Spine": [(1, (0, 0, 0)), (9, (15, 25, -30)), (17, (-10, 0, 40))],
        "Arm": [(1, (0, 0, 0, 1)), (9, (70, 0, 0, 1)), (17, (100, 1, 0, 0))],
        "Hand": [(1, (0, 0, 0, 1)), (9, (45, 0, 1, 0)), (17, (90, 0.6, 0, 0.8))],
    }
    for name, _, _, _, _, mode in BONES:
        pb = rig.pose.bones[name]
        for frame, rotation in bone_keys[name]:
            key_rotation(pb, mode, frame, rotation)
    hip = rig.pose.bones["Hip"]
    for frame, location in ((1, (0, 0, 0)), (9, (0.2, 0, 0.3)), (17, (0, 0, 0))):
        key_location(hip, frame, location)
    make_linear(rig)
    scene.frame_set(FIRST)

    export(os.path.join(outdir, "armature_action.fbx"), {'ARMATURE', 'EMPTY'})
    # Bones are exported relative to their parents in the file's bone axes:
    # their channels do not interpolate like Blender's between frames.
    write_facts(scene, os.path.join(outdir, "armature_action.txt"), {"Rig"})


BINARY_MAGIC = bytes.fromhex("4B 61 79 64 61 72 61 20 46 42 58 20 42 69 6E 61 72 79 20 20 00 1A 00")


def main():
    outdir = out_dir()
    print("Blender %s" % bpy.app.version_string)
    if os.environ.get("PYTHONHASHSEED") != "0":
        print("warning: PYTHONHASHSEED is not 0, object ids will differ from the committed files")
    for build in (scene_object_actions, scene_armature_action):
        print("== %s" % build.__name__)
        build(outdir)
    for name in sorted(os.listdir(outdir)):
        if name.endswith(".fbx"):
            with open(os.path.join(outdir, name), "rb") as f:
                head = f.read(27)
            check(head[:23] == BINARY_MAGIC, name + " starts with the binary magic")
            version = struct.unpack_from("<I", head, 23)[0]
            print("file %s bytes=%d version=%d" % (name, os.path.getsize(os.path.join(outdir, name)), version))


main()
