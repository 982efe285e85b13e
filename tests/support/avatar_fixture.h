// The avatar layout the conversion looks for, as the project's FBX writer makes it, for the
// tests that load or convert whole files: a rig with one joint, and geo_GRP/head_GRP holding
// the C_head_GEO mesh; and an animated avatar built on it.
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

// In metres, the joint "jnt" at the origin, animated in "Take 001" (0..2 s):
//   translation x linear 0 s: 0, 0.5 s: 1, 1 s: 2, 2 s: 2
//   rotation y linear 0 s: 0, 1 s: 45, 2 s: 90
//   scaling x cubic with flat tangents 0 s: 1, 1 s: 2, 2 s: 1
// C_head_GEO has the channels blendShape1.ai_jawOpen (0: 0, 1: 100, 2: 50), ai_browDown_L
// without a dot (0: 0, 2: 100) and a.b.c (no keys). 15 keys in all. "empty" is a second take
// without keys; "late" (when asked) has keys at 5 s and 6 s only.
inline fbxwriter::SceneDocument AnimatedAvatar(bool late = false) {
    using fbxwriter::Interpolation;
    fbxwriter::SceneDocument doc;
    doc.SetUnitScale(100.0);
    const AvatarIds ids = AddAvatarLayout(doc, "jnt", "LimbNode", 0.0);
    const int64_t blendShape = doc.AddBlendShape(ids.geometry, "blendShape1");
    const int64_t jaw = doc.AddBlendShapeChannel(blendShape, "blendShape1.ai_jawOpen");
    const int64_t brow = doc.AddBlendShapeChannel(blendShape, "ai_browDown_L");
    doc.AddBlendShapeChannel(blendShape, "a.b.c");

    const int64_t take = doc.AddLayer(doc.AddStack("Take 001", 0.0, 2.0));
    const int64_t jnt = ids.joint;
    doc.AnimateVector(take, jnt, "Lcl Translation", "T", {0, 0, 0}, {{{{0, 0}, {0.5, 1}, {1, 2}, {2, 2}}, {}, {}}});
    doc.AnimateVector(take, jnt, "Lcl Rotation", "R", {0, 0, 0}, {{{}, {{0, 0}, {1, 45}, {2, 90}}, {}}});
    doc.AnimateVector(take, jnt, "Lcl Scaling", "S", {1, 1, 1}, {{{{0, 1}, {1, 2}, {2, 1}}, {}, {}}},
                      Interpolation::Cubic);
    doc.AnimateNumber(take, jaw, "DeformPercent", 0.0, {{0, 0}, {1, 100}, {2, 50}});
    doc.AnimateNumber(take, brow, "DeformPercent", 0.0, {{0, 0}, {2, 100}});
    doc.AddLayer(doc.AddStack("empty", 0.0, 1.0));
    if (late) {
        const int64_t layer = doc.AddLayer(doc.AddStack("late", 5.0, 6.0));
        doc.AnimateVector(layer, jnt, "Lcl Rotation", "R", {0, 0, 0}, {{{{5, 0}, {6, 10}}, {}, {}}});
    }
    return doc;
}

}  // namespace testsupport
