#include "fbx/fbx_geometry.h"


FBX_OBJECT_IMPLEMENT(FbxLayerContainer, FbxNodeAttribute, "", "")
FBX_OBJECT_IMPLEMENT(FbxGeometryBase, FbxLayerContainer, "Geometry", "")
FBX_OBJECT_IMPLEMENT(FbxGeometry, FbxGeometryBase, "", "")
FBX_OBJECT_IMPLEMENT(FbxMesh, FbxGeometry, "Geometry", "Mesh")
FBX_OBJECT_IMPLEMENT(FbxShape, FbxGeometryBase, "Geometry", "Shape")
FBX_OBJECT_IMPLEMENT(FbxNurbs, FbxGeometry, "Geometry", "Nurb")
FBX_OBJECT_IMPLEMENT(FbxNurbsSurface, FbxGeometry, "Geometry", "NurbsSurface")
FBX_OBJECT_IMPLEMENT(FbxPatch, FbxGeometry, "Geometry", "Patch")
FBX_OBJECT_IMPLEMENT(FbxNurbsCurve, FbxGeometry, "Geometry", "NurbsCurve")
FBX_OBJECT_IMPLEMENT(FbxTrimNurbsSurface, FbxGeometry, "Geometry", "TrimNurbsSurface")
FBX_OBJECT_IMPLEMENT(FbxBoundary, FbxGeometry, "Geometry", "Boundary")
FBX_OBJECT_IMPLEMENT(FbxLine, FbxGeometry, "Geometry", "Line")

void FbxGeometryBase::ConstructProperties(bool forceSet) {
    ParentClass::ConstructProperties(forceSet);
    PrimaryVisibility = AddProperty("Primary Visibility", FbxBoolDT, true);
    CastShadow = AddProperty("Casts Shadows", FbxBoolDT, true);
    ReceiveShadow = AddProperty("Receive Shadows", FbxBoolDT, true);
}

int FbxMesh::GetPolygonCount() const {
    int count = 0;
    for (int32_t index : polygonVertexIndex)
        if (index < 0) ++count;
    return count;
}
