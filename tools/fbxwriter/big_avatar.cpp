#include "big_avatar.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace fbxwriter {

namespace {

// ARKit-style names as avatar faces use them, Left/Right as _L/_R.
const char* const kFaceNames[] = {
    "eyeBlink_L",      "eyeLookDown_L",   "eyeLookIn_L",     "eyeLookOut_L",    "eyeLookUp_L",    "eyeSquint_L",
    "eyeWide_L",       "eyeBlink_R",      "eyeLookDown_R",   "eyeLookIn_R",     "eyeLookOut_R",   "eyeLookUp_R",
    "eyeSquint_R",     "eyeWide_R",       "jawForward",      "jawLeft",         "jawRight",       "jawOpen",
    "mouthClose",      "mouthFunnel",     "mouthPucker",     "mouthLeft",       "mouthRight",     "mouthSmile_L",
    "mouthSmile_R",    "mouthFrown_L",    "mouthFrown_R",    "mouthDimple_L",   "mouthDimple_R",  "mouthStretch_L",
    "mouthStretch_R",  "mouthRollLower",  "mouthRollUpper",  "mouthShrugLower", "mouthShrugUpper", "mouthPress_L",
    "mouthPress_R",    "mouthLowerDown_L", "mouthLowerDown_R", "mouthUpperUp_L", "mouthUpperUp_R", "browDown_L",
    "browDown_R",      "browInnerUp",     "browOuterUp_L",   "browOuterUp_R",   "cheekPuff",      "cheekSquint_L",
    "cheekSquint_R",   "noseSneer_L",     "noseSneer_R",     "tongueOut"};

std::vector<std::string> ShapeNames(int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
        if (i < int(std::size(kFaceNames))) {
            names.push_back(std::string("ai_") + kFaceNames[i]);
        } else {
            char extra[32];
            std::snprintf(extra, sizeof extra, "ai_extra%03d", i - int(std::size(kFaceNames)) + 1);
            names.push_back(extra);
        }
    }
    return names;
}

std::vector<std::string> Containing(const std::vector<std::string>& names, std::initializer_list<const char*> parts,
                                    size_t limit) {
    std::vector<std::string> subset;
    for (const std::string& name : names) {
        for (const char* part : parts) {
            if (name.find(part) != std::string::npos) {
                subset.push_back(name);
                break;
            }
        }
        if (subset.size() == limit) break;
    }
    if (subset.empty() && !names.empty()) subset.push_back(names.front());
    return subset;
}

struct Joint {
    std::string name;
    int parent;  // index, -1 for the rig node
    std::array<double, 3> translation;
};

// Hips, spine, neck and head, arms with five three-part fingers and legs per side, then
// face joints below the head until the count is reached.
std::vector<Joint> Skeleton(int count) {
    std::vector<Joint> joints{{"C_hips_JNT", -1, {0, 100, 0}}};
    auto add = [&](const std::string& name, int parent, std::array<double, 3> t) {
        joints.push_back({name, parent, t});
        return int(joints.size()) - 1;
    };
    int previous = 0;
    char name[64];
    for (int i = 1; i <= 3; ++i) {
        std::snprintf(name, sizeof name, "C_spine%04d_bind_JNT", i);
        previous = add(name, previous, {0, 10, 0});
    }
    const int chest = previous;
    for (int i = 1; i <= 2; ++i) {
        std::snprintf(name, sizeof name, "C_neck%04d_bind_JNT", i);
        previous = add(name, previous, {0, 5, 0});
    }
    const int head = add("C_head_bind_JNT", previous, {0, 8, 0});
    const char* fingers[] = {"thumb", "index", "middle", "ring", "pinky"};
    for (const char* side : {"L", "R"}) {
        const double sx = side[0] == 'L' ? 1.0 : -1.0;
        int p = add(std::string(side) + "_clavicle_bind_JNT", chest, {5 * sx, 0, 0});
        for (const char* part : {"armUpper0001", "armLower0001", "hand"})
            p = add(std::string(side) + "_" + part + "_bind_JNT", p, {25 * sx, 0, 0});
        const int hand = p;
        for (int f = 0; f < 5; ++f) {
            int fp = hand;
            for (int j = 1; j <= 3; ++j) {
                std::snprintf(name, sizeof name, "%s_%s%04d_bind_JNT", side, fingers[f], j);
                fp = add(name, fp, {3 * sx, 0, 2.0 * (f - 2)});
            }
        }
        p = 0;
        for (const char* part : {"legUpper0001", "legLower0001", "foot", "toe"})
            p = add(std::string(side) + "_" + part + "_bind_JNT", p, {10 * sx, -25, 0});
    }
    for (int i = 1; int(joints.size()) < count; ++i) {
        const char* side = i % 3 == 0 ? "C" : (i % 3 == 1 ? "L" : "R");
        std::snprintf(name, sizeof name, "%s_face%04d_bind_JNT", side, i);
        add(name, head, {8 * std::cos(i * 0.7), 8 * std::sin(i * 0.7), 0.2 * (i % 40)});
    }
    joints.resize(size_t(count > 0 ? count : 1));
    return joints;
}

std::vector<Key> Wave(int frames, double base, double amplitude, double frequency, double phase) {
    std::vector<Key> keys(static_cast<size_t>(frames));
    for (int f = 0; f < frames; ++f) {
        const double t = f / 30.0;
        keys[size_t(f)] = Key{t, float(base + amplitude * std::sin(2 * M_PI * frequency * t + phase))};
    }
    return keys;
}

}  // namespace

SceneDocument MakeBigAvatar(const BigAvatarSize& size, BigAvatarCounts* counts) {
    SceneDocument doc;
    doc.SetUnitScale(1.0);
    doc.SetTimeMode(6);
    doc.SetCompressCurves(true);
    BigAvatarCounts made;

    const std::vector<std::string> names = ShapeNames(size.shapeKeys);
    const int64_t geo = doc.AddNode("geo_GRP");
    const int64_t headGroup = doc.AddNode("head_GRP", geo);
    struct FaceMesh {
        const char* node;
        std::vector<std::string> keys;
    };
    const std::vector<FaceMesh> meshes = {
        {"C_head_GEO", names},
        {"C_brow_GEO", Containing(names, {"brow"}, names.size())},
        {"C_headMouth_GEO", Containing(names, {"mouth", "tongue", "jaw"}, 8)},
        {"universal_head_eyelash_GEO", Containing(names, {"eyeBlink", "eyeSquint"}, names.size())},
    };
    // Blend-shape channels by mesh, each name driving one curve per take.
    std::vector<std::pair<int64_t, size_t>> channels;  // channel id, index into names
    for (const FaceMesh& mesh : meshes) {
        const int64_t node = doc.AddNode(mesh.node, headGroup, "Mesh");
        const int64_t blendShape = doc.AddBlendShape(doc.AddMesh(node), "blendShape1");
        for (const std::string& key : mesh.keys) {
            size_t index = 0;
            while (index < names.size() && names[index] != key) ++index;
            channels.emplace_back(doc.AddBlendShapeChannel(blendShape, "blendShape1." + key), index);
        }
    }
    made.blendShapeChannels = int(channels.size());
    doc.AddMesh(doc.AddNode("C_body_GEO", geo, "Mesh"));

    const std::vector<Joint> skeleton = Skeleton(size.joints);
    const int64_t rig = doc.AddNode("rig");
    std::vector<int64_t> jointIds;
    for (const Joint& joint : skeleton) {
        const int64_t parent = joint.parent < 0 ? rig : jointIds[size_t(joint.parent)];
        const int64_t id = doc.AddNode(joint.name, parent, "LimbNode");
        doc.AddAttribute(id, jointIds.empty() ? "Root" : "LimbNode");
        doc.SetLocal(id, "Lcl Translation", joint.translation[0], joint.translation[1], joint.translation[2]);
        jointIds.push_back(id);
    }

    for (int t = 0; t < size.takes; ++t) {
        char takeName[32];
        std::snprintf(takeName, sizeof takeName, "take%03d", t);
        const int64_t layer = doc.AddLayer(doc.AddStack(takeName, 0.0, (size.frames - 1) / 30.0));
        for (size_t j = 0; j < skeleton.size(); ++j) {
            const Joint& joint = skeleton[j];
            const double move = j == 0 ? 5.0 : 0.0;  // only the hips travel
            std::array<std::vector<Key>, 3> translation, rotation, scaling;
            for (int c = 0; c < 3; ++c) {
                const double bj = double(j), tc = double(t), cc = double(c);
                translation[size_t(c)] = Wave(size.frames, joint.translation[size_t(c)], move, 0.3 + 0.1 * cc, cc);
                const double amplitude = 5 + std::fmod(bj * 7 + cc * 3 + tc * 11, 35);
                const double frequency = 0.5 + std::fmod(bj * 13 + cc * 5 + tc * 3, 17) * 0.15;
                rotation[size_t(c)] = Wave(size.frames, 0.0, amplitude, frequency, bj * 0.37 + cc * 1.1 + tc * 0.53);
                scaling[size_t(c)] = Wave(size.frames, 1.0, 0.0, 0.0, 0.0);
            }
            doc.AnimateVector(layer, jointIds[j], "Lcl Translation", "T", joint.translation, translation);
            doc.AnimateVector(layer, jointIds[j], "Lcl Rotation", "R", {0, 0, 0}, rotation);
            doc.AnimateVector(layer, jointIds[j], "Lcl Scaling", "S", {1, 1, 1}, scaling);
            made.curves += 9;
        }
        for (const auto& [channel, index] : channels) {
            const double k = double(index), tc = double(t);
            const double frequency = 0.2 + std::fmod(k * 7 + tc * 5, 23) * 0.05;
            doc.AnimateNumber(layer, channel, "DeformPercent", 0.0, Wave(size.frames, 50.0, 50.0, frequency, k * 0.61 + tc * 0.29));
            made.curves += 1;
        }
    }
    made.keys = made.curves * size.frames;
    if (counts) *counts = made;
    return doc;
}

}  // namespace fbxwriter
