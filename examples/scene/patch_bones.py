#!/usr/bin/env python3
# Moves the bones of a Blender FBX export to the scene root.
#
# Blender writes an armature as an empty node with the bones below it; the
# converter starts a skeleton only at a direct child of the scene root. This
# rewrites, in a copy, the one connection that hangs the first bone under
# the armature node so that it hangs under the root (object id 0) instead.
# Nothing else in the file changes; the armature node keeps its place, so it
# must carry no transform of its own for the scene to look the same.
#
#   patch_bones.py IN.fbx OUT.fbx BONE ARMATURE
import re
import struct
import sys

# The first bytes of a binary FBX file.
BINARY_MAGIC = bytes.fromhex("4B 61 79 64 61 72 61 20 46 42 58 20 42 69 6E 61 72 79 20 20 00 1A 00")


def model_id(data, name):
    """The object id of the Model record named `name`."""
    full = name.encode() + b"\x00\x01Model"
    pattern = re.escape(b"S" + struct.pack("<I", len(full)) + full)
    found = [m.start() for m in re.finditer(pattern, data)]
    ids = [struct.unpack("<q", data[p - 8:p])[0] for p in found if data[p - 9:p - 8] == b"L"]
    if len(ids) != 1:
        raise SystemExit("patch_bones: no single model named %r" % name)
    return ids[0]


def main():
    if len(sys.argv) != 5:
        raise SystemExit("usage: patch_bones.py IN.fbx OUT.fbx BONE ARMATURE")
    source, target, bone, armature = sys.argv[1:]
    data = bytearray(open(source, "rb").read())
    if not data.startswith(BINARY_MAGIC):
        raise SystemExit("patch_bones: not a binary FBX file: " + source)
    # A connection record's values: "OO", child id, parent id.
    link = b"S\x02\x00\x00\x00OOL" + struct.pack("<q", model_id(data, bone)) + b"L"
    parent = struct.pack("<q", model_id(data, armature))
    found = [m.end() for m in re.finditer(re.escape(link + parent), data)]
    if len(found) != 1:
        raise SystemExit("patch_bones: %r is not connected to %r once" % (bone, armature))
    at = found[0] - 8
    data[at:at + 8] = struct.pack("<q", 0)
    open(target, "wb").write(data)


main()
