# Builds the demo scene in Blender and exports it as binary FBX files, in the
# engine's axes and in two other axis and unit variants, and writes what
# Blender itself evaluates for the scene (world-space corners with normals
# and UVs, bone matrices at rest and in a few frames), so that tests compare
# the converter's output with Blender's own world.
#
# The scene: a textured crate, a normal-mapped wall, a column whose faces
# carry two materials, and a worm skinned to a chain of three bones that
# bends over one second at 60 frames per second.
#
# Run by ./regenerate (Blender is used only as a black-box exporter):
#   PYTHONHASHSEED=0 blender -b --factory-startup --python-exit-code 1 \
#       -P make_scene.py -- OUTDIR
#
# Written to OUTDIR:
#   demo.fbx            up +Z, front -Y, metres (the engine's own axes)
#   demo_yup_cm.fbx     up +Y, centimetres
#   demo_yup_half.fbx   up +Y, global scale 0.5 in the file's unit
#   demo.facts          Blender's data, Z-up metres, six decimals, one fact
#                       per line ("key: values"; matrices row by row)
#   *.png               the textures
import math
import os
import struct
import sys
import zlib

import bpy
from mathutils import Matrix


def out_dir():
    argv = sys.argv
    if "--" not in argv or len(argv) <= argv.index("--") + 1:
        raise SystemExit("usage: blender -b --factory-startup --python-exit-code 1 -P make_scene.py -- OUTDIR")
    path = os.path.abspath(argv[argv.index("--") + 1])
    os.makedirs(path, exist_ok=True)
    return path


def check(cond, what):
    if not cond:
        raise RuntimeError("scene check failed: " + what)


def write_png(path, size, pixel):
    """A size x size RGB PNG with pixel(x, y) -> (r, g, b), the same bytes on every run."""
    rows = bytearray()
    for y in range(size):
        rows.append(0)
        for x in range(size):
            rows += bytes(pixel(x, y))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    png = b"\x89PNG\r\n\x1a\n"
    png += chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(bytes(rows), 9))
    png += chunk(b"IEND", b"")
    with open(path, "wb") as f:
        f.write(png)


def write_textures(outdir):
    def crate(x, y):
        edge = x < 3 or y < 3 or x > 28 or y > 28 or abs(x - y) < 2
        return (90, 60, 30) if edge else (170, 120, 60)

    def brick(x, y):
        row = y // 8
        mortar = y % 8 == 0 or (x + (4 if row % 2 else 0)) % 16 == 0
        return (200, 200, 190) if mortar else (150 + (x * 7 + y * 3) % 30, 50, 40)

    def brick_normal(x, y):
        # Mortar lines are grooves: normals lean away from them.
        row = y // 8
        dx = -60 if (x + (4 if row % 2 else 0)) % 16 == 1 else (60 if (x + (4 if row % 2 else 0)) % 16 == 15 else 0)
        dy = -60 if y % 8 == 1 else (60 if y % 8 == 7 else 0)
        return (128 + dx, 128 + dy, 230)

    def worm(x, y):
        return (120 + (y % 4) * 20, 160, 90)

    textures = {"crate_diffuse.png": crate, "brick_diffuse.png": brick, "brick_normal.png": brick_normal,
                "worm_diffuse.png": worm}
    for name, pixel in textures.items():
        write_png(os.path.join(outdir, name), 32, pixel)
    return list(textures)


def build_scene(outdir):
    bpy.ops.wm.read_factory_settings(use_empty=True)
    scene = bpy.context.scene
    scene.name = "DemoScene"
    scene.unit_settings.system = 'METRIC'
    scene.unit_settings.scale_length = 1.0
    scene.render.fps = 60
    scene.frame_start = 0
    scene.frame_end = 60

    def material(name, base=None, normal=None, color=(0.8, 0.8, 0.8, 1.0)):
        mat = bpy.data.materials.new(name)
        mat.use_nodes = True
        mat.diffuse_color = color
        nodes, links = mat.node_tree.nodes, mat.node_tree.links
        bsdf = nodes["Principled BSDF"]
        bsdf.inputs["Base Color"].default_value = color
        if base:
            node = nodes.new("ShaderNodeTexImage")
            node.image = bpy.data.images.load(os.path.join(outdir, base))
            links.new(node.outputs["Color"], bsdf.inputs["Base Color"])
        if normal:
            node = nodes.new("ShaderNodeTexImage")
            node.image = bpy.data.images.load(os.path.join(outdir, normal))
            node.image.colorspace_settings.name = 'Non-Color'
            normal_map = nodes.new("ShaderNodeNormalMap")
            links.new(node.outputs["Color"], normal_map.inputs["Color"])
            links.new(normal_map.outputs["Normal"], bsdf.inputs["Normal"])
        return mat

    # A textured crate, turned and lifted.
    bpy.ops.mesh.primitive_cube_add(size=1.0, location=(-2.0, 0.0, 0.5), rotation=(0.0, 0.0, math.radians(20)))
    crate = bpy.context.active_object
    crate.name = "Crate"
    crate.data.name = "CrateMesh"
    crate.data.materials.append(material("CrateMaterial", base="crate_diffuse.png"))

    # A normal-mapped wall with a non-uniform scale.
    bpy.ops.mesh.primitive_plane_add(size=2.0, location=(0.0, 2.0, 1.0), rotation=(math.radians(90), 0.0, 0.0))
    wall = bpy.context.active_object
    wall.name = "Wall"
    wall.data.name = "WallMesh"
    wall.scale = (2.0, 1.0, 1.0)
    wall.data.materials.append(material("BrickMaterial", base="brick_diffuse.png", normal="brick_normal.png"))

    # A column of eight sides, its faces painted alternately in two
    # materials: one plain, one textured.
    bpy.ops.mesh.primitive_cylinder_add(vertices=8, radius=0.4, depth=2.0, location=(2.0, 0.0, 1.0))
    column = bpy.context.active_object
    column.name = "Column"
    column.data.name = "ColumnMesh"
    column.data.materials.append(material("Paint", color=(0.1, 0.3, 0.8, 1.0)))
    column.data.materials.append(bpy.data.materials["CrateMaterial"])
    for i, poly in enumerate(column.data.polygons):
        poly.material_index = i % 2
        poly.use_smooth = poly.loop_total == 4

    # A worm of eight segments along X, skinned to a chain of three bones
    # that bends over one second.
    arm = bpy.data.armatures.new("RigData")
    rig = bpy.data.objects.new("Rig", arm)
    scene.collection.objects.link(rig)
    bpy.context.view_layer.objects.active = rig
    rig.select_set(True)
    bpy.ops.object.mode_set(mode='EDIT')
    bones = ["Root", "Middle", "Tip"]
    for i, name in enumerate(bones):
        eb = arm.edit_bones.new(name)
        eb.head = (i * 1.0, -3.0, 0.5)
        eb.tail = ((i + 1) * 1.0, -3.0, 0.5)
        if i:
            eb.parent = arm.edit_bones[bones[i - 1]]
            eb.use_connect = True
    bpy.ops.object.mode_set(mode='OBJECT')

    verts, faces = [], []
    segments = 8
    for s in range(segments + 1):
        x = 3.0 * s / segments
        for y, z in ((-0.25, 0.25), (0.25, 0.25), (0.25, 0.75), (-0.25, 0.75)):
            verts.append((x, y - 3.0, z))
    for s in range(segments):
        a, b = 4 * s, 4 * (s + 1)
        for k in range(4):
            faces.append((a + k, a + (k + 1) % 4, b + (k + 1) % 4, b + k))
    mesh = bpy.data.meshes.new("WormMesh")
    mesh.from_pydata(verts, [], faces)
    uv = mesh.uv_layers.new(name="UVMap")
    for poly in mesh.polygons:
        for corner, loop_index in enumerate(poly.loop_indices):
            v = verts[mesh.loops[loop_index].vertex_index]
            uv.data[loop_index].uv = (v[0] / 3.0, (corner in (2, 3)) * 1.0)
    mesh.update()
    worm = bpy.data.objects.new("Worm", mesh)
    scene.collection.objects.link(worm)
    worm.parent = rig
    worm.data.materials.append(material("WormMaterial", base="worm_diffuse.png"))
    groups = [worm.vertex_groups.new(name=name) for name in bones]
    for i, v in enumerate(verts):
        t = v[0]  # 0 .. 3 along the chain
        for b in range(3):
            w = max(0.0, 1.0 - abs(t - (b + 0.5)) / 1.2)
            if w > 0.0:
                groups[b].add([i], w, 'REPLACE')
    mod = worm.modifiers.new("Armature", 'ARMATURE')
    mod.object = rig

    rig.animation_data_create()
    action = bpy.data.actions.new("Bend")
    rig.animation_data.action = action
    for name in ("Middle", "Tip"):
        pb = rig.pose.bones[name]
        pb.rotation_mode = 'XYZ'
        for frame, angle in ((0, 0.0), (30, 35.0), (60, 0.0)):
            pb.rotation_euler = (0.0, 0.0, math.radians(angle))
            pb.keyframe_insert("rotation_euler", frame=frame)
    pb = rig.pose.bones["Root"]
    for frame, z in ((0, 0.0), (60, 0.5)):
        pb.location = (0.0, 0.0, z)
        pb.keyframe_insert("location", frame=frame)
    # Linear keys: the exporter's key reduction then keeps the curves exact.
    for curve in action.fcurves:
        for key in curve.keyframe_points:
            key.interpolation = 'LINEAR'
    return {"crate": crate, "wall": wall, "column": column, "worm": worm, "rig": rig, "bones": bones}


def export(path, axis_forward, axis_up, global_scale, apply_scale):
    result = bpy.ops.export_scene.fbx(
        filepath=path, use_selection=False, object_types={'ARMATURE', 'MESH'}, path_mode='RELATIVE',
        embed_textures=False, add_leaf_bones=False, bake_anim=True, bake_anim_use_all_actions=False,
        bake_anim_use_nla_strips=False, bake_anim_force_startend_keying=True, bake_anim_simplify_factor=1.0,
        use_custom_props=False, axis_forward=axis_forward, axis_up=axis_up, global_scale=global_scale,
        apply_scale_options=apply_scale, use_mesh_modifiers=False, mesh_smooth_type='FACE', use_tspace=False)
    check(result == {'FINISHED'}, "export of " + path)


def num(v):
    v = round(v, 6)
    return "0" if v == 0 else ("%.6f" % v).rstrip("0").rstrip(".")


def vec(values):
    return " ".join(num(c) for c in values)


def matrix(m):
    # Row by row.
    return " ".join(num(m[r][c]) for r in range(4) for c in range(4))


def write_facts(path, objects):
    scene = bpy.context.scene
    lines = []
    scene.frame_set(0)
    rig, bones = objects["rig"], objects["bones"]
    # The rest pose for meshes and bind matrices.
    rig.data.pose_position = 'REST'
    bpy.context.view_layer.update()
    for key in ("crate", "wall", "column", "worm"):
        obj = objects[key]
        me = obj.data
        me.calc_normals_split()
        world = obj.matrix_world
        normal_matrix = world.to_3x3().inverted().transposed()
        lines.append("mesh %s: %d %d" % (obj.name, len(me.polygons), len(me.loops)))
        lines.append("world %s: %s" % (obj.name, matrix(world)))
        corners = [world @ v.co for v in me.vertices]
        lo = [min(c[i] for c in corners) for i in range(3)]
        hi = [max(c[i] for c in corners) for i in range(3)]
        lines.append("bounds %s: %s %s" % (obj.name, vec(lo), vec(hi)))
        area = 0.0
        for poly in me.polygons:
            ring = [world @ me.vertices[v].co for v in poly.vertices]
            for k in range(1, len(ring) - 1):
                area += (ring[k] - ring[0]).cross(ring[k + 1] - ring[0]).length / 2.0
        lines.append("area %s: %s" % (obj.name, num(area)))
        # Every corner: world position, world normal, UV of the first set.
        uv = me.uv_layers[0].data if me.uv_layers else None
        for loop in me.loops:
            p = world @ me.vertices[loop.vertex_index].co
            n = (normal_matrix @ loop.normal).normalized()
            t = uv[loop.index].uv if uv else (0.0, 0.0)
            lines.append("corner %s: %s %s %s" % (obj.name, vec(p), vec(n), vec(t)))
    worm = objects["worm"]
    for v in worm.data.vertices:
        groups = sorted(((worm.vertex_groups[g.group].name, g.weight) for g in v.groups), key=lambda e: -e[1])
        lines.append("weights: %s %s" % (vec(worm.matrix_world @ v.co),
                                         " ".join("%s %s" % (bones.index(n), num(w)) for n, w in groups)))
    for name in bones:
        lines.append("bind %s: %s" % (name, matrix(rig.matrix_world @ rig.data.bones[name].matrix_local)))
    rig.data.pose_position = 'POSE'
    for frame in range(60):
        scene.frame_set(frame)
        for name in bones:
            pb = rig.pose.bones[name]
            lines.append("pose %d %s: %s" % (frame, name, matrix(rig.matrix_world @ pb.matrix)))
    scene.frame_set(0)
    with open(path, "w") as f:
        f.write("\n".join(lines) + "\n")


def main():
    outdir = out_dir()
    print("Blender %s" % bpy.app.version_string)
    write_textures(outdir)
    objects = build_scene(outdir)
    # Static transforms are written at the current frame: make that the
    # rest pose, so that a node's static transform is its bind pose.
    bpy.context.scene.frame_set(0)
    export(os.path.join(outdir, "demo.fbx"), 'Y', 'Z', 1.0, 'FBX_SCALE_UNITS')
    export(os.path.join(outdir, "demo_yup_cm.fbx"), '-Z', 'Y', 1.0, 'FBX_SCALE_NONE')
    export(os.path.join(outdir, "demo_yup_half.fbx"), '-Z', 'Y', 0.5, 'FBX_SCALE_CUSTOM')
    write_facts(os.path.join(outdir, "demo.facts"), objects)


main()
