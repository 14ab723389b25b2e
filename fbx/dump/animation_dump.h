#pragma once

#include <vector>

#include "fbx/dump/dump_value.h"

class FbxScene;

// The animation of a scene: each stack with its "name", "description",
// "localTime" and "referenceTime" (start and stop in seconds) and its
// "layers"; each layer with its "name", "weight", "mute", "blendMode" and
// "curveNodes"; each curve node with its "name", the properties it
// "animates" ("Node|Lcl Rotation") and its "channels"; each channel with its
// "name", "value" and first "curve", told by its "name", "keys", "firstKey"
// and "lastKey" (seconds) and the "interpolations" its keys use.
DumpValue dumpAnimation(const FbxScene& scene);

// Every node of the tree, depth first from the root, with its "local" and
// "global" matrix (four rows of four, translation in the last row) at each
// time in seconds, through the scene's first stack; with no time, once, for
// the static transform. One entry per time: "time" ("static" or seconds) and
// "nodes" ("name", "local", "global").
DumpValue dumpTransforms(FbxScene& scene, const std::vector<double>& seconds);
