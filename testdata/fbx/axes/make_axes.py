# Builds two small animated scenes in Blender and exports each one three
# times, in different axis systems and units, as binary FBX files; writes
# next to them what Blender itself evaluates: the world matrix of every
# object and bone at a few frames (Blender's own frame: +Z up, metres).
#
# Run headless (Blender is used only as a black-box exporter and evaluator):
#   PYTHONHASHSEED=0 blender -b --factory-startup --python-exit-code 1 \
#       -P make_axes.py -- OUTDIR
#
# See README.md for the variants and the facts.

import math
import os
import sys

import bpy
from mathutils import Euler, Matrix, Quaternion

FPS = 24
FIRST, LAST = 1, 9
FRAMES = [1, 3, 5, 9]

# name: (axis_forward, axis_up, global_scale, apply_scale_options)
VARIANTS = {
    "y_up_cm": ('-Z', 'Y', 1.0, 'FBX_SCALE_NONE'),
    "z_up_m": ('Y', 'Z', 1.0, 'FBX_SCALE_UNITS'),
    "y_up_half": ('-Z', 'Y', 0.5, 'FBX_SCALE_UNITS'),
}


def out_dir():
    argv = sys.argv
    if "--" not in argv or len(argv) <= argv.index("--") + 1:
        raise SystemExit("usage: blender -b --factory-startup --python-exit-code 1 -P make_axes.py -- OUTDIR")
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
    if parent:
        obj.parent = parent
    return obj


def radians(v):
    return [math.radians(a) for a in v]


def key_rotation(target, mode, frame, value):
    """Keys a rotation given in degrees (Euler), or (angle, x, y, z)."""
    target.rotation_mode = mode
    if mode == 'QUATERNION':
        target.rotation_quaternion = Quaternion(value[1:], math.radians(value[0]))
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


def export(path, variant, object_types):
    forward, up, scale, options = VARIANTS[variant]
    result = bpy.ops.export_scene.fbx(
        filepath=path, use_selection=False, object_types=object_types,
        axis_forward=forward, axis_up=up, global_scale=scale, apply_unit_scale=True,
        apply_scale_options=options, bake_space_transform=False, add_leaf_bones=False,
        primary_bone_axis='Y', secondary_bone_axis='X', use_armature_deform_only=False,
        bake_anim=True, bake_anim_use_all_bones=True, bake_anim_use_nla_strips=False,
        bake_anim_use_all_actions=False, bake_anim_force_startend_keying=True,
        bake_anim_step=1.0, bake_anim_simplify_factor=0.0, use_custom_props=False,
        embed_textures=False, path_mode='RELATIVE')
    check(result == {'FINISHED'}, "export of " + path)


def write_facts(scene, path):
    """One line per object (or bone) and frame: the frame, its time in
    seconds, the name and the 16 elements of Blender's world matrix, row
    after row (columns are the axes, translation in the last column;
    metres, +Z up)."""
    lines = ["# Blender %s, %d fps. frame seconds name m00 m01 m02 m03 m10 ... m33 "
             "(matrix_world; bones: armature matrix_world @ pose bone matrix)" % (bpy.app.version_string, FPS)]
    for frame in FRAMES:
        scene.frame_set(frame)
        worlds = {}
        for obj in scene.objects:
            worlds[obj.name] = obj.matrix_world.copy()
            if obj.type == 'ARMATURE':
                for pb in obj.pose.bones:
                    worlds[pb.name] = obj.matrix_world @ pb.matrix
        for name, m in sorted(worlds.items()):
            elements = " ".join("%.9g" % m[r][c] for r in range(4) for c in range(4))
            lines.append("%g %.17g %s %s" % (frame, frame / FPS, name, elements))
    scene.frame_set(FIRST)
    with open(path, "w") as f:
        f.write("\n".join(lines) + "\n")


# (a) a hierarchy of empties in five rotation modes, three levels deep, with
# a non-uniformly scaled parent
def scene_hierarchy():
    scene = reset_scene("Hierarchy")
    top = empty("Top")
    for frame, rotation, location, scale in ((1, (0, 0, 0), (1, 2, 3), (1, 2, 0.5)),
                                             (5, (10, 20, 45), (2, 2, 3), (1, 2, 0.5)),
                                             (9, (30, 0, 90), (2, 0, 1), (1.5, 1, 0.5))):
        key_rotation(top, 'YXZ', frame, rotation)
        key_location(top, frame, location)
        key_scale(top, frame, scale)
    middle = empty("Middle", top)
    for frame, rotation, location in ((1, (0, 0, 0, 1), (0, 1, 0)), (5, (60, 1, 0, 0), (0, 1, 1)),
                                      (9, (120, 0, 0.6, 0.8), (1, 1, 1))):
        key_rotation(middle, 'QUATERNION', frame, rotation)
        key_location(middle, frame, location)
    leaf = empty("Leaf", middle)
    leaf.location = (0, 0, 2)
    for frame, rotation in ((1, (0, 0, 0, 1)), (9, (90, 0, 1, 0))):
        key_rotation(leaf, 'AXIS_ANGLE', frame, rotation)
    side = empty("Side")
    for frame, rotation, location in ((1, (10, 0, 0), (-1, 0, 0)), (9, (-20, 40, 120), (-1, -2, 4))):
        key_rotation(side, 'ZYX', frame, rotation)
        key_location(side, frame, location)
    still = empty("Still", side)
    still.rotation_mode = 'XZY'
    still.rotation_euler = Euler(radians((15, 25, 35)), 'XZY')
    still.location = (0.5, 0.25, -1)
    still.scale = (2, 2, 2)
    scene.frame_set(FIRST)
    return scene, {'EMPTY'}


# (b) an armature, moved, turned and scaled, whose bones are keyed in four
# rotation modes
BONES = [  # name, parent, head, tail, roll (degrees), rotation mode
    ("Hip", None, (0, 0, 0), (0, 0, 1), 0, 'XYZ'),
    ("Spine", "Hip", (0, 0, 1), (0, 0.2, 2), 10, 'ZYX'),
    ("Arm", "Spine", (0, 0.2, 2), (1, 0.2, 2), 0, 'QUATERNION'),
    ("Hand", "Arm", (1, 0.2, 2), (1.5, 0.5, 2), 30, 'AXIS_ANGLE'),
]


def scene_armature():
    scene = reset_scene("Armature")
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
    for frame, location, scale in ((1, (0, 0, 0), (1, 1, 1)), (5, (0, 1, 0), (1.5, 1.5, 1.5)),
                                   (9, (1, 1, 0), (1.5, 1.5, 1.5))):
        key_location(rig, frame, location)
        key_scale(rig, frame, scale)
    rig.rotation_mode = 'XYZ'
    rig.rotation_euler = Euler(radians((0, 0, 20)), 'XYZ')
    bone_keys = {
        "Hip": [(1, (0, 0, 0)), (5, (20, 0, 10)), (9, (0, 30, 0))],
        "Spine": [(1, (0, 0, 0)), (5, (15, 25, -30)), (9, (-10, 0, 40))],
        "Arm": [(1, (0, 0, 0, 1)), (5, (70, 0, 0, 1)), (9, (100, 1, 0, 0))],
        "Hand": [(1, (0, 0, 0, 1)), (5, (45, 0, 1, 0)), (9, (90, 0.6, 0, 0.8))],
    }
    for name, _, _, _, _, mode in BONES:
        pb = rig.pose.bones[name]
        for frame, rotation in bone_keys[name]:
            key_rotation(pb, mode, frame, rotation)
    hip = rig.pose.bones["Hip"]
    for frame, location in ((1, (0, 0, 0)), (5, (0.2, 0, 0.3)), (9, (0, 0, 0))):
        key_location(hip, frame, location)
    scene.frame_set(FIRST)
    return scene, {'ARMATURE', 'EMPTY'}


def main():
    outdir = out_dir()
    print("Blender %s" % bpy.app.version_string)
    if os.environ.get("PYTHONHASHSEED") != "0":
        print("warning: PYTHONHASHSEED is not 0, object ids will differ from the committed files")
    for name, build in (("hierarchy", scene_hierarchy), ("armature", scene_armature)):
        for variant in VARIANTS:
            scene, types = build()
            export(os.path.join(outdir, "%s_%s.fbx" % (name, variant)), variant, types)
        write_facts(scene, os.path.join(outdir, name + ".txt"))
    for name in sorted(os.listdir(outdir)):
        print("file %s bytes=%d" % (name, os.path.getsize(os.path.join(outdir, name))))


main()
