// From the prepared FBX document to a Scene: one GraphNode per FbxNode, compensation
// nodes for the names the resource file lists, cameras and lights on request, then the
// avatar slots.
// Private to the fbximport library.
#pragma once

#include <unordered_map>
#include <unordered_set>

#include "avatar/avatar_slots.h"
#include "avatar/rrs_nodes.h"
#include "scene/math.h"
#include "scene/options.h"
#include "scene/scene.h"

class FbxAMatrix;
class FbxNode;
class FbxScene;

// For each FBX node that received a compensation node, that node.
using SscNodes = std::unordered_map<const FbxNode*, GraphNode*>;

// What the node walk reads and fills.
struct NodeConversion {
    Scene& scene;
    FbxScene* fbxScene;
    const ConversionOptions& options;
    const RrsNodeSets& rrsNodes;
    SscNodes& sscNodes;
    NodesByName& nodesByName;
    // Nodes converted so far: one reached a second time (two parents, or a cycle the
    // reader left) is converted once only.
    std::unordered_set<const FbxNode*> visited{};
};

// Builds the Scene of a document whose axes, units and meshes are prepared. Ends the run
// when the resource file is missing or invalid, or when the tree has no geo_GRP.
Scene* FbxSceneConversion(FbxScene* fbxScene, const ConversionOptions& options);

// Converts `node` and its subtree below `parent`. Each node's world matrix is taken after
// its children have been converted.
void ConvertNode(FbxNode* node, GraphNode* parent, NodeConversion& conversion);

// The node's local matrix as the layer evaluates it; a camera's is composed by hand with
// its post-rotation turned by -90 degrees about y.
Mat4 ComputeLocalMatrix(FbxNode* node);

// A Camera or Light record from the node's attribute, owned by the scene, set on target.
void ConvertCamera(Scene& scene, GraphNode* target, FbxNode* node);
void ConvertLight(Scene& scene, GraphNode* target, FbxNode* node);

// Element by element, narrowed to f32; both store the translation in row 3.
Mat4 ToMat4(const FbxAMatrix& matrix);
