// Materials, textures and media. Kept with their properties; the FBX path of the
// program does not convert them.
#pragma once

#include <string>
#include <vector>

#include "fbx/fbx_object.h"

class FbxSurfaceMaterial : public FbxObject {
    FBX_OBJECT_DECLARE(FbxSurfaceMaterial, FbxObject)
public:
    FbxPropertyT<std::string> ShadingModel;
    FbxPropertyT<bool> MultiLayer;

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxSurfaceLambert : public FbxSurfaceMaterial {
    FBX_OBJECT_DECLARE(FbxSurfaceLambert, FbxSurfaceMaterial)
public:
    FbxPropertyT<FbxDouble3> Emissive;
    FbxPropertyT<double> EmissiveFactor;
    FbxPropertyT<FbxDouble3> Ambient;
    FbxPropertyT<double> AmbientFactor;
    FbxPropertyT<FbxDouble3> Diffuse;
    FbxPropertyT<double> DiffuseFactor;
    FbxPropertyT<FbxDouble3> NormalMap;
    FbxPropertyT<FbxDouble3> Bump;
    FbxPropertyT<double> BumpFactor;
    FbxPropertyT<FbxDouble3> TransparentColor;
    FbxPropertyT<double> TransparencyFactor;
    FbxPropertyT<FbxDouble3> DisplacementColor;
    FbxPropertyT<double> DisplacementFactor;

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxSurfacePhong : public FbxSurfaceLambert {
    FBX_OBJECT_DECLARE(FbxSurfacePhong, FbxSurfaceLambert)
public:
    FbxPropertyT<FbxDouble3> Specular;
    FbxPropertyT<double> SpecularFactor;
    FbxPropertyT<double> Shininess;
    FbxPropertyT<FbxDouble3> Reflection;
    FbxPropertyT<double> ReflectionFactor;

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxTexture : public FbxObject {
    FBX_OBJECT_DECLARE(FbxTexture, FbxObject)
public:
    std::string textureName;
    std::string media;
};

class FbxFileTexture : public FbxTexture {
    FBX_OBJECT_DECLARE(FbxFileTexture, FbxTexture)
public:
    std::string fileName;
    std::string relativeFileName;
};

class FbxLayeredTexture : public FbxTexture {
    FBX_OBJECT_DECLARE(FbxLayeredTexture, FbxTexture)
};

class FbxProceduralTexture : public FbxTexture {
    FBX_OBJECT_DECLARE(FbxProceduralTexture, FbxTexture)
};

// A media clip; an embedded one carries its bytes until they are extracted.
class FbxVideo : public FbxObject {
    FBX_OBJECT_DECLARE(FbxVideo, FbxObject)
public:
    std::string type;
    std::string fileName;
    std::string relativeFileName;
    std::vector<unsigned char> content;
};

class FbxThumbnail : public FbxObject {
    FBX_OBJECT_DECLARE(FbxThumbnail, FbxObject)
};
