#include "fbx/fbx_material.h"

FBX_OBJECT_IMPLEMENT(FbxSurfaceMaterial, FbxObject, "Material", "")
FBX_OBJECT_IMPLEMENT(FbxSurfaceLambert, FbxSurfaceMaterial, "Material", "")
FBX_OBJECT_IMPLEMENT(FbxSurfacePhong, FbxSurfaceLambert, "Material", "")
FBX_OBJECT_IMPLEMENT(FbxTexture, FbxObject, "Texture", "")
FBX_OBJECT_IMPLEMENT(FbxFileTexture, FbxTexture, "Texture", "")
FBX_OBJECT_IMPLEMENT(FbxLayeredTexture, FbxTexture, "LayeredTexture", "")
FBX_OBJECT_IMPLEMENT(FbxProceduralTexture, FbxTexture, "ProceduralTexture", "")
FBX_OBJECT_IMPLEMENT(FbxVideo, FbxObject, "Video", "")
FBX_OBJECT_IMPLEMENT(FbxThumbnail, FbxObject, "Thumbnail", "")

namespace {
constexpr uint32_t A = FbxPropertyFlag::Animatable;
}

void FbxSurfaceMaterial::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    ShadingModel = AddProperty("ShadingModel", FbxStringDT, std::string("Unknown"));
    MultiLayer = AddProperty("MultiLayer", FbxBoolDT, false);
}

void FbxSurfaceLambert::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    Emissive = AddProperty("EmissiveColor", FbxColor3DT, FbxDouble3{0, 0, 0}, A);
    EmissiveFactor = AddProperty("EmissiveFactor", FbxDoubleDT, 1.0, A);
    Ambient = AddProperty("AmbientColor", FbxColor3DT, FbxDouble3{0.2, 0.2, 0.2}, A);
    AmbientFactor = AddProperty("AmbientFactor", FbxDoubleDT, 1.0, A);
    Diffuse = AddProperty("DiffuseColor", FbxColor3DT, FbxDouble3{0.8, 0.8, 0.8}, A);
    DiffuseFactor = AddProperty("DiffuseFactor", FbxDoubleDT, 1.0, A);
    NormalMap = AddProperty("NormalMap", FbxVector3DT, FbxDouble3{0, 0, 0}, A);
    Bump = AddProperty("Bump", FbxVector3DT, FbxDouble3{0, 0, 0}, A);
    BumpFactor = AddProperty("BumpFactor", FbxDoubleDT, 1.0, A);
    TransparentColor = AddProperty("TransparentColor", FbxColor3DT, FbxDouble3{0, 0, 0}, A);
    TransparencyFactor = AddProperty("TransparencyFactor", FbxDoubleDT, 0.0, A);
    DisplacementColor = AddProperty("DisplacementColor", FbxColor3DT, FbxDouble3{0, 0, 0}, A);
    DisplacementFactor = AddProperty("DisplacementFactor", FbxDoubleDT, 1.0, A);
}

void FbxSurfacePhong::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    Specular = AddProperty("SpecularColor", FbxColor3DT, FbxDouble3{0.2, 0.2, 0.2}, A);
    SpecularFactor = AddProperty("SpecularFactor", FbxDoubleDT, 1.0, A);
    Shininess = AddProperty("ShininessExponent", FbxDoubleDT, 20.0, A);
    Reflection = AddProperty("ReflectionColor", FbxColor3DT, FbxDouble3{0, 0, 0}, A);
    ReflectionFactor = AddProperty("ReflectionFactor", FbxDoubleDT, 1.0, A);
}
