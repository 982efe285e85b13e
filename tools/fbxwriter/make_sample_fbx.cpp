// Writes the project's sample avatar animation source: a small rig, the geo_GRP/head_GRP
// group with a head mesh whose blend-shape channels carry ai_* names, and two takes, in
// centimetres as authoring tools usually save avatars.
//
//   vurl_make_sample_fbx OUT.fbx
#include <cstdio>
#include <iterator>

#include "fbx_scene_document.h"

using fbxwriter::Key;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT.fbx\n", argv[0]);
        return 2;
    }
    fbxwriter::SceneDocument doc;
    doc.SetUnitScale(1.0);
    doc.SetTimeMode(6);  // 30 frames a second

    const int64_t avatar = doc.AddNode("avatar");
    doc.AddAttribute(avatar, "Null");

    const int64_t rig = doc.AddNode("rig", avatar);
    doc.AddAttribute(rig, "Null");
    // The joints: each row's parent is an earlier row (-1: the rig), its translation in centimetres.
    struct JointRow {
        const char* name;
        int parent;
        const char* attribute;
        double x, y, z;
    };
    const JointRow jointRows[] = {
        {"C_spine0002_bind_JNT", -1, "Root", 0.0, 105.0, 0.0},
        {"C_spine0003_bind_JNT", 0, "LimbNode", 0.0, 12.0, 0.0},
        {"C_neck0001_bind_JNT", 1, "LimbNode", 0.0, 18.0, 1.0},
        {"C_head_bind_JNT", 2, "LimbNode", 0.0, 9.0, 0.0},
        {"L_eyeBrow_bind_JNT", 3, "LimbNode", 3.0, 11.0, 8.5},
        {"R_eyeBrow_bind_JNT", 3, "LimbNode", -3.0, 11.0, 8.5},
    };
    int64_t joints[std::size(jointRows)];
    for (size_t k = 0; k < std::size(jointRows); ++k) {
        const JointRow& row = jointRows[k];
        joints[k] = doc.AddNode(row.name, row.parent < 0 ? rig : joints[row.parent], "LimbNode");
        doc.AddAttribute(joints[k], row.attribute);
        doc.SetLocal(joints[k], "Lcl Translation", row.x, row.y, row.z);
    }
    const int64_t neck = joints[2];
    const int64_t head = joints[3];
    // Joint orient as authoring tools write it: a pre-rotation that the load bakes away.
    doc.SetBool(neck, "RotationActive", true);
    doc.SetVector(neck, "PreRotation", 0.0, 0.0, 5.0);

    const int64_t geo = doc.AddNode("geo_GRP", avatar);
    doc.AddAttribute(geo, "Null");
    const int64_t headGroup = doc.AddNode("head_GRP", geo);
    doc.AddAttribute(headGroup, "Null");
    const int64_t headMesh = doc.AddNode("C_head_GEO", headGroup, "Mesh");
    const int64_t headGeometry = doc.AddMesh(headMesh, "C_head_GEOShape");
    const int64_t blendShape = doc.AddBlendShape(headGeometry, "blendShape1");
    const char* channelNames[] = {"blendShape1.ai_jawOpen", "blendShape1.ai_browDown_L", "blendShape1.ai_mouthSmile_L",
                                  "blendShape1.ai_noseSneer_R"};
    int64_t channels[4];
    for (int k = 0; k < 4; ++k) channels[k] = doc.AddBlendShapeChannel(blendShape, channelNames[k]);

    // Take 1: the head nods once.
    const int64_t idle = doc.AddStack("idle", 0.0, 1.0);
    const int64_t idleLayer = doc.AddLayer(idle);
    doc.AnimateVector(idleLayer, head, "Lcl Rotation", "R", {0.0, 0.0, 0.0},
                      {{{{0.0, 0.0f}, {0.5, 12.0f}, {1.0, 0.0f}}, {}, {}}});
    doc.AnimateNumber(idleLayer, channels[1], "DeformPercent", 0.0, {{0.0, 0.0f}, {0.5, 40.0f}, {1.0, 0.0f}});

    // Take 2: the jaw opens and the mouth smiles while the head turns.
    const int64_t talk = doc.AddStack("talk", 0.0, 2.0);
    const int64_t talkLayer = doc.AddLayer(talk);
    doc.AnimateVector(talkLayer, head, "Lcl Rotation", "R", {0.0, 0.0, 0.0},
                      {{{}, {{0.0, 0.0f}, {1.0, -20.0f}, {2.0, 0.0f}}, {}}},
                      fbxwriter::Interpolation::Cubic);
    doc.AnimateNumber(talkLayer, channels[0], "DeformPercent", 0.0,
                      {{0.0, 0.0f}, {0.5, 100.0f}, {1.0, 20.0f}, {1.5, 80.0f}, {2.0, 0.0f}});
    doc.AnimateNumber(talkLayer, channels[2], "DeformPercent", 0.0, {{0.0, 0.0f}, {2.0, 60.0f}});

    if (!fbxwriter::SaveFile(argv[1], doc.Bytes())) {
        std::fprintf(stderr, "cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
