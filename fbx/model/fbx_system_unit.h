#pragma once

class FbxScene;

// A length unit: `scaleFactor` is the size of one unit in centimetres,
// `multiplier` an extra factor on the root children's scaling. Two units are
// equal when both numbers differ by at most 1e-6.
class FbxSystemUnit {
public:
    // What a unit conversion covers beside the root children's transforms.
    struct ConversionOptions {
        bool convertNestedScaling = false;         // not supported: nodes below the root children keep their scaling
        bool convertLimits = true;                 // translation and scaling limits of every node
        bool convertClusters = true;               // the matrices of skin clusters
        bool convertLightIntensity = true;         // animated light intensity, by the light's decay
        bool convertPhotometricProperties = true;  // photometric light sizes
        bool convertCameraClipPlanes = true;       // near and far planes
    };

    explicit FbxSystemUnit(double scaleFactor, double multiplier = 1.0)
        : mScaleFactor(scaleFactor), mMultiplier(multiplier) {}

    double GetScaleFactor() const { return mScaleFactor; }
    double GetMultiplier() const { return mMultiplier; }

    bool operator==(const FbxSystemUnit& other) const;
    bool operator!=(const FbxSystemUnit& other) const { return !(*this == other); }

    // Brings the scene from the unit of its global settings to this one. The
    // root children take the scaling (their translation, scaling and curves,
    // with pivots recomputed so that each keeps its global picture), and
    // global poses, clusters, limits, lights and cameras follow as the
    // options ask. Geometry stays as it is. "UnitScaleFactor" becomes this
    // unit's scale factor and "OriginalUnitScaleFactor" the scene's old one,
    // even when there was nothing to convert. A null scene is left alone.
    void ConvertScene(FbxScene* scene, const ConversionOptions& options) const;
    void ConvertScene(FbxScene* scene) const { ConvertScene(scene, ConversionOptions()); }

    static const FbxSystemUnit mm;
    static const FbxSystemUnit dm;
    static const FbxSystemUnit cm;
    static const FbxSystemUnit m;
    static const FbxSystemUnit km;
    static const FbxSystemUnit Inch;
    static const FbxSystemUnit Foot;
    static const FbxSystemUnit Yard;
    static const FbxSystemUnit Mile;

private:
    double mScaleFactor;
    double mMultiplier;
};
