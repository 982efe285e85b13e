#include "fbximport/fbx_scene_conversion.h"

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_matrix.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_time.h"
#include "fbximport/animation_extraction.h"
#include "fbximport/fbx_node_walk.h"

namespace {

// A local translation, rotation or scaling: the channel values of the property's curve node
// when it has one (a channel that is missing gives `missing`), else the property's value.
// NaN becomes `missing` too, so that a broken value cannot spread through the matrices.
std::array<double, 3> LocalValue(FbxPropertyT<FbxDouble3>& property, double missing) {
    std::array<double, 3> value{missing, missing, missing};
    if (FbxAnimCurveNode* curveNode = property.GetCurveNode(false)) {
        static constexpr const char* kChannels[3] = {"X", "Y", "Z"};
        for (int axis = 0; axis < 3; ++axis) {
            FbxProperty channel = curveNode->GetChannel(kChannels[axis]);
            if (channel.IsValid()) value[axis] = channel.Get<double>();
        }
    } else {
        value = property.Get();
    }
    for (double& component : value)
        if (std::isnan(component)) component = missing;
    return value;
}

Vec3 ToVec3(const std::array<double, 3>& v) {
    return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

FbxNodeAttribute::EType AttributeType(const FbxNode& node) {
    const FbxNodeAttribute* attribute = node.GetNodeAttribute();
    return attribute ? attribute->GetAttributeType() : FbxNodeAttribute::eUnknown;
}

FbxAMatrix RotationMatrix(const FbxVector4& degrees) {
    FbxAMatrix m;
    m.SetR(degrees);
    return m;
}

// Steps of one node before its children: the GraphNode (with its compensation node), its
// local values and attribute, linked below parent.
GraphNode* ConvertOneNode(FbxNode* node, GraphNode* parent, NodeConversion& conversion) {
    const std::string name = node->GetName();
    auto* converted = new GraphNode;
    converted->name = name;
    converted->id = node->GetUniqueID();

    GraphNode* ssc = nullptr;
    if (conversion.rrsNodes.inheritRrsNodes.count(name)) {
        // The FBX node exists only for a unique id that no converted node can have.
        FbxNode* idHolder = FbxNode::Create(conversion.fbxScene, "empty");
        ssc = new GraphNode;
        ssc->name = name + "_SSC";
        ssc->id = idHolder->GetUniqueID();
    }

    converted->localMatrix = ComputeLocalMatrix(node);

    const std::array<double, 3> translation = LocalValue(node->LclTranslation, 0.0);
    const std::array<double, 3> rotation = LocalValue(node->LclRotation, 0.0);
    const std::array<double, 3> scaling = LocalValue(node->LclScaling, 1.0);
    if (!conversion.rrsNodes.ignoreNodeKeys.count(name)) {
        if (ssc) {
            ssc->position = ToVec3(translation);
            // Plain float division: a zero parent scale gives an infinite compensation.
            ssc->scale.Set(1.0f / parent->scale.x, 1.0f / parent->scale.y, 1.0f / parent->scale.z);
        } else {
            converted->position = ToVec3(translation);
        }
        converted->rotation = ToVec3(rotation);
        converted->scale = ToVec3(scaling);
    }

    if (const FbxNodeAttribute* attribute = node->GetNodeAttribute()) {
        switch (attribute->GetAttributeType()) {
        case FbxNodeAttribute::eSkeleton:
            if (attribute->Is<FbxSkeleton>() && static_cast<const FbxSkeleton*>(attribute)->IsSkeletonRoot())
                converted->isSkeletonRoot = true;
            break;
        case FbxNodeAttribute::eCamera:
            if (conversion.options.convertCameras) ConvertCamera(conversion.scene, converted, node);
            break;
        case FbxNodeAttribute::eLight:
            if (conversion.options.convertLights) ConvertLight(conversion.scene, converted, node);
            break;
        default: break;
        }
    }

    if (ssc) {
        ssc->AddChild(converted);
        parent->AddChild(ssc);
        conversion.sscNodes[node] = ssc;
    } else {
        parent->AddChild(converted);
    }
    return converted;
}

// Steps of one node after its children.
void FinishNode(FbxNode* node, GraphNode* converted, NodeConversion& conversion) {
    converted->worldMatrix = ToMat4(node->EvaluateGlobalTransform(FbxTime::Infinite()));
    conversion.nodesByName[converted->name] = converted;
}

}  // namespace

Mat4 ToMat4(const FbxAMatrix& matrix) {
    Mat4 result;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column) result(row, column) = static_cast<float>(matrix.Get(row, column));
    return result;
}

Mat4 ComputeLocalMatrix(FbxNode* node) {
    if (AttributeType(*node) != FbxNodeAttribute::eCamera)
        return ToMat4(node->EvaluateLocalTransform(FbxTime::Infinite()));

    // A camera looks down its x axis in the file and down -z at run time: a quarter turn
    // about y goes into its post-rotation. Scaling pivots and offsets play no part here.
    const FbxVector4 translation(node->LclTranslation.Get());
    const FbxVector4 rotation(node->LclRotation.Get());
    const FbxVector4 scaling(node->LclScaling.Get());
    const FbxVector4 rotationOffset = node->GetRotationOffset(FbxNode::eSourcePivot);
    const FbxVector4 rotationPivot = node->GetRotationPivot(FbxNode::eSourcePivot);
    const FbxVector4 preRotation = node->GetPreRotation(FbxNode::eSourcePivot);
    FbxVector4 postRotation = node->GetPostRotation(FbxNode::eSourcePivot);
    postRotation[1] += -90.0;

    const FbxAMatrix pivot = FbxTranslationMatrix(rotationPivot);
    const FbxAMatrix local = FbxTranslationMatrix(translation) * FbxTranslationMatrix(rotationOffset) * pivot *
                             RotationMatrix(preRotation) * RotationMatrix(rotation) * RotationMatrix(postRotation) *
                             pivot.Inverse() * FbxScaleMatrix(scaling);
    return ToMat4(local);
}

void ConvertNode(FbxNode* node, GraphNode* parent, NodeConversion& conversion) {
    // Depth first with a stack of its own, so that a deep tree cannot exhaust the call stack.
    struct Visit {
        FbxNode* node;
        GraphNode* converted;
        std::vector<FbxNode*> children;
        size_t next;
    };
    if (!conversion.visited.insert(node).second) return;
    std::vector<Visit> stack;
    GraphNode* converted = ConvertOneNode(node, parent, conversion);
    stack.push_back(Visit{node, converted, ChildNodes(*node), 0});
    while (!stack.empty()) {
        Visit& top = stack.back();
        if (top.next < top.children.size()) {
            FbxNode* child = top.children[top.next++];
            if (!conversion.visited.insert(child).second) continue;
            GraphNode* convertedChild = ConvertOneNode(child, top.converted, conversion);
            stack.push_back(Visit{child, convertedChild, ChildNodes(*child), 0});
            continue;
        }
        FinishNode(top.node, top.converted, conversion);
        stack.pop_back();
    }
}

Scene* FbxSceneConversion(FbxScene* fbxScene, const ConversionOptions& options) {
    auto* scene = new Scene;
    SscNodes sscNodes;
    NodesByName nodesByName;
    const RrsNodeSets rrsNodes = RequireRrsNodes();

    FbxNode* fbxRoot = fbxScene->GetRootNode();
    MakeNodeNamesUnique(fbxRoot);
    // Curve nodes found without a layer come from the current stack, else from the first:
    // naming the first as current changes no lookup, and spares each one a walk over all of
    // the document's objects to find it.
    if (!fbxScene->GetCurrentAnimationStack())
        fbxScene->SetCurrentAnimationStack(fbxScene->GetSrcObject<FbxAnimStack>(0));

    // Pivots, offsets and pre/post-rotations are baked into the curves first, sampled at
    // the rate the animation will be read at.
    const double frameRate = options.keyframeInterval > 0.0f ? 1.0 / static_cast<double>(options.keyframeInterval) : 30.0;
    fbxRoot->ResetPivotSetAndConvertAnimation(frameRate, false, true, false);

    // The root's own transform is dropped: it stays at the GraphNode defaults.
    auto* root = new GraphNode;
    root->name = fbxRoot->GetName();
    root->id = fbxRoot->GetUniqueID();

    NodeConversion conversion{*scene, fbxScene, options, rrsNodes, sscNodes, nodesByName};
    conversion.visited.insert(fbxRoot);
    for (FbxNode* child : ChildNodes(*fbxRoot)) ConvertNode(child, root, conversion);
    scene->root = root;

    // Taken before the slots: removing head_GRP frees the compensation nodes below it.
    const SscLinks sscLinks = LinkSscNodes(sscNodes);
    const NewNodeId newNodeId = [fbxScene] { return FbxNode::Create(fbxScene, "empty")->GetUniqueID(); };
    const GroupNodes groupNodes = BuildAvatarSlots(*scene, newNodeId, nodesByName);

    ExtractAnimations(fbxScene, *scene, options, sscLinks, groupNodes);
    return scene;
}
