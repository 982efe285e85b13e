#include "fbx/fbx_deformer.h"

#include "fbx/fbx_geometry.h"
#include "fbx/fbx_node.h"

FBX_OBJECT_IMPLEMENT(FbxDeformer, FbxObject, "Deformer", "")
FBX_OBJECT_IMPLEMENT(FbxSkin, FbxDeformer, "Deformer", "Skin")
FBX_OBJECT_IMPLEMENT(FbxBlendShape, FbxDeformer, "Deformer", "BlendShape")
FBX_OBJECT_IMPLEMENT(FbxVertexCacheDeformer, FbxDeformer, "Deformer", "VertexCacheDeformer")
FBX_OBJECT_IMPLEMENT(FbxSubDeformer, FbxObject, "SubDeformer", "")
FBX_OBJECT_IMPLEMENT(FbxCluster, FbxSubDeformer, "Deformer", "Cluster")
FBX_OBJECT_IMPLEMENT(FbxBlendShapeChannel, FbxSubDeformer, "Deformer", "BlendShapeChannel")
FBX_OBJECT_IMPLEMENT(FbxPose, FbxObject, "Pose", "")

int FbxSkin::GetClusterCount() const { return GetSrcObjectCount<FbxCluster>(); }
FbxCluster* FbxSkin::GetCluster(int index) const { return GetSrcObject<FbxCluster>(index); }

int FbxBlendShape::GetBlendShapeChannelCount() const { return GetSrcObjectCount<FbxBlendShapeChannel>(); }
FbxBlendShapeChannel* FbxBlendShape::GetBlendShapeChannel(int index) const {
    return GetSrcObject<FbxBlendShapeChannel>(index);
}

FbxNode* FbxCluster::GetLink() const { return GetSrcObject<FbxNode>(0); }

int FbxBlendShapeChannel::GetTargetShapeCount() const { return GetSrcObjectCount<FbxShape>(); }
FbxShape* FbxBlendShapeChannel::GetTargetShape(int index) const { return GetSrcObject<FbxShape>(index); }

void FbxBlendShapeChannel::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    DeformPercent = AddProperty("DeformPercent", FbxDoubleDT, 0.0, FbxPropertyFlag::Animatable);
}
