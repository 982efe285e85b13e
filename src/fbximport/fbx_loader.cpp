#include "fbximport/fbx_loader.h"

#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_geometry_converter.h"
#include "fbx/fbx_system_unit.h"
#include "fbximport/fbx_context.h"
#include "fbximport/fbx_node_walk.h"
#include "fbximport/fbx_scene_conversion.h"
#include "scene/console.h"

Scene* FbxLoadScene(const std::string& fileName, const ConversionOptions& options) {
    FbxContext context = InitializeFbxContext();
    if (!ImportFbxFile(context, fileName)) {
        ConsolePrint("An error occured while loading the scene...\n");
        DestroyFbxContext(context);
        return nullptr;
    }
    FbxScene* document = context.scene;
    FbxGlobalSettings& settings = document->GetGlobalSettings();

    // Y up, parity odd, right handed: the runtime's frame.
    const FbxAxisSystem runtimeAxes(FbxAxisSystem::eYAxis, FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded);
    if (settings.GetAxisSystem() != runtimeAxes) runtimeAxes.ConvertScene(document);

    const FbxSystemUnit unit = settings.GetSystemUnit();
    const float unitScale = static_cast<float>(unit.GetScaleFactor());
    const int isCm = unit == FbxSystemUnit::cm ? 1 : 0;
    ConsolePrint("Scene unit scale factor: %f. is cm: %d\n", static_cast<double>(unitScale), isCm);
    // The test is for metres although the line speaks of centimetres; the unit scaling pass
    // below relies on exactly this.
    if (unitScale != 100.0f) FbxSystemUnit::m.ConvertScene(document);

    FbxGeometryConverter converter(context.manager);
    converter.RemoveBadPolygonsFromMeshes(document, nullptr);
    converter.Triangulate(document, true, false);

    Scene* scene = FbxSceneConversion(document, options);
    ApplyUnitScale(*scene, unitScale);

    DestroyFbxContext(context);
    return scene;
}
