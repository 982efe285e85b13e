// A large avatar animation source for benchmarks: the layout the avatar conversion expects
// (geo_GRP/head_GRP, C_*_GEO meshes with ai_* blend-shape channels, a *_bind_JNT rig) and
// many takes baked at every frame, as exporters write them: every joint has its nine local
// curves in every take, and every blend-shape channel its weight curve. Test tooling only.
#pragma once

#include <cstdint>

#include "fbx_scene_document.h"

namespace fbxwriter {

struct BigAvatarSize {
    int joints = 150;
    int shapeKeys = 52;  // on C_head_GEO; the brow, mouth and lash meshes carry subsets
    int takes = 10;
    int frames = 300;  // at 30 frames a second
};

// Also reports the counts it made.
struct BigAvatarCounts {
    int64_t curves = 0;
    int64_t keys = 0;
    int blendShapeChannels = 0;
};

SceneDocument MakeBigAvatar(const BigAvatarSize& size, BigAvatarCounts* counts = nullptr);

}  // namespace fbxwriter
