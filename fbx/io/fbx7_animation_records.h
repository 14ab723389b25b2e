#pragma once

class FbxFieldStream;
class KFCurve;

// Reads the keys of an "AnimationCurve" record into `curve`, with the
// stream inside the record's block: "Default", "KeyVer", then the parallel
// arrays "KeyTime", "KeyValueFloat" (or "KeyValueDouble"), "KeyAttrFlags",
// "KeyAttrDataFloat", "KeyAttrRefCount" and the extrapolation blocks.
// Attributes keep the file's sharing: a run of keys points at one. Arrays
// that disagree in length are read as far as they agree; nothing is written
// past the keys. False when "Default" is missing, and the curve stays as it
// was. Curves of a key form older than 4007 are read as curves without keys.
bool FbxReadAnimCurveKeys(FbxFieldStream& stream, KFCurve& curve);
