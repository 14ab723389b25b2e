#pragma once

class FbxScene;

// Brings a scene to up +Z, front -Y, right-handed (FbxAxisSystem(3, -2, 0)),
// in metres: the axis conversion, then the unit conversion with limits,
// clusters, light intensity, photometric sizes and clip planes converted
// and nested scaling left alone. This is how the converter normalises every
// scene before it reads transforms, and how fbxdump --convert shows them.
// A null scene is left alone.
void ConvertToZUpMetres(FbxScene* scene);
