// Deformers of a geometry (skins with clusters, blend shapes with channels, vertex
// caches) and poses. Stored as read; the program follows blend-shape channels only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fbx/fbx_object.h"

class FbxNode;

class FbxDeformer : public FbxObject {
    FBX_OBJECT_DECLARE(FbxDeformer, FbxObject)
public:
    enum EDeformerType { eUnknown, eSkin, eBlendShape, eVertexCache };
    virtual EDeformerType GetDeformerType() const { return eUnknown; }
};

class FbxSkin : public FbxDeformer {
    FBX_OBJECT_DECLARE(FbxSkin, FbxDeformer)
public:
    EDeformerType GetDeformerType() const override { return eSkin; }
    int GetClusterCount() const;
    class FbxCluster* GetCluster(int index) const;

    double deformAccuracy = 50.0;
    std::string skinningType = "Linear";
};

class FbxBlendShape : public FbxDeformer {
    FBX_OBJECT_DECLARE(FbxBlendShape, FbxDeformer)
public:
    EDeformerType GetDeformerType() const override { return eBlendShape; }
    int GetBlendShapeChannelCount() const;
    class FbxBlendShapeChannel* GetBlendShapeChannel(int index) const;
};

class FbxVertexCacheDeformer : public FbxDeformer {
    FBX_OBJECT_DECLARE(FbxVertexCacheDeformer, FbxDeformer)
public:
    EDeformerType GetDeformerType() const override { return eVertexCache; }
};

class FbxSubDeformer : public FbxObject {
    FBX_OBJECT_DECLARE(FbxSubDeformer, FbxObject)
};

class FbxCluster : public FbxSubDeformer {
    FBX_OBJECT_DECLARE(FbxCluster, FbxSubDeformer)
public:
    // The link node is the first FbxNode source.
    FbxNode* GetLink() const;

    std::string mode;  // link mode as the file names it ("Normalize", "Additive", "TotalOne")
    std::vector<int32_t> indexes;
    std::vector<double> weights;
    double transform[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    double transformLink[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    double transformAssociateModel[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    bool hasTransformAssociateModel = false;
};

class FbxBlendShapeChannel : public FbxSubDeformer {
    FBX_OBJECT_DECLARE(FbxBlendShapeChannel, FbxSubDeformer)
public:
    // Shapes are the FbxShape sources, in the order of in-between targets.
    int GetTargetShapeCount() const;
    class FbxShape* GetTargetShape(int index) const;
    // Percentage at which each shape is fully on.
    const std::vector<double>& GetTargetShapeFullWeights() const { return fullWeights; }

    FbxPropertyT<double> DeformPercent;
    std::vector<double> fullWeights;
    int32_t version = 100;

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxPose : public FbxObject {
    FBX_OBJECT_DECLARE(FbxPose, FbxObject)
public:
    struct Entry {
        FbxNode* node = nullptr;  // resolved from nodeId once all objects exist
        int64_t nodeId = 0;
        double matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        bool local = false;
    };
    bool IsBindPose() const { return type == "BindPose"; }
    bool IsRestPose() const { return type == "RestPose"; }
    int GetCount() const { return static_cast<int>(entries.size()); }

    std::string type;  // "BindPose", "RestPose", "CharacterPose"
    std::vector<Entry> entries;
};
