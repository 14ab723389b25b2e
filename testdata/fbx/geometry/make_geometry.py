# Builds small meshes, skins and materials in Blender, exports each scene as a
# binary FBX file and writes beside it what Blender itself says about the scene
# (NAME.facts), so that tests compare the reader with Blender's own data.
#
# Run headless (Blender is used only as a black-box exporter):
#   PYTHONHASHSEED=0 blender -b --factory-startup --python-exit-code 1 \
#       -P make_geometry.py -- OUTDIR
#
# Facts files hold one fact per line, "key: value value ...". Keys that name
# a polygon corner use the polygon index and the corner's place in it
# ("normal 3 1: x y z" is corner 1 of polygon 3). Vectors are rounded to six
# decimals. Object ids in the files come from Python string hashes, so keep
# PYTHONHASHSEED=0; only the creation time stamp and absolute texture paths
# change between runs.

import math
import os
import struct
import sys
import zlib

import bpy


def out_dir():
    argv = sys.argv
    if "--" not in argv or len(argv) <= argv.index("--") + 1:
        raise SystemExit("usage: blender -b --factory-startup --python-exit-code 1 "
                         "-P make_geometry.py -- OUTDIR")
    path = os.path.abspath(argv[argv.index("--") + 1])
    os.makedirs(path, exist_ok=True)
    return path


def check(cond, what):
    if not cond:
        raise RuntimeError("scene check failed: " + what)


def write_png(path, colors, size=4):
    """A size x size RGB PNG whose rows cycle through `colors`, byte for byte the same on every run."""
    rows = bytearray()
    for y in range(size):
        rows.append(0)
        for x in range(size):
            rows += bytes(colors[(x + y) % len(colors)])

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
    scene.unit_settings.system = 'METRIC'
    scene.unit_settings.scale_length = 1.0
    return scene


def link(obj):
    bpy.context.scene.collection.objects.link(obj)
    return obj


def make_mesh(name, verts, faces, uvs=None):
    mesh = bpy.data.meshes.new(name)
    mesh.from_pydata(verts, [], faces)
    if uvs is not None:
        layer = mesh.uv_layers.new(name="UVMap")
        for poly in mesh.polygons:
            for corner, loop_index in enumerate(poly.loop_indices):
                layer.data[loop_index].uv = uvs(poly.index, corner)
    mesh.update()
    check(mesh.validate() is False, name + " mesh is valid")
    return mesh


def make_material(name, color):
    mat = bpy.data.materials.new(name)
    mat.use_nodes = True
    mat.node_tree.nodes["Principled BSDF"].inputs["Base Color"].default_value = color
    mat.diffuse_color = color
    return mat


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
        use_mesh_modifiers=False,
        mesh_smooth_type='OFF',
        use_tspace=False,
    )
    options.update(extra)
    result = bpy.ops.export_scene.fbx(**options)
    check(result == {'FINISHED'}, "export of " + path)


def num(v):
    v = round(v, 6)
    return "0" if v == 0 else ("%.6f" % v).rstrip("0").rstrip(".")


def vec(values):
    return " ".join(num(c) for c in values)


class Facts:
    def __init__(self, path):
        self.path = path
        self.lines = []

    def add(self, key, *values):
        self.lines.append(key + ": " + " ".join(str(v) for v in values))

    def write(self):
        with open(self.path, "w") as f:
            f.write("\n".join(self.lines) + "\n")


def mesh_facts(facts, obj, corners):
    """Counts, polygon sizes, material slots and indices, UV sets, and the
    normal and UV of the corners listed, all from Blender's data."""
    me = obj.data
    me.calc_normals_split()
    facts.add("mesh", obj.name, me.name)
    facts.add("controlPoints", len(me.vertices))
    facts.add("polygons", len(me.polygons))
    facts.add("polygonVertices", len(me.loops))
    facts.add("polygonSizes", *[p.loop_total for p in me.polygons])
    facts.add("uvSets", *[l.name for l in me.uv_layers])
    facts.add("materials", *[s.material.name for s in obj.material_slots])
    facts.add("materialIndices", *[p.material_index for p in me.polygons])
    for i, v in enumerate(me.vertices[:4]):
        facts.add("controlPoint %d" % i, vec(v.co))
    for p, k in corners:
        loop = me.loops[me.polygons[p].loop_start + k]
        facts.add("corner %d %d" % (p, k), loop.vertex_index)
        facts.add("normal %d %d" % (p, k), vec(loop.normal))
        if me.uv_layers:
            facts.add("uv %d %d" % (p, k), vec(me.uv_layers[0].data[loop.index].uv))


# A cube of six flat quads: every corner has its face's normal.
def scene_flat_cube(outdir):
    reset_scene("FlatCubeScene")
    bpy.ops.mesh.primitive_cube_add(size=2.0)
    obj = bpy.context.active_object
    obj.name = "FlatCube"
    obj.data.name = "FlatCubeMesh"
    for p in obj.data.polygons:
        p.use_smooth = False
    obj.data.materials.append(make_material("CubeMaterial", (0.2, 0.4, 0.6, 1.0)))
    export(os.path.join(outdir, "flat_cube.fbx"), {'MESH'})
    facts = Facts(os.path.join(outdir, "flat_cube.facts"))
    mesh_facts(facts, obj, [(0, 0), (0, 3), (1, 2), (5, 1)])
    facts.write()


# A smooth UV sphere: shared normals at every vertex, and a UV seam where the
# texture wraps, so that one control point has corners with different UVs.
# Built from explicit lists: Blender's own sphere comes out with its polygons
# in a different order on each run.
def scene_uv_sphere(outdir):
    reset_scene("SphereScene")
    segments, rings = 12, 6
    verts = [(0.0, 0.0, 1.0)]
    for r in range(1, rings):
        theta = math.pi * r / rings
        for s in range(segments):
            phi = 2.0 * math.pi * s / segments
            verts.append((math.sin(theta) * math.cos(phi), math.sin(theta) * math.sin(phi), math.cos(theta)))
    verts.append((0.0, 0.0, -1.0))
    south = len(verts) - 1

    def ring(r, s):
        return 1 + (r - 1) * segments + s % segments

    faces, uvs = [], []
    for s in range(segments):
        faces.append((0, ring(1, s), ring(1, s + 1)))
        uvs.append([((s + 0.5) / segments, 1.0), (s / segments, 1.0 - 1.0 / rings),
                    ((s + 1.0) / segments, 1.0 - 1.0 / rings)])
    for r in range(1, rings - 1):
        for s in range(segments):
            faces.append((ring(r, s), ring(r + 1, s), ring(r + 1, s + 1), ring(r, s + 1)))
            top, bottom = 1.0 - r / rings, 1.0 - (r + 1.0) / rings
            uvs.append([(s / segments, top), (s / segments, bottom), ((s + 1.0) / segments, bottom),
                        ((s + 1.0) / segments, top)])
    for s in range(segments):
        faces.append((ring(rings - 1, s), south, ring(rings - 1, s + 1)))
        uvs.append([(s / segments, 1.0 / rings), ((s + 0.5) / segments, 0.0), ((s + 1.0) / segments, 1.0 / rings)])
    mesh = make_mesh("SphereMesh", verts, faces, uvs=lambda p, k: uvs[p][k])
    for p in mesh.polygons:
        p.use_smooth = True
    obj = link(bpy.data.objects.new("Sphere", mesh))
    uv = mesh.uv_layers[0].data
    # Control points whose corners carry more than one UV: the seam and the poles.
    uvs_of = {}
    for loop in mesh.loops:
        uvs_of.setdefault(loop.vertex_index, set()).add(tuple(round(c, 6) for c in uv[loop.index].uv))
    seam = sorted(v for v, s in uvs_of.items() if len(s) > 1)
    check(len(seam) == rings + 1, "the sphere has a UV seam")
    export(os.path.join(outdir, "uv_sphere.fbx"), {'MESH'})
    facts = Facts(os.path.join(outdir, "uv_sphere.facts"))
    mesh_facts(facts, obj, [(0, 0), (0, 1), (13, 2), (30, 3), (62, 1)])
    facts.add("seamControlPoints", *seam)
    facts.write()


# One mesh, three materials on different faces of a cube.
def scene_face_materials(outdir):
    reset_scene("FaceMaterialScene")
    bpy.ops.mesh.primitive_cube_add(size=2.0)
    obj = bpy.context.active_object
    obj.name = "PaintedCube"
    obj.data.name = "PaintedCubeMesh"
    for name, color in (("Red", (0.8, 0.0, 0.0, 1.0)), ("Green", (0.0, 0.8, 0.0, 1.0)),
                        ("Blue", (0.0, 0.0, 0.8, 1.0))):
        obj.data.materials.append(make_material(name, color))
    for poly, index in zip(obj.data.polygons, (0, 1, 2, 0, 1, 2)):
        poly.material_index = index
    export(os.path.join(outdir, "face_materials.fbx"), {'MESH'})
    facts = Facts(os.path.join(outdir, "face_materials.facts"))
    mesh_facts(facts, obj, [(2, 0)])
    for mat in obj.data.materials:
        facts.add("diffuse %s" % mat.name, vec(mat.diffuse_color[:3]))
    facts.write()


# Polygons of 3, 4, 5 and 6 corners, one of them concave (an L).
def scene_ngons(outdir):
    reset_scene("NgonScene")
    verts = [
        (0, 0, 0), (1, 0, 0), (0.5, 1, 0),                          # triangle
        (2, 0, 0), (3, 0, 0), (3, 1, 0), (2, 1, 0),                 # quad
        (4, 0, 0), (5, 0, 0), (5.3, 0.8, 0), (4.5, 1.4, 0), (3.7, 0.8, 0),  # pentagon
        (6, 0, 0), (8, 0, 0), (8, 1, 0), (7, 1, 0), (7, 2, 0), (6, 2, 0),    # L hexagon
    ]
    faces = [(0, 1, 2), (3, 4, 5, 6), (7, 8, 9, 10, 11), (12, 13, 14, 15, 16, 17)]
    mesh = make_mesh("NgonMesh", verts, faces,
                     uvs=lambda p, k: (verts[faces[p][k]][0] / 8.0, verts[faces[p][k]][1] / 2.0))
    obj = link(bpy.data.objects.new("Ngons", mesh))
    export(os.path.join(outdir, "ngons.fbx"), {'MESH'})
    facts = Facts(os.path.join(outdir, "ngons.facts"))
    mesh_facts(facts, obj, [(2, 4), (3, 5)])
    facts.write()


# A strip skinned to six bones; each vertex takes up to six influences.
def scene_skinned(outdir):
    reset_scene("SkinScene")
    arm = bpy.data.armatures.new("RigData")
    rig = link(bpy.data.objects.new("Rig", arm))
    bpy.context.view_layer.objects.active = rig
    rig.select_set(True)
    bpy.ops.object.mode_set(mode='EDIT')
    bones = ["Bone%d" % i for i in range(6)]
    for i, name in enumerate(bones):
        eb = arm.edit_bones.new(name)
        eb.head = (i, 0.0, 0.0)
        eb.tail = (i + 1, 0.0, 0.0)
        if i:
            eb.parent = arm.edit_bones[bones[i - 1]]
            eb.use_connect = True
    bpy.ops.object.mode_set(mode='OBJECT')

    verts = [(x * 0.5, y, 0.0) for x in range(13) for y in (-0.5, 0.5)]
    faces = [(2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1) for i in range(12)]
    mesh = make_mesh("StripMesh", verts, faces, uvs=lambda p, k: ((p + (k in (1, 2))) / 12.0, float(k >= 2)))
    body = link(bpy.data.objects.new("Strip", mesh))
    body.parent = rig
    groups = [body.vertex_groups.new(name=name) for name in bones]
    influences = {}
    for v in range(len(verts)):
        # Vertex v takes 1 + v % 6 bones, starting at bone v % 6, with falling weights.
        count = 1 + v % 6
        raw = [count - j for j in range(count)]
        total = float(sum(raw))
        influences[v] = count
        for j in range(count):
            groups[(v + j) % 6].add([v], raw[j] / total, 'REPLACE')
    mod = body.modifiers.new("Armature", 'ARMATURE')
    mod.object = rig
    check(max(len(v.groups) for v in mesh.vertices) == 6, "six influences on a vertex")
    export(os.path.join(outdir, "skinned.fbx"), {'ARMATURE', 'MESH'})
    facts = Facts(os.path.join(outdir, "skinned.facts"))
    mesh_facts(facts, body, [])
    facts.add("bones", *bones)
    facts.add("maxInfluences", max(len(v.groups) for v in mesh.vertices))
    for g in body.vertex_groups:
        members = [(v.index, e.weight) for v in mesh.vertices for e in v.groups if e.group == g.index]
        facts.add("group %s indices" % g.name, *[m[0] for m in members])
        facts.add("group %s weights" % g.name, *[num(m[1]) for m in members])
        facts.add("group %s weightSum" % g.name, num(sum(m[1] for m in members)))
    for v in (0, 5, 11):
        facts.add("vertex %d weightSum" % v, num(sum(e.weight for e in mesh.vertices[v].groups)))
    facts.write()


# A material whose base colour, normal map and specular level come from images.
def textured_material(outdir):
    base = "tex_base.png"
    normal = "tex_normal.png"
    spec = "tex_spec.png"
    write_png(os.path.join(outdir, base), [(220, 40, 40), (40, 220, 40)])
    write_png(os.path.join(outdir, normal), [(128, 128, 255)])
    write_png(os.path.join(outdir, spec), [(90, 90, 90), (200, 200, 200)])

    bpy.ops.mesh.primitive_plane_add(size=2.0)
    obj = bpy.context.active_object
    obj.name = "Panel"
    obj.data.name = "PanelMesh"
    mat = make_material("PanelMaterial", (1.0, 1.0, 1.0, 1.0))
    nodes = mat.node_tree.nodes
    links = mat.node_tree.links
    bsdf = nodes["Principled BSDF"]

    def image_node(file_name, non_color):
        node = nodes.new("ShaderNodeTexImage")
        node.image = bpy.data.images.load(os.path.join(outdir, file_name))
        node.image.name = file_name
        if non_color:
            node.image.colorspace_settings.name = 'Non-Color'
        return node

    base_node = image_node(base, False)
    links.new(base_node.outputs["Color"], bsdf.inputs["Base Color"])
    normal_node = image_node(normal, True)
    normal_map = nodes.new("ShaderNodeNormalMap")
    links.new(normal_node.outputs["Color"], normal_map.inputs["Color"])
    links.new(normal_map.outputs["Normal"], bsdf.inputs["Normal"])
    spec_node = image_node(spec, True)
    links.new(spec_node.outputs["Color"], bsdf.inputs["Specular"])
    obj.data.materials.append(mat)
    return obj, mat, (base, normal, spec)


def scene_textured(outdir):
    reset_scene("TexturedScene")
    obj, mat, images = textured_material(outdir)
    export(os.path.join(outdir, "textured_material.fbx"), {'MESH'})
    facts = Facts(os.path.join(outdir, "textured_material.facts"))
    mesh_facts(facts, obj, [])
    facts.add("images", *images)
    for name in images:
        image = bpy.data.images[name]
        facts.add("image %s" % name, os.path.getsize(bpy.path.abspath(image.filepath)), *image.size)
    facts.write()


def scene_embedded(outdir):
    reset_scene("EmbeddedScene")
    obj, mat, images = textured_material(outdir)
    export(os.path.join(outdir, "embedded_texture.fbx"), {'MESH'}, path_mode='COPY', embed_textures=True)
    facts = Facts(os.path.join(outdir, "embedded_texture.facts"))
    mesh_facts(facts, obj, [])
    facts.add("images", *images)
    for name in images:
        image = bpy.data.images[name]
        facts.add("image %s" % name, os.path.getsize(bpy.path.abspath(image.filepath)), *image.size)
    facts.write()


BINARY_MAGIC = bytes.fromhex("4B 61 79 64 61 72 61 20 46 42 58 20 42 69 6E 61 72 79 20 20 00 1A 00")


def main():
    outdir = out_dir()
    print("Blender %s" % bpy.app.version_string)
    if os.environ.get("PYTHONHASHSEED") != "0":
        print("warning: PYTHONHASHSEED is not 0, object ids will differ from the committed files")
    for build in (scene_flat_cube, scene_uv_sphere, scene_face_materials, scene_ngons, scene_skinned,
                  scene_textured, scene_embedded):
        print("== %s" % build.__name__)
        build(outdir)
    for name in sorted(os.listdir(outdir)):
        if name.endswith(".fbx"):
            with open(os.path.join(outdir, name), "rb") as f:
                head = f.read(27)
            check(head[:23] == BINARY_MAGIC, name + " starts with the binary magic")
            print("file %s bytes=%d" % (name, os.path.getsize(os.path.join(outdir, name))))


main()
