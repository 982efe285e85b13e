// One Animation per animation stack of the document, with the morph weight tracks of the
// avatar slots.
// Private to the fbximport library.
#pragma once

#include "avatar/avatar_slots.h"
#include "fbximport/fbx_scene_conversion.h"
#include "scene/options.h"
#include "scene/scene.h"

class FbxScene;

// Runs last in the conversion, after the slots stand: compensation nodes take the
// translation tracks of their nodes, slots the weights of their group's channels.
void ExtractAnimations(FbxScene* fbxScene, Scene& scene, const ConversionOptions& options, const SscNodes& sscNodes,
                       const GroupNodes& groupNodes);
