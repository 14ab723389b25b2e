#include "fbx/model/fbx_z_up_metres.h"

#include "fbx/model/fbx_axis_system.h"
#include "fbx/model/fbx_system_unit.h"

void ConvertToZUpMetres(FbxScene* scene) {
    if (!scene) return;
    FbxAxisSystem(FbxAxisSystem::eZAxis, -FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded).ConvertScene(scene);
    FbxSystemUnit::ConversionOptions options;
    options.convertNestedScaling = false;
    options.convertLimits = true;
    options.convertClusters = true;
    options.convertLightIntensity = true;
    options.convertPhotometricProperties = true;
    options.convertCameraClipPlanes = true;
    FbxSystemUnit(100.0, 1.0).ConvertScene(scene, options);
}
