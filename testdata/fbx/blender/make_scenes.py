# Builds small test scenes in Blender and exports each one as a binary FBX file.
#
# Run headless (Blender is used only as a black-box exporter):
#   blender -b --factory-startup --python-exit-code 1 -P make_scenes.py -- OUTDIR
#
# Every scene is built from scratch with fixed names and values. After each
# export the script reads the scene back from Blender's own data and prints the
# facts that tests assert (see README.md); it fails if a fact is not as built.
#
# Object ids in the files come from Python string hashes: set PYTHONHASHSEED=0
# in the environment to get the same ids on every run. The creation time stamp
# and the absolute texture path (which holds OUTDIR) still change between runs.

import math
import os
import struct
import sys
import zlib

import bpy
from mathutils import Euler, Vector

TEXTURE_NAME = "checker.png"


def out_dir():
    argv = sys.argv
    if "--" not in argv or len(argv) <= argv.index("--") + 1:
        raise SystemExit("usage: blender -b --factory-startup --python-exit-code 1 "
                         "-P make_scenes.py -- OUTDIR")
    path = os.path.abspath(argv[argv.index("--") + 1])
    os.makedirs(path, exist_ok=True)
    return path


def check(cond, what):
    if not cond:
        raise RuntimeError("scene check failed: " + what)


def write_checker_png(path, size=8):
    """Writes an 8x8 RGB checkerboard PNG byte for byte the same on every run."""
    rows = bytearray()
    for y in range(size):
        rows.append(0)  # filter type: none
        for x in range(size):
            if (x // 2 + y // 2) % 2 == 0:
                rows += bytes((255, 255, 255))
            else:
                rows += bytes((200, 30, 30))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    png = b"\x89PNG\r\n\x1a\n"
    png += chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(bytes(rows), 9))
    png += chunk(b"IEND", b"")
    with open(path, "wb") as f:
        f.write(png)


def reset_scene(name):
    bpy.ops.wm.read_factory_settings(use_empty=True)
    scene = bpy.context.scene
    scene.name = name
    scene.render.fps = 24
    scene.render.fps_base = 1.0
    scene.frame_start = 1
    scene.frame_end = 1
    scene.unit_settings.system = 'METRIC'
    scene.unit_settings.scale_length = 1.0
    return scene


def link(obj):
    bpy.context.scene.collection.objects.link(obj)
    return obj


def make_mesh(name, verts, faces, uvs=None):
    mesh = bpy.data.meshes.new(name + "Mesh")
    mesh.from_pydata(verts, [], faces)
    if uvs is not None:
        layer = mesh.uv_layers.new(name="UVMap")
        for poly in mesh.polygons:
            for corner, loop_index in enumerate(poly.loop_indices):
                layer.data[loop_index].uv = uvs[corner]
    mesh.update()
    check(mesh.validate() is False, name + " mesh is valid")
    return mesh


def make_material(name, color):
    mat = bpy.data.materials.new(name)
    mat.use_nodes = True
    bsdf = mat.node_tree.nodes["Principled BSDF"]
    bsdf.inputs["Base Color"].default_value = color
    mat.diffuse_color = color
    return mat


QUAD_UVS = [(0.0, 0.0), (1.0, 0.0), (1.0, 1.0), (0.0, 1.0)]

CUBE_VERTS = [
    (-1, -1, -1), (1, -1, -1), (1, 1, -1), (-1, 1, -1),
    (-1, -1, 1), (1, -1, 1), (1, 1, 1), (-1, 1, 1),
]
CUBE_FACES = [
    (0, 3, 2, 1),  # bottom
    (4, 5, 6, 7),  # top
    (0, 1, 5, 4),  # front
    (1, 2, 6, 5),  # right
    (2, 3, 7, 6),  # back
    (3, 0, 4, 7),  # left
]


def export(path, object_types, **extra):
    options = dict(
        filepath=path,
        use_selection=False,
        object_types=object_types,
        path_mode='RELATIVE',
        embed_textures=False,
        add_leaf_bones=False,
        bake_anim=False,
        use_custom_props=False,
        axis_forward='-Z',
        axis_up='Y',
        global_scale=1.0,
    )
    options.update(extra)
    result = bpy.ops.export_scene.fbx(**options)
    check(result == {'FINISHED'}, "export of " + path)


def fmt(v):
    return "(" + ", ".join("%g" % round(c, 6) for c in v) + ")"


def report_objects(scene):
    for obj in sorted(scene.objects, key=lambda o: o.name):
        parent = obj.parent.name if obj.parent else "-"
        rot = [math.degrees(a) for a in obj.rotation_euler]
        print("  object %-14s type=%-8s parent=%-8s loc=%s rot_deg=%s scale=%s"
              % (obj.name, obj.type, parent, fmt(obj.location), fmt(rot), fmt(obj.scale)))
        if obj.type == 'MESH':
            me = obj.data
            mats = [s.material.name if s.material else "-" for s in obj.material_slots]
            print("    mesh data=%s vertices=%d polygons=%d loops=%d uv_layers=%s materials=%s"
                  % (me.name, len(me.vertices), len(me.polygons), len(me.loops),
                     [l.name for l in me.uv_layers], mats))
            print("    material index per polygon=%s" % [p.material_index for p in me.polygons])
            for group in obj.vertex_groups:
                members = [(v.index, round(g.weight, 6)) for v in me.vertices
                           for g in v.groups if g.group == group.index]
                print("    vertex group %s (vertex, weight)=%s" % (group.name, members))
            for mod in obj.modifiers:
                print("    modifier %s type=%s" % (mod.name, mod.type))
        if obj.type == 'ARMATURE':
            for bone in obj.data.bones:
                print("    bone %-6s parent=%-6s head_local=%s tail_local=%s"
                      % (bone.name, bone.parent.name if bone.parent else "-",
                         fmt(bone.head_local), fmt(bone.tail_local)))
        for key in obj.keys():
            value = obj[key]
            print("    custom property %s = %r (%s)" % (key, value, type(value).__name__))
        ad = obj.animation_data
        if ad and ad.action:
            act = ad.action
            print("    action %s frame_range=%s fcurves=%d" % (act.name, fmt(act.frame_range), len(act.fcurves)))
            for fc in act.fcurves:
                frames = [kp.co[0] for kp in fc.keyframe_points]
                values = [round(kp.co[1], 6) for kp in fc.keyframe_points]
                print("      fcurve %s[%d] keys=%d frames=%s values=%s"
                      % (fc.data_path, fc.array_index, len(frames), frames, values))


# (a) one cube with normals, UVs and a material whose base colour is a file texture
def scene_textured_cube(outdir):
    scene = reset_scene("TexturedCubeScene")
    tex_path = os.path.join(outdir, TEXTURE_NAME)
    write_checker_png(tex_path)

    mesh = make_mesh("TexturedCube", CUBE_VERTS, CUBE_FACES, uvs=QUAD_UVS)
    for poly in mesh.polygons:
        poly.use_smooth = False
    obj = link(bpy.data.objects.new("TexturedCube", mesh))

    mat = make_material("CheckerMaterial", (1.0, 1.0, 1.0, 1.0))
    nodes = mat.node_tree.nodes
    tex = nodes.new("ShaderNodeTexImage")
    tex.name = "CheckerTexture"
    image = bpy.data.images.load(tex_path)
    image.name = TEXTURE_NAME
    tex.image = image
    mat.node_tree.links.new(tex.outputs["Color"], nodes["Principled BSDF"].inputs["Base Color"])
    mesh.materials.append(mat)

    check(image.size[0] == 8 and image.size[1] == 8, "texture is 8x8")
    export(os.path.join(outdir, "textured_cube.fbx"), {'MESH'})
    report_objects(scene)
    print("  texture image %s filepath=%s size=%s" % (image.name, image.filepath, tuple(image.size)))


# (b) a strip of four quads using three materials on different faces
def scene_multi_material(outdir):
    scene = reset_scene("MultiMaterialScene")
    verts = [(x, y, 0.0) for x in range(5) for y in (0, 1)]
    faces = [(2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1) for i in range(4)]
    mesh = make_mesh("MultiMaterialStrip", verts, faces, uvs=QUAD_UVS)
    obj = link(bpy.data.objects.new("MultiMaterialStrip", mesh))
    obj.location = (0.0, 0.0, 0.5)
    for name, color in (("Red", (0.8, 0.0, 0.0, 1.0)),
                        ("Green", (0.0, 0.8, 0.0, 1.0)),
                        ("Blue", (0.0, 0.0, 0.8, 1.0))):
        mesh.materials.append(make_material(name, color))
    for poly, index in zip(mesh.polygons, (0, 1, 2, 0)):
        poly.material_index = index
    export(os.path.join(outdir, "multi_material.fbx"), {'MESH'})
    report_objects(scene)


# (c) an armature of four chained bones, a mesh skinned to it, and one action
BONES = [  # name, parent, head, tail
    ("Root", None, (0.0, 0.0, 0.0), (0.0, 0.0, 1.0)),
    ("Spine", "Root", (0.0, 0.0, 1.0), (0.0, 0.0, 2.0)),
    ("Neck", "Spine", (0.0, 0.0, 2.0), (0.0, 0.0, 3.0)),
    ("Head", "Neck", (0.0, 0.0, 3.0), (0.0, 0.0, 4.0)),
]


def scene_skinned_armature(outdir):
    scene = reset_scene("SkinnedScene")
    scene.frame_start = 1
    scene.frame_end = 20

    arm = bpy.data.armatures.new("RigData")
    rig = link(bpy.data.objects.new("Rig", arm))
    bpy.context.view_layer.objects.active = rig
    rig.select_set(True)
    bpy.ops.object.mode_set(mode='EDIT')
    for name, parent, head, tail in BONES:
        eb = arm.edit_bones.new(name)
        eb.head = head
        eb.tail = tail
        eb.roll = 0.0
        if parent:
            eb.parent = arm.edit_bones[parent]
            eb.use_connect = True
    bpy.ops.object.mode_set(mode='OBJECT')

    # A square column of 5 rings (z = 0..4), 4 sides, closed with two caps.
    verts = []
    for z in range(5):
        verts += [(-0.25, -0.25, z), (0.25, -0.25, z), (0.25, 0.25, z), (-0.25, 0.25, z)]
    faces = []
    for z in range(4):
        b = 4 * z
        for s in range(4):
            faces.append((b + s, b + (s + 1) % 4, b + 4 + (s + 1) % 4, b + 4 + s))
    faces.append((3, 2, 1, 0))
    faces.append((16, 17, 18, 19))
    mesh = make_mesh("SkinnedColumn", verts, faces, uvs=QUAD_UVS)
    body = link(bpy.data.objects.new("SkinnedColumn", mesh))
    body.parent = rig
    mesh.materials.append(make_material("SkinMaterial", (0.6, 0.5, 0.4, 1.0)))

    groups = {name: body.vertex_groups.new(name=name) for name, _, _, _ in BONES}
    # Ring z sits on the joint between bone z-1 and bone z: split its weight.
    for z in range(5):
        ring = [4 * z + s for s in range(4)]
        below = BONES[z - 1][0] if z > 0 else None
        above = BONES[z][0] if z < 4 else None
        if below and above:
            groups[below].add(ring, 0.5, 'REPLACE')
            groups[above].add(ring, 0.5, 'REPLACE')
        else:
            groups[below or above].add(ring, 1.0, 'REPLACE')
    mod = body.modifiers.new("Armature", 'ARMATURE')
    mod.object = rig
    mod.use_vertex_groups = True

    action = bpy.data.actions.new("RigAction")
    rig.animation_data_create()
    rig.animation_data.action = action
    keys = {  # bone -> [(frame, X rotation in degrees)]
        "Spine": [(1, 0.0), (10, 30.0), (20, 0.0)],
        "Neck": [(1, 0.0), (10, -20.0), (20, 0.0)],
    }
    for bone_name, frames in keys.items():
        pb = rig.pose.bones[bone_name]
        pb.rotation_mode = 'XYZ'
        for frame, degrees in frames:
            pb.rotation_euler = Euler((math.radians(degrees), 0.0, 0.0), 'XYZ')
            pb.keyframe_insert("rotation_euler", frame=frame, group=bone_name)
    for fc in action.fcurves:
        for kp in fc.keyframe_points:
            kp.interpolation = 'LINEAR'
    check(rig.animation_data.action.name == "RigAction", "action assigned")
    scene.frame_set(1)

    export(os.path.join(outdir, "skinned_armature.fbx"), {'ARMATURE', 'MESH'},
           bake_anim=True, bake_anim_use_all_bones=True,
           bake_anim_use_nla_strips=False, bake_anim_use_all_actions=False,
           bake_anim_force_startend_keying=True, bake_anim_step=1.0,
           bake_anim_simplify_factor=0.0)
    report_objects(scene)
    print("  scene frames %d..%d fps=%d" % (scene.frame_start, scene.frame_end, scene.render.fps))


# (d) three levels of empties with translations, rotations and scales, plus custom properties
def scene_empties(outdir):
    scene = reset_scene("EmptiesScene")
    spec = [  # name, parent, location, rotation (degrees, XYZ), scale
        ("Top", None, (1.0, 2.0, 3.0), (0.0, 0.0, 90.0), (1.0, 1.0, 1.0)),
        ("Middle", "Top", (0.0, 4.0, 0.0), (45.0, 0.0, 0.0), (2.0, 2.0, 2.0)),
        ("Bottom", "Middle", (0.5, 0.0, -1.0), (0.0, 30.0, 0.0), (1.0, 0.5, 3.0)),
        ("Sibling", "Top", (-2.0, 0.0, 0.0), (0.0, 0.0, 0.0), (1.0, 1.0, 1.0)),
    ]
    for name, parent, loc, rot, scale in spec:
        obj = link(bpy.data.objects.new(name, None))
        obj.empty_display_type = 'PLAIN_AXES'
        if parent:
            obj.parent = bpy.data.objects[parent]
            obj.matrix_parent_inverse.identity()
        obj.location = loc
        obj.rotation_mode = 'XYZ'
        obj.rotation_euler = Euler([math.radians(a) for a in rot], 'XYZ')
        obj.scale = scale
    bottom = bpy.data.objects["Bottom"]
    bottom["kiva_tag"] = "leaf node"
    bottom["kiva_weight"] = 2.5
    bottom["kiva_count"] = 7
    check(Vector(bottom.location) == Vector((0.5, 0.0, -1.0)), "Bottom location")
    export(os.path.join(outdir, "empties_hierarchy.fbx"), {'EMPTY'}, use_custom_props=True)
    report_objects(scene)


# The 20-byte binary magic, a NUL, 0x1A and the little-endian flag.
BINARY_MAGIC = bytes.fromhex("4B 61 79 64 61 72 61 20 46 42 58 20 42 69 6E 61 72 79 20 20 00 1A 00")


def main():
    outdir = out_dir()
    print("Blender %s" % bpy.app.version_string)
    if os.environ.get("PYTHONHASHSEED") != "0":
        print("warning: PYTHONHASHSEED is not 0, object ids will differ from the committed files")
    for build in (scene_textured_cube, scene_multi_material, scene_skinned_armature, scene_empties):
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
