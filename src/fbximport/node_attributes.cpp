#include <memory>

#include "fbx/fbx_node.h"
#include "fbximport/fbx_scene_conversion.h"

namespace {
Vec3 ToVec3(const FbxDouble3& v) {
    return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

// Vertical field of view in degrees by the camera's aperture mode; a mode the runtime has
// no reading for keeps 45.
float FieldOfView(const FbxCamera& camera) {
    switch (camera.GetApertureMode()) {
    case FbxCamera::eHorizAndVert: return static_cast<float>(camera.FieldOfViewY.Get());
    case FbxCamera::eHorizontal: return static_cast<float>(camera.FieldOfView.Get() * 0.75);
    case FbxCamera::eVertical: return static_cast<float>(camera.FieldOfView.Get());
    default: return 45.0f;
    }
}
}  // namespace

void ConvertCamera(Scene& scene, GraphNode* target, FbxNode* node) {
    FbxNodeAttribute* attribute = node ? node->GetNodeAttribute() : nullptr;
    if (!target || !attribute || !attribute->Is<FbxCamera>()) return;
    const auto& source = static_cast<const FbxCamera&>(*attribute);

    Camera* camera = scene.Own(std::make_unique<Camera>());
    camera->nearClip = static_cast<float>(source.GetNearPlane());
    camera->farClip = static_cast<float>(source.GetFarPlane());
    camera->projection = source.CameraProjectionType.Get() == FbxCamera::eOrthogonal ? 1 : 0;
    camera->fov = FieldOfView(source);
    camera->clearColor = ToVec3(source.BackgroundColor.Get());
    camera->clearAlpha = 1.0f;
    target->camera = camera;
}

void ConvertLight(Scene& scene, GraphNode* target, FbxNode* node) {
    FbxNodeAttribute* attribute = node ? node->GetNodeAttribute() : nullptr;
    if (!target || !attribute || !attribute->Is<FbxLight>()) return;
    const auto& source = static_cast<const FbxLight&>(*attribute);

    Light* light = scene.Own(std::make_unique<Light>());
    // FBX numbers point 0, directional 1, spot 2; the runtime directional 0, point 1, spot 2.
    if (!source.LightType.IsValid()) {
        light->type = 1;
    } else {
        switch (source.LightType.Get()) {
        case FbxLight::ePoint: light->type = 1; break;
        case FbxLight::eDirectional: light->type = 0; break;
        case FbxLight::eSpot:
            light->type = 2;
            // Degrees, as the file gives them.
            if (source.InnerAngle.IsValid()) light->innerConeAngle = static_cast<float>(source.InnerAngle.Get());
            if (source.OuterAngle.IsValid()) light->outerConeAngle = static_cast<float>(source.OuterAngle.Get());
            break;
        default: light->type = 0; break;
        }
    }
    if (source.Color.IsValid()) light->color = ToVec3(source.Color.Get());
    if (source.Intensity.IsValid()) light->intensity = static_cast<float>(source.Intensity.Get() * 0.01);
    if (source.CastShadows.IsValid()) light->castShadows = source.CastShadows.Get();
    if (source.CastLightOnObject.IsValid()) light->enabled = source.CastLightOnObject.Get();
    if (source.DecayType.IsValid()) {
        light->falloffMode = source.DecayType.Get() == FbxLight::eLinear ? 0 : 1;
        if (source.FarAttenuationEnd.IsValid()) light->range = static_cast<float>(source.FarAttenuationEnd.Get());
    }
    target->light = light;
}
