// The avatar layout the conversion looks for, as the project's FBX writer makes it, for the
// tests that load or convert whole files: a rig with one joint, and geo_GRP/head_GRP holding
// the C_head_GEO mesh. Tests add their own transforms, channels and takes.
#pragma once

#include <string_view>

#include "fbx_scene_document.h"

namespace testsupport {

struct AvatarIds {
    int64_t rig = 0, joint = 0, geo = 0, headMesh = 0, geometry = 0;
};

// RootNode -> rig -> joint (a LimbNode with the given attribute, `height` units up)
//          -> geo_GRP -> head_GRP -> C_head_GEO (a mesh)
inline AvatarIds AddAvatarLayout(fbxwriter::SceneDocument& doc, std::string_view joint, std::string_view attribute,
                                 double height) {
    AvatarIds ids;
    ids.rig = doc.AddNode("rig");
    ids.joint = doc.AddNode(joint, ids.rig, "LimbNode");
    doc.AddAttribute(ids.joint, attribute);
    doc.SetLocal(ids.joint, "Lcl Translation", 0.0, height, 0.0);
    ids.geo = doc.AddNode("geo_GRP");
    ids.headMesh = doc.AddNode("C_head_GEO", doc.AddNode("head_GRP", ids.geo), "Mesh");
    ids.geometry = doc.AddMesh(ids.headMesh);
    return ids;
}

}  // namespace testsupport
