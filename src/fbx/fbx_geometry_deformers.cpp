#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_status.h"

int FbxGeometry::GetDeformerCount(int type) const {
    int all = GetSrcObjectCount<FbxDeformer>();
    if (type == 0) return all;
    int n = 0;
    for (int k = 0; k < all; ++k)
        if (GetSrcObject<FbxDeformer>(k)->GetDeformerType() == type) ++n;
    return n;
}

FbxDeformer* FbxGeometry::GetDeformer(int index, int type, FbxStatus* status) const {
    if (type == 0) {
        FbxDeformer* d = GetSrcObject<FbxDeformer>(index);
        if (!d && status) status->SetCode(kFbxIndexOutOfRange);
        return d;
    }
    int all = GetSrcObjectCount<FbxDeformer>();
    for (int k = 0, seen = 0; k < all; ++k) {
        FbxDeformer* d = GetSrcObject<FbxDeformer>(k);
        if (d->GetDeformerType() == type && seen++ == index) return d;
    }
    if (status) status->SetCode(kFbxFailure, "Cannot retrieve deformer");
    return nullptr;
}
